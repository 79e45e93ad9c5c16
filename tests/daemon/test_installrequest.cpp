#include "config/daemonconfig.h"
#include "daemon/installrequest.h"
#include "support/testcase.h"

#include <QtTest>

Q_DECLARE_METATYPE(PackageSource)

class TestInstallRequest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void only_what_a_user_asked_for_is_not_silent_data();
    void only_what_a_user_asked_for_is_not_silent();
    void the_path_is_the_runtimes_data();
    void the_path_is_the_runtimes();

private:
    const DaemonConfig m_config;
};

void TestInstallRequest::only_what_a_user_asked_for_is_not_silent_data()
{
    const QString packaged = m_config.path(DaemonConfig::StagingPackagedDir);
    QTest::addColumn<QString>("filename");
    QTest::addColumn<PackageSource>("source");
    QTest::addColumn<bool>("silent");

    QTest::newRow("a user's file") << QStringLiteral("/tmp/a.apk") << PackageSource::File << false;
    QTest::newRow("of a host package")
        << packaged + QStringLiteral("a.apk") << PackageSource::File << true;
    QTest::newRow("below its directory")
        << packaged + QStringLiteral("x/a.apk") << PackageSource::File << false;
    QTest::newRow("of the device")
        << QStringLiteral("/tmp/a.apk") << PackageSource::Preload << true;
    QTest::newRow("of the partner space")
        << QStringLiteral("/tmp/a.apk") << PackageSource::PartnerSpace << true;
}

void TestInstallRequest::only_what_a_user_asked_for_is_not_silent()
{
    QFETCH(QString, filename);
    QFETCH(PackageSource, source);

    const PackageMod request =
        installRequest(filename, QStringLiteral("/staged.apk"), source, m_config);

    QVERIFY(request.install);
    QTEST(request.silent, "silent");
}

void TestInstallRequest::the_path_is_the_runtimes_data()
{
    QTest::addColumn<QString>("staged");
    QTest::addColumn<QString>("path");

    QTest::newRow("below the data root")
        << m_config.path(DaemonConfig::DataRoot) + QStringLiteral("/data/a.apk")
        << QStringLiteral("/data/a.apk");
    QTest::newRow("elsewhere") << QStringLiteral("/x/a.apk") << QStringLiteral("/x/a.apk");
}

void TestInstallRequest::the_path_is_the_runtimes()
{
    QFETCH(QString, staged);

    QTEST(installRequest(QStringLiteral("/a.apk"), staged, PackageSource::File, m_config).path,
          "path");
}

QTEST_GUILESS_MAIN(TestInstallRequest)
#include "test_installrequest.moc"
