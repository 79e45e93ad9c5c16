#include "tools/ctl/confirmation.h"

#include "config/runtimetext.h"

#include <QFile>

#include <cstdio>

namespace Confirmation {

bool ask(const QString &question)
{
    constexpr int MaxAnswer = 1000;

    const QByteArray text = RuntimeText::singleLine(question).toUtf8();
    fprintf(stderr, "%s [y/N] ", text.constData());
    fflush(stderr);
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        return false;
    const QByteArray answer = input.readLine(MaxAnswer).trimmed().toLower();
    return answer == "y" || answer == "yes";
}

} // namespace Confirmation
