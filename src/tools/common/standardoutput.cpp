#include "tools/common/standardoutput.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

QString advice(LostOutput lost)
{
    return lost == LostOutput::AskAgain
               ? QStringLiteral("See where it goes, and ask again.")
               : QStringLiteral("See where it goes. What was asked for may have been done: see "
                                "whether it was before you ask again.");
}

} // namespace

void occupyStandardStreams()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // The lowest free number is given, and that is this one.
        if (fcntl(descriptor, F_GETFD) < 0)
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

Outcome writeToStandardOutput(const QByteArray &text, LostOutput lost)
{
    const auto size = static_cast<size_t>(text.size());
    if (fwrite(text.constData(), 1, size, stdout) == size && fflush(stdout) == 0)
        return {};
    return {ExitStatus::Refused, QStringLiteral("The output could not be written (%1). %2")
                                     .arg(QString::fromLocal8Bit(strerror(errno)), advice(lost))};
}
