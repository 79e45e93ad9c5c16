#include "launcher/launcherpaths.h"
#include "support/hostfiles.h"
#include "support/testcase.h"
#include "tools/ctl/installwatch.h"
#include "tools/ctl/literals.h"

#include <QtTest>

namespace {

const QString Package = QStringLiteral("a.b");

QString entryPath(const QString &name)
{
    return LauncherPaths::applicationsDir() + QLatin1Char('/') + name;
}

const QString Main = QStringLiteral("bramd_launcher_a_b-a_b_Main.desktop");
const QString Other = QStringLiteral("bramd_handler_a_b-a_b_View.desktop");

void writeEntry(const QString &name, const QByteArray &more = {})
{
    HostFiles::write(entryPath(name), "[Desktop Entry]\nName=A\nX-bramd-packageName=a.b\n" + more);
}

void writeVersion(const QByteArray &version)
{
    HostFiles::write(LauncherPaths::settingsEntry(entryPath(Main)),
                     R"({"entries":[{"params":{"properties":{"packageVersion":")" + version +
                         R"("}}}]})");
}

} // namespace

/// In a private root, where the files of the host are the test's own.
class InstallWatchTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void noticesANewApp();
    void noticesTheNewVersion();
    void takesNoOtherChangeForAnUpdate_data();
    void takesNoOtherChangeForAnUpdate();
    void takesAnyChangeWhenTheVersionIsNotKnown();
    void knowsThatTheVersionWasThere();
};

void InstallWatchTest::init()
{
    TestCase::init();
    HostFiles::makeEmptyDirectory(LauncherPaths::applicationsDir());
    HostFiles::makeEmptyDirectory(QFileInfo(LauncherPaths::settingsEntry(entryPath(Main))).path());
}

void InstallWatchTest::noticesANewApp()
{
    const InstallWatch watch(Package, "1.0"_q);
    QVERIFY(!watch.wasThereBefore() && !watch.hadThisVersion() && !watch.hasChanged());
    writeEntry(Other);
    QVERIFY(watch.hasChanged());
}

void InstallWatchTest::noticesTheNewVersion()
{
    writeEntry(Main);
    writeVersion("1.0");
    const InstallWatch watch(Package, "2.0"_q);
    QVERIFY(watch.wasThereBefore() && !watch.hadThisVersion() && !watch.hasChanged());
    writeVersion("2.0");
    QVERIFY(watch.hasChanged());
}

void InstallWatchTest::takesNoOtherChangeForAnUpdate_data()
{
    QTest::addColumn<QString>("removed");
    QTest::addColumn<QByteArray>("more");
    QTest::newRow("an entry that is not announced any more") << Other << QByteArray();
    QTest::newRow("an app that was hidden") << QString() << QByteArray("NoDisplay=true\n");
}

void InstallWatchTest::takesNoOtherChangeForAnUpdate()
{
    QFETCH(QString, removed);
    QFETCH(QByteArray, more);
    writeEntry(Main);
    writeEntry(Other);
    writeVersion("1.0");
    const InstallWatch watch(Package, "2.0"_q);
    writeEntry(Main, more);
    if (!removed.isEmpty())
        HostFiles::removeAll(entryPath(removed));
    QVERIFY(!watch.hasChanged());
}

void InstallWatchTest::takesAnyChangeWhenTheVersionIsNotKnown()
{
    writeEntry(Main);
    writeVersion("1.0");
    const InstallWatch watch(Package, QString());
    QVERIFY(!watch.hadThisVersion());
    writeVersion("2.0");
    QVERIFY(watch.hasChanged());
}

void InstallWatchTest::knowsThatTheVersionWasThere()
{
    writeEntry(Main);
    writeVersion("1.0");
    QVERIFY(InstallWatch(Package, "1.0"_q).hadThisVersion());
}

QTEST_GUILESS_MAIN(InstallWatchTest)
#include "tst_installwatch.moc"
