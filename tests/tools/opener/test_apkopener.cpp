#include "fakes/fakesystemd.h"
#include "platform/host/privatebus.h"
#include "support/hostfiles.h"
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
    void a_runtime_that_cannot_run_is_told_of_data();
    void a_runtime_that_cannot_run_is_told_of();
};

void TestApkOpener::the_notice_of_a_failure_says_what_can_be_done_data()
{
    QTest::addColumn<ExitStatus>("status");
    QTest::addColumn<bool>("isRuntimeInstalled");
    QTest::addColumn<QString>("body");

    QTest::newRow("refused") << ExitStatus::Refused << true
                             << QStringLiteral("bramd-install-refused");
    QTest::newRow("no runtime") << ExitStatus::RuntimeUnavailable << false
                                << QStringLiteral("bramd-install-no-runtime");
    QTest::newRow("a runtime that cannot run")
        << ExitStatus::RuntimeUnavailable << true << QStringLiteral("bramd-install-unavailable");
    QTest::newRow("no daemon") << ExitStatus::DaemonUnreachable << true
                               << QStringLiteral("bramd-install-unavailable");
}

void TestApkOpener::the_notice_of_a_failure_says_what_can_be_done()
{
    QFETCH(ExitStatus, status);
    QFETCH(bool, isRuntimeInstalled);
    QFETCH(QString, body);

    // Without a catalogue, texts are their ids.
    const ApkNotice expected{QStringLiteral("bramd-install-failed: a <b>.apk"), body};
    const std::optional<ApkNotice> notice =
        failureNotice(QStringLiteral("a <b>.apk"), status, isRuntimeInstalled);

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

    QVERIFY(!failureNotice(QStringLiteral("a.apk"), status, true).has_value());
}

void TestApkOpener::a_runtime_that_cannot_run_is_told_of_data()
{
    QTest::addColumn<bool>("isImageThere");
    QTest::addColumn<QVariantMap>("unit");
    QTest::addColumn<QStringList>("calls");
    QTest::addColumn<QString>("says");

    const QVariantMap missing{{QStringLiteral("LoadState"), QStringLiteral("not-found")}};
    const QVariantMap masked{{QStringLiteral("LoadState"), QStringLiteral("masked")},
                             {QStringLiteral("ActiveState"), QStringLiteral("inactive")}};
    const QVariantMap stopped = FakeSystemd::properties(
        QStringLiteral("inactive"), QStringLiteral("dead"), QStringLiteral("disabled"));
    // It is asked all the same: it opens the store's page then.
    const QStringList install{QStringLiteral("installFile(s)")};

    QTest::newRow("no runtime") << false << missing << install << QStringLiteral("from the store");
    QTest::newRow("no image") << false << stopped << install << QStringLiteral("from the store");
    QTest::newRow("no unit") << true << missing << QStringList() << QStringLiteral("no unit");
    QTest::newRow("masked") << true << masked << QStringList() << QStringLiteral("is masked");
}

/// In a private root, where the runtime's image is the test's own.
void TestApkOpener::a_runtime_that_cannot_run_is_told_of()
{
    QFETCH(bool, isImageThere);
    QFETCH(QVariantMap, unit);
    QFETCH(QString, says);
    HostFiles::makeEmptyDirectory(QStringLiteral("/opt/umbra"));
    if (isImageThere)
        HostFiles::write(QStringLiteral("/opt/umbra/system.img"), "image");
    PrivateBus bus;
    QVERIFY(bus.start());
    FakeSystemd::Unit described;
    described.properties = unit;
    FakeSystemd systemd(bus.address(), described);
    FakeDaemon daemon({{false}, {}, false});
    QVERIFY(daemon.serve(bus.address()));
    const QDBusConnection client = QDBusConnection::connectToBus(bus.address(), Client);

    const Outcome outcome = ApkOpener(client, client).open(QStringLiteral(APKS "/weather.apk"));

    QVERIFY(outcome.status == ExitStatus::RuntimeUnavailable);
    QVERIFY2(outcome.sentence.contains(says), qPrintable(outcome.sentence));
    QTEST(daemon.calls(), "calls");
    QDBusConnection::disconnectFromBus(Client);
}

QTEST_GUILESS_MAIN(TestApkOpener)
#include "test_apkopener.moc"
