#include "fakes/fakesystemd.h"
#include "platform/host/privatebus.h"
#include "support/testcase.h"
#include "tools/common/fakedaemon.h"
#include "tools/opener/apknotice.h"
#include "tools/opener/apkopener.h"

#include <QtTest>

Q_DECLARE_METATYPE(ExitStatus)

namespace {

const QString Client = QStringLiteral("client");

} // namespace

class TestApkOpener : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void the_notice_of_a_failure_says_what_can_be_done_data();
    void the_notice_of_a_failure_says_what_can_be_done();
    void no_failure_is_told_of_while_there_may_be_none_data();
    void no_failure_is_told_of_while_there_may_be_none();
    void a_refusal_without_a_runtime_is_about_the_runtime();
};

void TestApkOpener::the_notice_of_a_failure_says_what_can_be_done_data()
{
    QTest::addColumn<ExitStatus>("status");
    QTest::addColumn<QString>("body");

    QTest::newRow("refused") << ExitStatus::Refused << QStringLiteral("bramd-install-refused");
    QTest::newRow("no runtime") << ExitStatus::RuntimeUnavailable
                                << QStringLiteral("bramd-install-no-runtime");
    QTest::newRow("no daemon") << ExitStatus::DaemonUnreachable
                               << QStringLiteral("bramd-install-unavailable");
}

void TestApkOpener::the_notice_of_a_failure_says_what_can_be_done()
{
    QFETCH(ExitStatus, status);
    QFETCH(QString, body);

    // Without a catalogue, texts are their ids.
    const ApkNotice expected{QStringLiteral("bramd-install-failed: a <b>.apk"), body};
    const std::optional<ApkNotice> notice = failureNotice(QStringLiteral("a <b>.apk"), status);

    QVERIFY(notice.has_value());
    QVERIFY2(*notice == expected, qPrintable(notice->summary + notice->body));
}

void TestApkOpener::no_failure_is_told_of_while_there_may_be_none_data()
{
    QTest::addColumn<ExitStatus>("status");

    QTest::newRow("taken") << ExitStatus::Done;
    QTest::newRow("slow") << ExitStatus::NotConfirmed;
}

void TestApkOpener::no_failure_is_told_of_while_there_may_be_none()
{
    QFETCH(ExitStatus, status);

    QVERIFY(!failureNotice(QStringLiteral("a.apk"), status).has_value());
}

void TestApkOpener::a_refusal_without_a_runtime_is_about_the_runtime()
{
    PrivateBus bus;
    QVERIFY(bus.start());
    FakeSystemd::Unit unit;
    unit.properties = {{QStringLiteral("LoadState"), QStringLiteral("not-found")}};
    FakeSystemd systemd(bus.address(), unit);
    FakeDaemon daemon({{false}, {}, false});
    QVERIFY(daemon.serve(bus.address()));
    const QDBusConnection client = QDBusConnection::connectToBus(bus.address(), Client);

    const Outcome outcome = ApkOpener(client, client).open(QCoreApplication::applicationFilePath());

    QVERIFY2(outcome.status == ExitStatus::RuntimeUnavailable, qPrintable(outcome.sentence));
    // It was asked all the same: it offers the runtime then.
    QCOMPARE(daemon.calls(), QStringList{QStringLiteral("installFile(s)")});
    QDBusConnection::disconnectFromBus(Client);
}

QTEST_GUILESS_MAIN(TestApkOpener)
#include "test_apkopener.moc"
