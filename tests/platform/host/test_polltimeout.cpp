#include "platform/host/polltimeout.h"
#include "support/testcase.h"

#include <QtTest>

class TestPollTimeout : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void a_time_out_becomes_milliseconds_from_now_data();
    void a_time_out_becomes_milliseconds_from_now();
    void the_clock_does_not_run_backwards();
};

void TestPollTimeout::a_time_out_becomes_milliseconds_from_now_data()
{
    QTest::addColumn<quint64>("timeoutUs");
    QTest::addColumn<quint64>("nowUs");
    QTest::addColumn<int>("waitMs");

    QTest::newRow("no time-out waits without limit") << NoTimeoutUs << quint64(5) << -1;
    QTest::newRow("two milliseconds ahead") << quint64(3000) << quint64(1000) << 2;
    QTest::newRow("part of a millisecond is cut off") << quint64(2999) << quint64(1000) << 1;
    QTest::newRow("now") << quint64(1000) << quint64(1000) << 0;
    QTest::newRow("in the past, not negative") << quint64(1000) << quint64(900000) << 0;
    QTest::newRow("zero") << quint64(0) << quint64(1) << 0;
    QTest::newRow("further ahead than poll can count")
        << NoTimeoutUs - 1 << quint64(0) << std::numeric_limits<int>::max();
}

void TestPollTimeout::a_time_out_becomes_milliseconds_from_now()
{
    QFETCH(quint64, timeoutUs);
    QFETCH(quint64, nowUs);

    QTEST(pollTimeoutMs(timeoutUs, nowUs), "waitMs");
}

void TestPollTimeout::the_clock_does_not_run_backwards()
{
    const quint64 earlier = monotonicTimeUs();

    QVERIFY(monotonicTimeUs() >= earlier);
}

QTEST_GUILESS_MAIN(TestPollTimeout)
#include "test_polltimeout.moc"
