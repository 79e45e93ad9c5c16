#include "daemon/appdatausage.h"
#include "fuzz/fuzztarget.h"

#include <limits>

// What "du" printed.

namespace {

/// The number before the first tab as a program in C would read it; 0 for what is none.
quint64 plainNumber(const QByteArray &digits)
{
    quint64 number = 0;
    for (const char digit : digits) {
        const auto value = static_cast<quint64>(digit - '0');
        if (digit < '0' || digit > '9' ||
            number > (std::numeric_limits<quint64>::max() - value) / 10) {
            return 0;
        }
        number = number * 10 + value;
    }
    return number;
}

bool isPlain(const QByteArray &text)
{
    for (const char character : text) {
        if (character < '0' || character > '9')
            return false;
    }
    return true;
}

} // namespace

void FuzzTarget::prepare() {}

void FuzzTarget::run(Input input)
{
    const QByteArray output = input.rest();
    const std::optional<quint64> size = sizeFromDu(output);

    const QByteArray text(output.constData()); // to the first zero byte
    const int tab = text.indexOf('\t');
    expect(size.has_value() == (tab >= 0), "a size where there is a tab");
    if (tab >= 0 && isPlain(text.left(tab)))
        expect(*size == plainNumber(text.left(tab)), "the number before the tab");
}
