#include "config/daemonconfig.h"
#include "support/testcase.h"

#include <QtTest>

namespace {

const QString CriticalLine =
    QStringLiteral("Cannot find sdk version in /opt/umbra/ build properties");

/// The process keeps what it has read: each test function that changes the image runs last or
/// leaves values that the next one expects.
void writeImage(const QByteArray &properties)
{
    QDir().mkpath(QStringLiteral("/opt/umbra"));
    QFile file(QStringLiteral("/opt/umbra/build.prop"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(properties), properties.size());
}

} // namespace

/// Runs where /opt is private and holds the runtime image of one level, or none.
class AndroidVersionTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheImage();
    void findsARuntimeInstalledLater();
    void keepsKnownValuesWhenTheImageGoes();
};

void AndroidVersionTest::readsTheImage()
{
    const QByteArray level = qgetenv("TEST_SDK_LEVEL");
    if (level != "none") {
        QCOMPARE(DaemonConfig::androidSdkVersion(), level.toInt());
        QCOMPARE(DaemonConfig::androidRelease(), QStringLiteral("9"));
        QCOMPARE(DaemonConfig::androidSecurityPatch(), QStringLiteral("2021-05-05"));
        return;
    }

    QCOMPARE(DaemonConfig::androidSdkVersion(), 0);
    QCOMPARE(DaemonConfig::androidRelease(), QString());
    QCOMPARE(DaemonConfig::androidSecurityPatch(), QString());

    // each call looks again
    QCOMPARE(takeLog(QtCriticalMsg, QStringLiteral("com.corvo.bramd.config")),
             QStringList({CriticalLine, CriticalLine, CriticalLine}));
}

void AndroidVersionTest::findsARuntimeInstalledLater()
{
    if (qgetenv("TEST_SDK_LEVEL") != "none")
        QSKIP("only where the runtime is not installed at first");

    writeImage("ro.build.version.sdk=abc\nro.build.version.release=9\n");
    QCOMPARE(DaemonConfig::androidRelease(), QStringLiteral("9"));
    QCOMPARE(DaemonConfig::androidSdkVersion(), 0);
    QCOMPARE(takeLog(QtCriticalMsg), QStringList({CriticalLine, CriticalLine}));

    writeImage("ro.build.version.sdk=30\n");
    QCOMPARE(DaemonConfig::androidSdkVersion(), 30);
    QCOMPARE(DaemonConfig::androidRelease(), QStringLiteral("9"));
}

void AndroidVersionTest::keepsKnownValuesWhenTheImageGoes()
{
    const int level = DaemonConfig::androidSdkVersion();
    QVERIFY(level != 0);

    QVERIFY(QFile::remove(QStringLiteral("/opt/umbra/build.prop")));

    QCOMPARE(DaemonConfig::androidSdkVersion(), level);
    QCOMPARE(DaemonConfig::androidRelease(), QStringLiteral("9"));
}

QTEST_GUILESS_MAIN(AndroidVersionTest)
#include "tst_androidversion.moc"
