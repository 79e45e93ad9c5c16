#include "daemon/loginwait.h"
#include "platform/host/loginmonitor.h"
#include "platform/host/polltimeout.h"
#include "support/testcase.h"

#include <QtTest>

#include <poll.h>

namespace {

/// sd-login as a script: what it answers, and what it was asked to do.
class FakeLoginMonitor : public LoginMonitor
{
public:
    bool open() override { return opens; }
    int descriptor() const override { return descriptorValue; }
    int events() const override { return eventsValue; }
    quint64 timeout() const override { return timeoutUs; }
    void flush() override { done.append(QStringLiteral("flush")); }

    std::optional<uid_t> activeUser() const override
    {
        return questionsBeforeLogin-- > 0 ? std::nullopt : std::optional<uid_t>(100000);
    }

    int poll(int descriptor, short events, int timeoutMs) override
    {
        done.append(QStringLiteral("poll %1 %2 %3").arg(descriptor).arg(events).arg(timeoutMs));
        return pollResult;
    }

    quint64 now() const override { return nowUs; }

    bool opens = true;
    int descriptorValue = 7;
    int eventsValue = POLLIN;
    quint64 timeoutUs = NoTimeoutUs;
    quint64 nowUs = 0;
    mutable int questionsBeforeLogin = 0;
    int pollResult = 1;
    QStringList done;
};

} // namespace

class TestLoginWait : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void a_user_who_is_there_already_is_found_without_polling();
    void the_user_is_asked_for_again_after_each_event();
    void a_timeout_of_the_monitor_limits_the_poll_data();
    void a_timeout_of_the_monitor_limits_the_poll();
    void a_failed_poll_is_reported_and_the_wait_goes_on();
    void a_monitor_that_cannot_be_opened_ends_the_wait();
    void a_monitor_that_cannot_be_polled_ends_the_wait_data();
    void a_monitor_that_cannot_be_polled_ends_the_wait();
};

void TestLoginWait::a_user_who_is_there_already_is_found_without_polling()
{
    FakeLoginMonitor monitor;

    QCOMPARE(waitForUser(monitor), std::optional<uid_t>(100000));

    QCOMPARE(monitor.done, QStringList());
}

void TestLoginWait::the_user_is_asked_for_again_after_each_event()
{
    FakeLoginMonitor monitor;
    monitor.questionsBeforeLogin = 2;

    QCOMPARE(waitForUser(monitor), std::optional<uid_t>(100000));

    const QString pollWithoutLimit = QStringLiteral("poll 7 1 -1");
    const QString flush = QStringLiteral("flush");
    QCOMPARE(monitor.done, QStringList({pollWithoutLimit, flush, pollWithoutLimit, flush}));
}

void TestLoginWait::a_timeout_of_the_monitor_limits_the_poll_data()
{
    QTest::addColumn<quint64>("nowUs");
    QTest::addColumn<QString>("poll");

    QTest::newRow("ahead") << quint64(2000000) << QStringLiteral("poll 7 1 3000");
    QTest::newRow("in the past") << quint64(9000000) << QStringLiteral("poll 7 1 0");
}

void TestLoginWait::a_timeout_of_the_monitor_limits_the_poll()
{
    QFETCH(quint64, nowUs);
    FakeLoginMonitor monitor;
    monitor.questionsBeforeLogin = 1;
    monitor.timeoutUs = 5000000;
    monitor.nowUs = nowUs;

    waitForUser(monitor);

    QTEST(monitor.done.value(0), "poll");
}

void TestLoginWait::a_failed_poll_is_reported_and_the_wait_goes_on()
{
    FakeLoginMonitor monitor;
    monitor.questionsBeforeLogin = 2;
    monitor.pollResult = -1;

    QCOMPARE(waitForUser(monitor), std::optional<uid_t>(100000));

    const QString pollFailed = QStringLiteral("poll failed");
    QCOMPARE(takeLog(QtWarningMsg, QStringLiteral("default")),
             QStringList({pollFailed, pollFailed}));
}

void TestLoginWait::a_monitor_that_cannot_be_opened_ends_the_wait()
{
    FakeLoginMonitor monitor;
    monitor.opens = false;

    QCOMPARE(waitForUser(monitor), std::optional<uid_t>());

    QCOMPARE(takeLog(QtWarningMsg, QStringLiteral("default")),
             QStringList(QStringLiteral("Failed to monitor for seat changes")));
}

void TestLoginWait::a_monitor_that_cannot_be_polled_ends_the_wait_data()
{
    QTest::addColumn<int>("descriptor");
    QTest::addColumn<int>("events");

    QTest::newRow("no descriptor") << -1 << POLLIN;
    QTest::newRow("not readable") << 7 << POLLOUT;
    QTest::newRow("events not known") << 7 << -22;
}

void TestLoginWait::a_monitor_that_cannot_be_polled_ends_the_wait()
{
    QFETCH(int, descriptor);
    QFETCH(int, events);
    FakeLoginMonitor monitor;
    monitor.descriptorValue = descriptor;
    monitor.eventsValue = events;

    QCOMPARE(waitForUser(monitor), std::optional<uid_t>());

    QCOMPARE(takeLog(QtWarningMsg, QStringLiteral("default")),
             QStringList(QStringLiteral("Unable to poll for systemd login events")));
}

QTEST_GUILESS_MAIN(TestLoginWait)
#include "test_loginwait.moc"
