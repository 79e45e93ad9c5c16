#include "platform/host/privatebus.h"
#include "support/testcase.h"
#include "tools/common/daemonclient.h"
#include "tools/common/fakedaemon.h"

#include <QDBusMetaType>
#include <QtTest>

namespace {

const QString Client = QStringLiteral("client");

} // namespace

class TestDaemonClient : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void what_was_taken_is_done_and_has_its_value();
    void structures_are_understood();
    void an_error_is_turned_into_a_sentence();
    void another_answer_than_published_is_not_taken_for_one();
    void who_does_not_run_is_unreachable();
    void the_time_for_an_answer_is_a_minute();
    void who_does_not_answer_in_time_has_not_confirmed();
    void who_leaves_during_the_call_is_unreachable();
    void a_bus_that_goes_during_the_call_is_told_as_that();
    void without_a_bus_nobody_is_reached();

private:
    QDBusConnection client() const { return QDBusConnection(Client); }

    std::unique_ptr<PrivateBus> m_bus;
};

void TestDaemonClient::init()
{
    TestCase::init();
    m_bus = std::make_unique<PrivateBus>();
    QVERIFY(m_bus->start());
    QVERIFY(QDBusConnection::connectToBus(m_bus->address(), Client).isConnected());
}

void TestDaemonClient::cleanup()
{
    QDBusConnection::disconnectFromBus(Client);
    m_bus.reset();
    TestCase::cleanup();
}

void TestDaemonClient::what_was_taken_is_done_and_has_its_value()
{
    FakeDaemon fake({{true}, {}, false});
    QVERIFY(fake.serve(m_bus->address()));
    DaemonClient daemon(client());

    const QDBusPendingReply<bool> reply = daemon.proxy().installFile(QStringLiteral("/a.apk"));
    const Outcome outcome = daemon.finish(reply);

    QCOMPARE(outcome.sentence, QString());
    QVERIFY(outcome.isDone());
    QVERIFY(reply.value());
    QCOMPARE(fake.calls(), QStringList(QStringLiteral("installFile(s)")));
}

void TestDaemonClient::structures_are_understood()
{
    const AppSizeInfo size{100, 50, 20};
    qDBusRegisterMetaType<AppSizeInfo>();
    FakeDaemon fake({{QVariant::fromValue(size)}, {}, false});
    QVERIFY(fake.serve(m_bus->address()));
    DaemonClient daemon(client());

    const QDBusPendingReply<AppSizeInfo> reply = daemon.proxy().getAppSize(QStringLiteral("a.b"));

    QVERIFY(daemon.finish(reply).isDone());
    QVERIFY(reply.value() == size);
}

void TestDaemonClient::an_error_is_turned_into_a_sentence()
{
    FakeDaemon fake({{}, QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"), false});
    QVERIFY(fake.serve(m_bus->address()));
    DaemonClient daemon(client());

    const Outcome outcome = daemon.finish(daemon.proxy().viewLicenses());

    QCOMPARE(outcome.status, ExitStatus::Refused);
    QVERIFY(outcome.sentence.startsWith(QStringLiteral("You may not call bramd (no luck).")));
}

void TestDaemonClient::another_answer_than_published_is_not_taken_for_one()
{
    FakeDaemon fake({{QStringLiteral("yes")}, {}, false});
    QVERIFY(fake.serve(m_bus->address()));
    DaemonClient daemon(client());

    const Outcome outcome = daemon.finish(daemon.proxy().installFile(QStringLiteral("/a.apk")));

    QCOMPARE(outcome.status, ExitStatus::Refused);
    QVERIFY(outcome.sentence.startsWith(
        QStringLiteral("The bramd that runs does not understand this request (")));
}

void TestDaemonClient::who_does_not_run_is_unreachable()
{
    DaemonClient daemon(client());

    const Outcome outcome = daemon.finish(daemon.proxy().viewLicenses());

    QCOMPARE(outcome.status, ExitStatus::DaemonUnreachable);
    QVERIFY(
        outcome.sentence.startsWith(QStringLiteral("bramd does not run and cannot be started (")));
}

void TestDaemonClient::the_time_for_an_answer_is_a_minute()
{
    QCOMPARE(DaemonClient(client()).proxy().timeout(), 60000);
}

void TestDaemonClient::who_does_not_answer_in_time_has_not_confirmed()
{
    FakeDaemon fake({{}, {}, true});
    QVERIFY(fake.serve(m_bus->address()));
    DaemonClient daemon(client(), 200);
    QCOMPARE(daemon.proxy().timeout(), 200);

    const Outcome outcome = daemon.finish(daemon.proxy().viewLicenses());

    QCOMPARE(outcome.status, ExitStatus::NotConfirmed);
    QVERIFY(outcome.sentence.startsWith(QStringLiteral("bramd has not answered within 1 s.")));
}

void TestDaemonClient::who_leaves_during_the_call_is_unreachable()
{
    FakeDaemon fake({{}, {}, true});
    QVERIFY(fake.serve(m_bus->address()));
    DaemonClient daemon(client());

    const QDBusPendingReply<> reply = daemon.proxy().viewLicenses();
    QTRY_COMPARE(fake.calls().size(), 1);
    fake.leave();
    const Outcome outcome = daemon.finish(reply);

    QCOMPARE(outcome.status, ExitStatus::DaemonUnreachable);
    QVERIFY(outcome.sentence.startsWith(QStringLiteral("bramd has ended before it answered.")));
}

void TestDaemonClient::a_bus_that_goes_during_the_call_is_told_as_that()
{
    FakeDaemon fake({{}, {}, true});
    QVERIFY(fake.serve(m_bus->address()));
    DaemonClient daemon(client());

    const QDBusPendingReply<> reply = daemon.proxy().viewLicenses();
    QTRY_COMPARE(fake.calls().size(), 1);
    m_bus->stop();
    const Outcome outcome = daemon.finish(reply);

    QCOMPARE(outcome.status, ExitStatus::DaemonUnreachable);
    QVERIFY2(outcome.sentence.startsWith(QStringLiteral("The system bus cannot be reached (")),
             qPrintable(outcome.sentence));
}

void TestDaemonClient::without_a_bus_nobody_is_reached()
{
    const QString none = QStringLiteral("none");
    DaemonClient daemon(
        QDBusConnection::connectToBus(QStringLiteral("unix:path=/nonexistent"), none));

    const Outcome outcome = daemon.finish(daemon.proxy().viewLicenses());

    QCOMPARE(outcome.status, ExitStatus::DaemonUnreachable);
    QVERIFY2(outcome.sentence.startsWith(QStringLiteral(
                 "The system bus cannot be reached (Failed to connect to socket /nonexistent")),
             qPrintable(outcome.sentence));
}

QTEST_GUILESS_MAIN(TestDaemonClient)
#include "test_daemonclient.moc"
