#include "tools/ctl/confirmation.h"

#include "config/runtimetext.h"

#include <QFile>

#include <cstdio>
#include <unistd.h>

namespace Confirmation {

bool ask(const QString &question)
{
    constexpr int MaxAnswer = 1000;

    const QByteArray text = RuntimeText::singleLine(question).toUtf8();
    fprintf(stderr, "%s [y/N] ", text.constData());
    fflush(stderr);
    QFile input;
    const QByteArray typed =
        input.open(stdin, QIODevice::ReadOnly) ? input.readLine(MaxAnswer) : QByteArray();
    // A terminal shows the line break that ends an answer; nobody does for others.
    if (!isatty(fileno(stdin)) || !typed.endsWith('\n'))
        fputc('\n', stderr);
    const QByteArray answer = typed.trimmed().toLower();
    return answer == "y" || answer == "yes";
}

} // namespace Confirmation
