#include "config/daemonconfig.h"
#include "support/testcase.h"

#include <QtTest>

class DaemonConfigTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void givesThePathsBelowTheDefaultRoot_data();
    void givesThePathsBelowTheDefaultRoot();
    void takesTheRootFromTheEnvironment_data();
    void takesTheRootFromTheEnvironment();
    void readsTheRootOnce();
    void refusesOtherNumbers_data();
    void refusesOtherNumbers();
    void mapsPathsIntoTheRuntime();
};

void DaemonConfigTest::init()
{
    TestCase::init();
    qunsetenv("ANDROID_DATA_ROOT");
}

void DaemonConfigTest::givesThePathsBelowTheDefaultRoot_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("path");

    QTest::newRow("DataRoot") << 1 << QStringLiteral("/home/.android");
    QTest::newRow("AppsDir") << 2 << QStringLiteral("/home/.android/data/app/");
    QTest::newRow("StagingIncomingDir")
        << 3 << QStringLiteral("/home/.android/data/xrs-staging/app/incoming/");
    QTest::newRow("StagingPackagedDir")
        << 4 << QStringLiteral("/home/.android/data/xrs-staging/app/packaged/");
    QTest::newRow("AppDataDir") << 5 << QStringLiteral("/home/.android/data/data/");
}

void DaemonConfigTest::givesThePathsBelowTheDefaultRoot()
{
    QFETCH(int, number);
    QFETCH(QString, path);

    const DaemonConfig config;

    QCOMPARE(config.path(static_cast<DaemonConfig::SymbolicPath>(number)), path);
    QCOMPARE(takeLog(QtDebugMsg), QStringList());
}

void DaemonConfigTest::takesTheRootFromTheEnvironment_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QString>("root");
    QTest::addColumn<QString>("appsDir");

    QTest::newRow("a path") << QByteArray("/data/apps") << QStringLiteral("/data/apps")
                            << QStringLiteral("/data/apps/data/app/");
    QTest::newRow("the empty string")
        << QByteArray("") << QStringLiteral("") << QStringLiteral("/data/app/");
    QTest::newRow("a trailing slash is kept")
        << QByteArray("/x/") << QStringLiteral("/x/") << QStringLiteral("/x//data/app/");
    QTest::newRow("UTF-8") << QByteArray("/d\xC3\xA9p") << QStringLiteral("/d\u00E9p")
                           << QStringLiteral("/d\u00E9p/data/app/");
    QTest::newRow("place markers")
        << QByteArray("/%1/%2") << QStringLiteral("/%1/%2") << QStringLiteral("/%1/%2/data/app/");
}

void DaemonConfigTest::takesTheRootFromTheEnvironment()
{
    QFETCH(QByteArray, value);
    QFETCH(QString, root);
    QFETCH(QString, appsDir);
    qputenv("ANDROID_DATA_ROOT", value);

    const DaemonConfig config;

    QCOMPARE(config.path(DaemonConfig::DataRoot), root);
    QCOMPARE(config.path(DaemonConfig::AppsDir), appsDir);
    QVERIFY(takeLogLine(QtDebugMsg,
                        QStringLiteral("Using custom path for apps + data:  \"%1\"").arg(root)));
}

void DaemonConfigTest::readsTheRootOnce()
{
    const DaemonConfig config;
    qputenv("ANDROID_DATA_ROOT", "/elsewhere");

    QCOMPARE(config.path(DaemonConfig::DataRoot), QStringLiteral("/home/.android"));
}

void DaemonConfigTest::refusesOtherNumbers_data()
{
    QTest::addColumn<int>("number");

    QTest::newRow("0") << 0;
    QTest::newRow("6") << 6;
    QTest::newRow("-1") << -1;
}

void DaemonConfigTest::refusesOtherNumbers()
{
    QFETCH(int, number);

    const DaemonConfig config;

    QVERIFY(config.path(static_cast<DaemonConfig::SymbolicPath>(number)).isNull());
    QCOMPARE(takeLog(QtWarningMsg, QStringLiteral("com.corvo.bramd.config")),
             QStringList(QStringLiteral("Cannot handle symbolic path: %1").arg(number)));
}

void DaemonConfigTest::mapsPathsIntoTheRuntime()
{
    QCOMPARE(DaemonConfig::toAndroidPath(QStringLiteral("/run/media/user/sdcard/d.mp3")),
             QStringLiteral("/storage/sdcard/d.mp3"));
    QCOMPARE(DaemonConfig::toAndroidUrl(QStringLiteral("/run/media/user/sdcard/d.mp3")),
             QUrl(QStringLiteral("file:///storage/sdcard/d.mp3")));
}

QTEST_GUILESS_MAIN(DaemonConfigTest)
#include "tst_daemonconfig.moc"
