#include "daemon/terminationsignals.h"
#include "support/testcase.h"

#include <QCoreApplication>
#include <QTimer>
#include <QtTest>

#include <csignal>

class TestTerminationSignals : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void a_signal_ends_the_event_loop_data();
    void a_signal_ends_the_event_loop();
    void a_signal_before_the_event_loop_ends_it_once_it_runs();
    void a_second_signal_has_its_default_effect();
    void the_default_effect_is_back_afterwards();

private:
    static bool hasDefaultEffect(int signal);
};

bool TestTerminationSignals::hasDefaultEffect(int signal)
{
    struct sigaction action
    {
    };
    sigaction(signal, nullptr, &action);
    return action.sa_handler == SIG_DFL;
}

void TestTerminationSignals::a_signal_ends_the_event_loop_data()
{
    QTest::addColumn<int>("signal");

    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGINT") << SIGINT;
}

void TestTerminationSignals::a_signal_ends_the_event_loop()
{
    QFETCH(int, signal);
    const TerminationSignals watched;
    QTimer::singleShot(0, [signal] { std::raise(signal); });

    QCOMPARE(QCoreApplication::exec(), 0);
}

void TestTerminationSignals::a_signal_before_the_event_loop_ends_it_once_it_runs()
{
    const TerminationSignals watched;
    std::raise(SIGTERM);

    QCOMPARE(QCoreApplication::exec(), 0);
}

void TestTerminationSignals::a_second_signal_has_its_default_effect()
{
    const TerminationSignals watched;
    QVERIFY(!hasDefaultEffect(SIGTERM));

    std::raise(SIGTERM);

    QVERIFY(hasDefaultEffect(SIGTERM));
    QVERIFY(!hasDefaultEffect(SIGINT));
}

void TestTerminationSignals::the_default_effect_is_back_afterwards()
{
    {
        const TerminationSignals watched;
    }

    QVERIFY(hasDefaultEffect(SIGTERM));
    QVERIFY(hasDefaultEffect(SIGINT));
}

QTEST_GUILESS_MAIN(TestTerminationSignals)
#include "test_terminationsignals.moc"
