#pragma once

#include <QtGlobal>

#include <map>

/// The confirmations that the process under test owes for BR_INCREFS and BR_ACQUIRE.
class FakeAnswers
{
public:
    void expect(quint32 command, quint64 object) { ++m_expected[{command, object}]; }
    void onGiven(quint32 command, quint64 object, quint64 cookie);
    void reportLeft() const;

private:
    std::map<std::pair<quint32, quint64>, int> m_expected;
};
