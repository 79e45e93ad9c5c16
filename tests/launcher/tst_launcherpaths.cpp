#include "launcher/apklauncher.h"
#include "launcher/launcherpaths.h"
#include "support/testcase.h"

#include <QtTest>

class LauncherPathsTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void escapesNames_data();
    void escapesNames();
    void namesDesktopFilesByKind_data();
    void namesDesktopFilesByKind();
    void namesIconAndSettingsEntry_data();
    void namesIconAndSettingsEntry();
    void foldsTheVersionOfPartnerSpacePackages_data();
    void foldsTheVersionOfPartnerSpacePackages();
    void knowsApkFilesByTheirEnding();
    void knowsApkDirectoriesByTheirBase();
};

void LauncherPathsTest::escapesNames_data()
{
    QTest::addColumn<QString>("packageName");
    QTest::addColumn<QString>("className");
    QTest::addColumn<QString>("component");

    const auto row = [](const char *name, const char *package, const char *activity,
                        const char *component) {
        QTest::newRow(name) << QString::fromUtf8(package) << QString::fromUtf8(activity)
                            << QString::fromUtf8(component);
    };
    row("dots and underscores", "a.b_c", "a.b.Main", "a_b__c-a_b_Main");
    row("neither", "a", "Main", "a-Main");
    row("next to each other", "a._b", "a_.b", "a___b-a___b");
    row("many", "..", "__", "__-____");
    row("minus stays", "a-b", "c-d", "a-b-c-d");
    row("inner class", "a.b", "a.b.Main$Inner", "a_b-a_b_Main$Inner");
    row("other letters", "a.b", "a.\xC3\xA9.\xE6\x97\xA5", "a_b-a_\xC3\xA9_\xE6\x97\xA5");
}

void LauncherPathsTest::escapesNames()
{
    QFETCH(QString, packageName);
    QFETCH(QString, className);
    QFETCH(QString, component);

    QCOMPARE(LauncherPaths::escapedComponent(packageName, className), component);
}

void LauncherPathsTest::namesDesktopFilesByKind_data()
{
    QTest::addColumn<QStringList>("mimeTypes");
    QTest::addColumn<QStringList>("shareMimeTypes");
    QTest::addColumn<QString>("path");

    const QStringList none;
    const QStringList some(QStringLiteral("text/plain"));
    const QString handler =
        QStringLiteral("/usr/share/applications/bramd_handler_a_b-Main.desktop");
    QTest::newRow("launcher") << none << none
                              << QStringLiteral(
                                     "/usr/share/applications/bramd_launcher_a_b-Main.desktop");
    QTest::newRow("opens content") << some << none << handler;
    QTest::newRow("takes shared content") << none << some << handler;
    QTest::newRow("both") << some << some << handler;
    QTest::newRow("an empty MIME type counts") << QStringList(QString()) << none << handler;
}

void LauncherPathsTest::namesDesktopFilesByKind()
{
    QFETCH(QStringList, mimeTypes);
    QFETCH(QStringList, shareMimeTypes);
    QFETCH(QString, path);

    ApkLauncher launcher;
    launcher.packageName = QStringLiteral("a.b");
    launcher.className = QStringLiteral("Main");
    launcher.mimeTypes = mimeTypes;
    launcher.shareMimeTypes = shareMimeTypes;

    QCOMPARE(LauncherPaths::desktopFile(launcher), path);
}

void LauncherPathsTest::namesIconAndSettingsEntry_data()
{
    QTest::addColumn<QString>("desktopFile");
    QTest::addColumn<QString>("icon");
    QTest::addColumn<QString>("settingsEntry");

    QTest::newRow("plain name")
        << QStringLiteral("/usr/share/applications/bramd_launcher_a-M.desktop")
        << QStringLiteral("/var/lib/bramd/bramd_launcher_a-M.png")
        << QStringLiteral("/usr/share/corvo-settings/entries/bramd_launcher_a-M.json");
    QTest::newRow("every .desktop is replaced for the icon, the last is cut for the entry")
        << QStringLiteral("/usr/share/applications/x.desktop.y.desktop")
        << QStringLiteral("/var/lib/bramd/x.png.y.png")
        << QStringLiteral("/usr/share/corvo-settings/entries/x.desktop.y.json");
    QTest::newRow("case tells") << QStringLiteral("/usr/share/applications/x.Desktop")
                                << QStringLiteral("/var/lib/bramd/x.Desktop")
                                << QStringLiteral("/usr/share/corvo-settings/entries/x.json");
}

void LauncherPathsTest::namesIconAndSettingsEntry()
{
    QFETCH(QString, desktopFile);
    QFETCH(QString, icon);
    QFETCH(QString, settingsEntry);

    QCOMPARE(LauncherPaths::icon(desktopFile), icon);
    QCOMPARE(LauncherPaths::settingsEntry(desktopFile), settingsEntry);
}

void LauncherPathsTest::foldsTheVersionOfPartnerSpacePackages_data()
{
    QTest::addColumn<QString>("packageName");
    QTest::addColumn<QString>("marker");

    const auto row = [](const char *name, const char *package, const char *marker) {
        QTest::newRow(name) << QString::fromUtf8(package) << QString::fromUtf8(marker);
    };
    row("no version", "a.b", "/usr/share/bramd/partnerspace/a.b.apk");
    row("version", "a.b-12", "/usr/share/bramd/partnerspace/a.b.apk");
    row("only the last of two", "a-1-2", "/usr/share/bramd/partnerspace/a-1.apk");
    row("no digits", "a-b", "/usr/share/bramd/partnerspace/a-b.apk");
    row("minus alone", "a-", "/usr/share/bramd/partnerspace/a-.apk");
    row("only at the end", "a-1.apk.b", "/usr/share/bramd/partnerspace/a-1.apk.b.apk");
    row("other digits", "a-\xD9\xA1", "/usr/share/bramd/partnerspace/a-\xD9\xA1.apk");
    row("place marker", "%1", "/usr/share/bramd/partnerspace/%1.apk");
}

void LauncherPathsTest::foldsTheVersionOfPartnerSpacePackages()
{
    QFETCH(QString, packageName);
    QFETCH(QString, marker);

    QCOMPARE(LauncherPaths::partnerSpaceMarker(packageName), marker);
}

void LauncherPathsTest::knowsApkFilesByTheirEnding()
{
    QVERIFY(LauncherPaths::isApkPath(QStringLiteral("/nowhere/a.apk")));
    QVERIFY(LauncherPaths::isApkPath(QStringLiteral("a.APK")));
    QVERIFY(!LauncherPaths::isApkPath(QStringLiteral("/nowhere/a.apk.zip")));
    QVERIFY(!LauncherPaths::isApkPath(QString()));
}

void LauncherPathsTest::knowsApkDirectoriesByTheirBase()
{
    const QTemporaryDir directory;
    QVERIFY(!LauncherPaths::isApkPath(directory.path()));

    QFile base(directory.filePath(QStringLiteral("base.apk")));
    QVERIFY(base.open(QIODevice::WriteOnly));

    QVERIFY(LauncherPaths::isApkPath(directory.path()));
    QVERIFY(!LauncherPaths::isApkPath(directory.filePath(QStringLiteral("other"))));
}

QTEST_GUILESS_MAIN(LauncherPathsTest)
#include "tst_launcherpaths.moc"
