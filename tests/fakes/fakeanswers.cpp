#include "fakes/fakeanswers.h"

#include "fakes/fakebinder.h"

void FakeAnswers::onGiven(quint32 command, quint64 object, quint64 cookie)
{
    int &expected = m_expected[{command, object}];
    if (expected == 0 || cookie != object)
        FakeBinder::violation(QStringLiteral("unexpected confirmation for object %1").arg(object));
    else
        --expected;
}

void FakeAnswers::reportLeft() const
{
    for (const auto &entry : m_expected) {
        if (entry.second > 0)
            FakeBinder::violation(
                QStringLiteral("missing confirmation for object %1").arg(entry.first.second));
    }
}
