#include "tools/common/standardoutput.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

Outcome writeToStandardOutput(const QByteArray &text)
{
    const auto size = static_cast<size_t>(text.size());
    if (fwrite(text.constData(), 1, size, stdout) == size && fflush(stdout) == 0)
        return {};
    return {
        ExitStatus::Refused,
        QStringLiteral("The output could not be written (%1). See where it goes, and ask again.")
            .arg(QString::fromLocal8Bit(strerror(errno)))};
}
