#include "fakes/fakesystemd.h"
#include "platform/host/privatebus.h"
#include "support/testcase.h"
#include "tools/common/fakedaemon.h"
#include "tools/common/hostfile.h"
#include "tools/common/startwatch.h"
#include "tools/launcher/launcher.h"
#include "tools/launcher/launchrequest.h"

#include <QtTest>

namespace {

const QString Client = QStringLiteral("client");
const QString LaunchCall = QStringLiteral("launchIntent(ssssssa{sv})");
const QString ControlCall = QStringLiteral("controlService(b)");

/// In these states, one after the other, each time that somebody asks.
FakeSystemd::Unit unitThatIs(const QStringList &activeStates)
{
    QVector<QVariantMap> states;
    for (const QString &state : activeStates) {
        states.append(
            FakeSystemd::properties(state, QStringLiteral("any"), QStringLiteral("disabled")));
    }
    FakeSystemd::Unit unit;
    unit.properties = states.takeFirst();
    unit.next = states;
    return unit;
}

LaunchRequest request(const QStringList &opened = {})
{
    return {QStringLiteral("org.example.a"), QStringLiteral("org.example.a.Main"), opened};
}

} // namespace

class TestLauncher : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void a_runtime_that_has_not_failed_is_left_to_the_daemon_data();
    void a_runtime_that_has_not_failed_is_left_to_the_daemon();
    void a_failed_runtime_is_started_first();
    void a_runtime_that_fails_again_is_told_of();
    void a_runtime_that_is_not_installed_is_told_of();
    void the_daemon_is_asked_when_systemd_cannot_be();
    void each_thing_is_opened_by_a_call_of_its_own();
    void after_a_failure_nothing_more_is_asked();
    void of_several_none_is_opened_after_a_failure();
    void a_file_that_is_not_there_is_told_of_before_anything_is_asked();

private:
    QDBusConnection client() const { return QDBusConnection(Client); }
    QString address() const { return m_bus->address(); }

    std::unique_ptr<PrivateBus> m_bus;
};

void TestLauncher::init()
{
    TestCase::init();
    m_bus = std::make_unique<PrivateBus>();
    QVERIFY(m_bus->start());
    QVERIFY(QDBusConnection::connectToBus(address(), Client).isConnected());
}

void TestLauncher::cleanup()
{
    QDBusConnection::disconnectFromBus(Client);
    m_bus.reset();
    TestCase::cleanup();
}

void TestLauncher::a_runtime_that_has_not_failed_is_left_to_the_daemon_data()
{
    QTest::addColumn<QString>("activeState");

    QTest::newRow("active") << QStringLiteral("active");
    QTest::newRow("inactive") << QStringLiteral("inactive");
}

void TestLauncher::a_runtime_that_has_not_failed_is_left_to_the_daemon()
{
    QFETCH(QString, activeState);
    FakeSystemd systemd(address(), unitThatIs({activeState}));
    FakeDaemon daemon({{}, {}, false});
    QVERIFY(daemon.serve(address()));

    const Outcome outcome = Launcher(client()).launch(request());

    QVERIFY2(outcome.isDone(), qPrintable(outcome.sentence));
    QCOMPARE(daemon.calls(), QStringList{LaunchCall});
}

void TestLauncher::a_failed_runtime_is_started_first()
{
    FakeSystemd systemd(address(),
                        unitThatIs({QStringLiteral("failed"), QStringLiteral("failed"),
                                    QStringLiteral("activating"), QStringLiteral("active")}));
    FakeDaemon daemon({{}, {}, false});
    QVERIFY(daemon.serve(address()));

    const Outcome outcome = Launcher(client()).launch(request());

    QVERIFY2(outcome.isDone(), qPrintable(outcome.sentence));
    QCOMPARE(daemon.calls(), QStringList({ControlCall, LaunchCall}));
}

void TestLauncher::a_runtime_that_fails_again_is_told_of()
{
    FakeSystemd systemd(address(),
                        unitThatIs({QStringLiteral("failed"), QStringLiteral("failed"),
                                    QStringLiteral("activating"), QStringLiteral("failed")}));
    FakeDaemon daemon({{}, {}, false});
    QVERIFY(daemon.serve(address()));

    const Outcome outcome = Launcher(client()).launch(request());

    QVERIFY2(outcome == StartWatch::failure(), qPrintable(outcome.sentence));
    QCOMPARE(daemon.calls(), QStringList{ControlCall});
}

void TestLauncher::a_runtime_that_is_not_installed_is_told_of()
{
    FakeSystemd::Unit unit;
    unit.properties = {{QStringLiteral("LoadState"), QStringLiteral("not-found")}};
    FakeSystemd systemd(address(), unit);
    FakeDaemon daemon({{}, {}, false});
    QVERIFY(daemon.serve(address()));

    const Outcome outcome = Launcher(client()).launch(request());

    QVERIFY(outcome.status == ExitStatus::RuntimeUnavailable);
    QCOMPARE(daemon.calls(), QStringList());
}

void TestLauncher::the_daemon_is_asked_when_systemd_cannot_be()
{
    FakeDaemon daemon({{}, {}, false});
    QVERIFY(daemon.serve(address()));

    QVERIFY(Launcher(client()).launch(request()).isDone());

    QCOMPARE(daemon.calls(), QStringList{LaunchCall});
}

void TestLauncher::each_thing_is_opened_by_a_call_of_its_own()
{
    FakeDaemon daemon({{}, {}, false});
    QVERIFY(daemon.serve(address()));

    QVERIFY(Launcher(client())
                .launch(request({QStringLiteral("https://example.org/a"),
                                 QStringLiteral("https://example.org/b")}))
                .isDone());

    QCOMPARE(daemon.calls(), QStringList({LaunchCall, LaunchCall}));
}

void TestLauncher::after_a_failure_nothing_more_is_asked()
{
    FakeSystemd systemd(address(), unitThatIs({QStringLiteral("failed")}));
    FakeDaemon daemon({{}, QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"), false});
    QVERIFY(daemon.serve(address()));

    const Outcome outcome = Launcher(client()).launch(request());

    QVERIFY(outcome.status == ExitStatus::Refused);
    QCOMPARE(daemon.calls(), QStringList{ControlCall});
}

void TestLauncher::of_several_none_is_opened_after_a_failure()
{
    FakeDaemon daemon({{}, QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"), false});
    QVERIFY(daemon.serve(address()));

    const Outcome outcome = Launcher(client()).launch(request(
        {QStringLiteral("https://example.org/a"), QStringLiteral("https://example.org/b")}));

    QVERIFY(outcome.status == ExitStatus::Refused);
    QCOMPARE(daemon.calls(), QStringList{LaunchCall});
}

void TestLauncher::a_file_that_is_not_there_is_told_of_before_anything_is_asked()
{
    FakeDaemon daemon({{}, {}, false});
    QVERIFY(daemon.serve(address()));

    const Outcome outcome = Launcher(client()).launch(
        request({QStringLiteral("https://example.org/a"), QStringLiteral("/no/file.pdf")}));

    QVERIFY2(outcome == HostFile::missing(QStringLiteral("/no/file.pdf")),
             qPrintable(outcome.sentence));
    QCOMPARE(daemon.calls(), QStringList());
}

QTEST_GUILESS_MAIN(TestLauncher)
#include "test_launcher.moc"
