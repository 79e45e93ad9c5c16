#include "support/testcase.h"
#include "tools/common/interruption.h"

#include <QtTest>

#include <csignal>

class TestInterruption : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void the_program_goes_on_and_is_told_data();
    void the_program_goes_on_and_is_told();
};

void TestInterruption::the_program_goes_on_and_is_told_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("Ctrl-C") << SIGINT;
    QTest::newRow("a service manager") << SIGTERM;
}

void TestInterruption::the_program_goes_on_and_is_told()
{
    QFETCH(int, number);
    Interruption interruption;
    QSignalSpy requested(&interruption, &Interruption::requested);

    raise(number);
    QTRY_COMPARE(requested.size(), 1);
    raise(number);
    QTRY_COMPARE(requested.size(), 2);
}

QTEST_GUILESS_MAIN(TestInterruption)
#include "test_interruption.moc"
