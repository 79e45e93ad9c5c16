#include "tools/common/outcome.h"

#include <QCoreApplication>
#include <QTextStream>

bool operator==(const Outcome &left, const Outcome &right)
{
    return left.status == right.status && left.sentence == right.sentence;
}

int reportOutcome(const Outcome &outcome)
{
    if (!outcome.sentence.isEmpty()) {
        QTextStream(stderr) << QCoreApplication::applicationName() << ": " << outcome.sentence
                            << '\n';
    }
    return static_cast<int>(outcome.status);
}
