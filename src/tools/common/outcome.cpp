#include "tools/common/outcome.h"

#include "config/runtimetext.h"

#include <QCoreApplication>

#include <cstdio>

bool operator==(const Outcome &left, const Outcome &right)
{
    return left.status == right.status && left.sentence == right.sentence;
}

ExitStatus firstFailure(ExitStatus before, ExitStatus now)
{
    return before == ExitStatus::Done ? now : before;
}

int reportOutcome(const Outcome &outcome)
{
    if (!outcome.sentence.isEmpty()) {
        const QString line =
            QCoreApplication::applicationName() + QStringLiteral(": ") + outcome.sentence;
        fprintf(stderr, "%s\n", RuntimeText::singleLine(line).toUtf8().constData());
    }
    return static_cast<int>(outcome.status);
}
