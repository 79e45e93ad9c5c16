#include "launcher/launcherhost.h"
#include "launcher/leftovers.h"
#include "support/testcase.h"

#include <QtTest>

using namespace LauncherHost;

namespace {

constexpr char Launcher[] = "bramd_launcher_a_b-a_b_Main";
constexpr char Handler[] = "bramd_handler_a_b-a_b_Open";
const QSet<QString> None;

} // namespace

/// What is found although no desktop entry leads there.
class LeftoversTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void areNoneWithoutFiles();
    void areIconsAndSettingsWithoutAnEntry();
    void areCopiesThatWereNotRenamed();
    void areNoFilesOfOthers();
};

void LeftoversTest::init()
{
    TestCase::init();
    LauncherHost::reset();
}

void LeftoversTest::areNoneWithoutFiles()
{
    QCOMPARE(Leftovers::find(None), QStringList());
}

void LeftoversTest::areIconsAndSettingsWithoutAnEntry()
{
    for (const QString &path : {entryPath(Launcher), iconPath(Launcher), settingsPath(Launcher),
                                iconPath(Handler), sharingPath()})
        HostFiles::write(path, "x");

    QCOMPARE(Leftovers::find({entryPath(Launcher), entryPath(Handler)}), QStringList());
    QCOMPARE(Leftovers::find({entryPath(Launcher)}), QStringList(iconPath(Handler)));
    QCOMPARE(Leftovers::find(None),
             QStringList({iconPath(Handler), iconPath(Launcher), settingsPath(Launcher)}));
}

void LeftoversTest::areCopiesThatWereNotRenamed()
{
    QStringList copies;
    for (const QString &path : {entryPath(Handler), entryPath(Launcher), iconPath(Launcher),
                                sharingPath(), settingsPath(Launcher)}) {
        copies += path + QStringLiteral(".aBcXyZ");
        HostFiles::write(path, "x");
        HostFiles::write(copies.last(), "x");
    }

    QCOMPARE(Leftovers::find({entryPath(Launcher)}), copies);
}

void LeftoversTest::areNoFilesOfOthers()
{
    for (const char *path :
         {"/usr/share/applications/browser.desktop.aBcXyZ", "/var/lib/bramd/photo.png",
          "/usr/share/applications/bramd_launcher_a-b.desktop.orig",
          "/usr/share/corvo-settings/entries/sharing.json.aBcXyZ",
          "/usr/share/corvo-settings/entries/wlan.json", "/usr/share/applications/bramd_x.png"})
        HostFiles::write(QString::fromLatin1(path), "x");

    QCOMPARE(Leftovers::find(None), QStringList());
}

QTEST_GUILESS_MAIN(LeftoversTest)
#include "tst_leftovers.moc"
