#include "tools/ctl/intentextras.h"

#include <optional>

namespace {

std::optional<QVariant> asText(const QString &text)
{
    return text;
}

std::optional<QVariant> asNumber(const QString &text)
{
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    return isNumber ? std::optional<QVariant>(number) : std::nullopt;
}

std::optional<QVariant> asTruth(const QString &text)
{
    if (text != QLatin1String("true") && text != QLatin1String("false"))
        return std::nullopt;
    return text == QLatin1String("true");
}

struct Kind
{
    const char *option;
    const char *wanted;
    std::optional<QVariant> (*convert)(const QString &);
};

constexpr Kind Kinds[] = {
    {"--extra", "KEY=TEXT", asText},
    {"--extra-int", "KEY=NUMBER with a 32-bit number", asNumber},
    {"--extra-bool", "KEY=true or KEY=false", asTruth},
};

} // namespace

IntentExtras IntentExtras::parse(const Invocation &invocation)
{
    IntentExtras extras;
    for (const Kind &kind : Kinds) {
        const QString option = QString::fromLatin1(kind.option);
        for (const QString &text : invocation.options.value(option)) {
            const int separator = text.indexOf(QLatin1Char('='));
            const std::optional<QVariant> value = kind.convert(text.mid(separator + 1));
            if (separator < 1 || !value) {
                extras.error = QStringLiteral("%1 takes %2, not “%3”.")
                                   .arg(option, QString::fromLatin1(kind.wanted), text);
                return extras;
            }
            extras.values.insert(text.left(separator), *value);
        }
    }
    return extras;
}
