#include "config/daemonconfig.h"
#include "launcher/desktopmanager.h"
#include "launcher/launcherhost.h"
#include "launcher/updatedatabasestub.h"
#include "support/testcase.h"

#include <QtTest>

using namespace LauncherHost;

namespace {

constexpr char Launcher[] = "bramd_launcher_a_b-a_b_Main";
constexpr char Handler[] = "bramd_handler_a_b-a_b_Open";
constexpr char Share[] = "bramd_handler_a_b-a_b_Share";
constexpr char Other[] = "bramd_launcher_c_d-c_d_Main";
const QString Category = QStringLiteral("com.corvo.bramd.launcher");

QString line(const char *literal, const QString &text)
{
    return QLatin1String(literal) + QLatin1String(" \"") + text + QLatin1Char('"');
}

/// The lines of one entry's deletion.
QStringList deletion(const char *name)
{
    return {line("Deleting:", entryPath(name)), line("Deleting:", iconPath(name)),
            line("Deleting:", settingsPath(name))};
}

/// Handlers have no settings entry; deleting it fails, and that is told.
QStringList missingSettings(const char *name)
{
    return {line("Could not remove:", settingsPath(name))};
}

ApkLauncher otherLauncher()
{
    return launcher(QStringLiteral("c.d"), QStringLiteral("c.d.Main"));
}

} // namespace

/// How DesktopManager removes what it made, and answers for it.
class DesktopRemovalTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void keepsWhatWasAnnounced();
    void removesEveryEntryWhenNothingWasAnnounced();
    void removesOrphansOfAnEarlierRun();
    void removesTheOldEntryOfAnActivityThatChangedItsKind();
    void countsOnlyTheLastAnnouncementOfAClass();
    void keepsAnnouncementsOverACompletion();
    void keepsWhatTheNextRuntimeAnnouncesAgain();
    void removesHandlersThatWereBlacklistedSince();
    void removesAllEntriesOfAPackage();
    void removesNothingOfAnUnknownPackage();
    void forgetsTheAnnouncementsOfARemovedPackage();
    void removesShareTargetsOfAPackage();
    void leavesEntriesOfOtherProgramsAlone();
    void tellsWhatItCouldNotRemove();
    void removesWhatAnInterruptedRunLeftBehind();
    void writesShareTargetsThatCouldNotBeWritten();
    void refreshesOnRequest();
    void listsInstalledEntriesByPackage();
    void resolvesThePackageOfADesktopFile();
    void knowsNamesOfApplications();

private:
    const DaemonConfig m_config;
    std::unique_ptr<UpdateDatabaseStub> m_database;
    std::unique_ptr<DesktopManager> m_manager;
};

void DesktopRemovalTest::init()
{
    TestCase::init();
    LauncherHost::reset();
    m_database = std::make_unique<UpdateDatabaseStub>();
    m_manager = std::make_unique<DesktopManager>(&m_config);
}

void DesktopRemovalTest::cleanup()
{
    m_manager.reset();
    m_database.reset();
    TestCase::cleanup();
}

void DesktopRemovalTest::keepsWhatWasAnnounced()
{
    m_manager->onCreateLauncher(launcher());
    m_manager->onCreateLauncher(handler());
    m_manager->onCreateLauncher(otherLauncher());
    const QStringList before = files();
    takeLog(QtDebugMsg);

    m_manager->onLaunchersComplete();

    QCOMPARE(files(), before);
    QCOMPARE(m_database->takeRuns(), QByteArray("-q\n"));
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList(QStringLiteral("Launchers complete. Removing orphans")));
}

void DesktopRemovalTest::removesEveryEntryWhenNothingWasAnnounced()
{
    m_manager->onCreateLauncher(otherLauncher());
    m_manager->onCreateLauncher(launcher());
    m_manager->onCreateLauncher(handler());
    DesktopManager restarted(&m_config);
    takeLog(QtDebugMsg);

    restarted.onLaunchersComplete();

    QCOMPARE(files(), QStringList(sharingPath()));
    QCOMPARE(m_database->takeRuns(), QByteArray("-q\n"));
    QStringList expected{QStringLiteral("Launchers complete. Removing orphans")};
    for (const char *name : {Handler, Launcher, Other})
        expected += QStringList(line("Removing ", entryPath(name))) + deletion(name);
    QCOMPARE(takeLog(QtDebugMsg, Category), expected);
    QCOMPARE(takeLog(QtWarningMsg, Category), missingSettings(Handler));
}

void DesktopRemovalTest::removesOrphansOfAnEarlierRun()
{
    m_manager->onCreateLauncher(launcher());
    m_manager->onCreateLauncher(otherLauncher());
    DesktopManager restarted(&m_config);

    restarted.onCreateLauncher(launcher());
    restarted.onLaunchersComplete();

    QCOMPARE(files(), QStringList({entryPath(Launcher), iconPath(Launcher), sharingPath(),
                                   settingsPath(Launcher)}));
}

void DesktopRemovalTest::removesTheOldEntryOfAnActivityThatChangedItsKind()
{
    m_manager->onCreateLauncher(launcher());
    ApkLauncher changed = launcher();
    changed.mimeTypes = QStringList(QStringLiteral("text/plain"));

    m_manager->onCreateLauncher(changed);
    QVERIFY(QFile::exists(entryPath(Launcher)));
    m_manager->onLaunchersComplete();

    const char handlerOfMain[] = "bramd_handler_a_b-a_b_Main";
    QCOMPARE(files(),
             QStringList({entryPath(handlerOfMain), iconPath(handlerOfMain), sharingPath()}));
}

void DesktopRemovalTest::countsOnlyTheLastAnnouncementOfAClass()
{
    ApkLauncher both = launcher();
    both.mimeTypes = QStringList(QStringLiteral("text/plain"));
    m_manager->onCreateLauncher(both);
    m_manager->onCreateLauncher(launcher());

    m_manager->onLaunchersComplete();

    QCOMPARE(m_manager->installedEntries(), QStringList(entryPath(Launcher)));
    QCOMPARE(takeLog(QtWarningMsg, Category), missingSettings("bramd_handler_a_b-a_b_Main"));
}

void DesktopRemovalTest::keepsAnnouncementsOverACompletion()
{
    m_manager->onCreateLauncher(launcher());
    m_manager->onLaunchersComplete();
    m_manager->onLaunchersComplete();

    QVERIFY(QFile::exists(entryPath(Launcher)));
    QCOMPARE(m_database->takeRuns(), QByteArray("-q\n-q\n"));
}

void DesktopRemovalTest::keepsWhatTheNextRuntimeAnnouncesAgain()
{
    m_manager->onCreateLauncher(launcher());
    m_manager->onCreateLauncher(otherLauncher());
    m_manager->onLaunchersComplete();

    m_manager->onRuntimeStarting();
    QVERIFY(QFile::exists(entryPath(Other))); // until it is known what the runtime still has
    m_manager->onCreateLauncher(launcher());
    m_manager->onLaunchersComplete();

    QCOMPARE(m_manager->installedEntries(), QStringList(entryPath(Launcher)));
}

void DesktopRemovalTest::removesHandlersThatWereBlacklistedSince()
{
    m_manager->onCreateLauncher(handler());
    HostFiles::write(QStringLiteral("/etc/bramd/app-blacklist"), "a.b\n");
    DesktopManager restarted(&m_config);

    restarted.onCreateLauncher(handler());
    QVERIFY(QFile::exists(entryPath(Handler)));
    restarted.onLaunchersComplete();

    QVERIFY(!QFile::exists(entryPath(Handler)));
    QCOMPARE(takeLog(QtWarningMsg, Category), missingSettings(Handler));
}

void DesktopRemovalTest::removesAllEntriesOfAPackage()
{
    m_manager->onCreateLauncher(launcher());
    m_manager->onCreateLauncher(handler());
    m_manager->onCreateLauncher(otherLauncher());
    takeLog(QtDebugMsg);

    m_manager->onRemovePackage(QStringLiteral("a.b"));

    QCOMPARE(files(),
             QStringList({entryPath(Other), iconPath(Other), sharingPath(), settingsPath(Other)}));
    QCOMPARE(m_database->takeRuns(), QByteArray("-q\n"));
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList(line("onRemovePackage:", QStringLiteral("a.b"))) + deletion(Handler) +
                 deletion(Launcher));
    QCOMPARE(takeLog(QtWarningMsg, Category), missingSettings(Handler));
}

void DesktopRemovalTest::removesNothingOfAnUnknownPackage()
{
    m_manager->onCreateLauncher(launcher());
    m_manager->onCreateLauncher(shareTarget());
    const QStringList before = files();
    const quint64 sharing = HostFiles::inode(sharingPath());

    m_manager->onRemovePackage(QStringLiteral("a"));
    m_manager->onRemovePackage(QString());

    QCOMPARE(files(), before);
    QCOMPARE(HostFiles::inode(sharingPath()), sharing);
    QCOMPARE(m_database->takeRuns(), QByteArray("-q\n-q\n"));
}

void DesktopRemovalTest::forgetsTheAnnouncementsOfARemovedPackage()
{
    m_manager->onCreateLauncher(launcher());
    const QByteArray entry = HostFiles::read(entryPath(Launcher));
    m_manager->onRemovePackage(QStringLiteral("a.b"));
    HostFiles::write(entryPath(Launcher), entry);

    m_manager->onLaunchersComplete();

    QVERIFY(!QFile::exists(entryPath(Launcher)));
    QCOMPARE(takeLog(QtWarningMsg, Category),
             QStringList({line("Could not remove:", iconPath(Launcher)),
                          line("Could not remove:", settingsPath(Launcher))}));
}

void DesktopRemovalTest::removesShareTargetsOfAPackage()
{
    m_manager->onCreateLauncher(shareTarget());
    ApkLauncher other = otherLauncher();
    other.shareMimeTypes = QStringList(QStringLiteral("text/plain"));
    m_manager->onCreateLauncher(other);

    m_manager->onRemovePackage(QStringLiteral("a.b"));

    QCOMPARE(QJsonDocument::fromJson(HostFiles::read(sharingPath())).object().keys(),
             QStringList(QStringLiteral("c.d")));
    QCOMPARE(takeLog(QtWarningMsg, Category), missingSettings(Share));
    QVERIFY(takeLogLine(QtDebugMsg,
                        QStringLiteral("Package \"a.b\" removed from sharing file. Writing.")));
}

void DesktopRemovalTest::leavesEntriesOfOtherProgramsAlone()
{
    const QString path = entryPath("browser");
    HostFiles::write(path, "[Desktop Entry]\nX-bramd-packageName=a.b\n");

    m_manager->onRemovePackage(QStringLiteral("a.b"));
    m_manager->onLaunchersComplete();

    QVERIFY(QFile::exists(path));
    QCOMPARE(m_manager->packageOfDesktopFile(path), QString());
}

void DesktopRemovalTest::tellsWhatItCouldNotRemove()
{
    m_manager->onCreateLauncher(launcher());
    const HostFiles::Mount readOnly[] = {
        HostFiles::Mount::readOnly(QStringLiteral("/usr/share/applications")),
        HostFiles::Mount::readOnly(QStringLiteral("/var/lib/bramd")),
        HostFiles::Mount::readOnly(QStringLiteral("/usr/share/corvo-settings/entries")),
    };

    m_manager->onRemovePackage(QStringLiteral("a.b"));

    QCOMPARE(takeLog(QtWarningMsg, Category),
             QStringList({line("Could not remove:", entryPath(Launcher)),
                          line("Could not remove:", iconPath(Launcher)),
                          line("Could not remove:", settingsPath(Launcher))}));
    QCOMPARE(m_database->takeRuns(), QByteArray("-q\n"));
}

void DesktopRemovalTest::removesWhatAnInterruptedRunLeftBehind()
{
    m_manager->onCreateLauncher(launcher());
    const QStringList before = files();
    HostFiles::write(iconPath(Other), "x");
    HostFiles::write(entryPath(Launcher) + QStringLiteral(".AbCdEf"), "x");
    takeLog(QtDebugMsg);

    m_manager->onLaunchersComplete();

    QCOMPARE(files(), before);
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList({QStringLiteral("Launchers complete. Removing orphans"),
                          line("Deleting:", entryPath(Launcher) + QStringLiteral(".AbCdEf")),
                          line("Deleting:", iconPath(Other))}));
}

void DesktopRemovalTest::writesShareTargetsThatCouldNotBeWritten()
{
    m_manager->onCreateLauncher(shareTarget());
    {
        const auto readOnly = HostFiles::Mount::readOnly(QStringLiteral("/var/lib/bramd"));
        m_manager->onRemovePackage(QStringLiteral("a.b"));
    }
    QVERIFY(takeLogLine(QtWarningMsg, QStringLiteral("Unable to write sharing file")));
    QVERIFY(HostFiles::read(sharingPath()).contains("a.b"));

    m_manager->onLaunchersComplete();

    QCOMPARE(files(), QStringList(sharingPath()));
    QCOMPARE(HostFiles::read(sharingPath()), QByteArray("{\n}\n"));
}

void DesktopRemovalTest::refreshesOnRequest()
{
    m_manager->refreshDesktop();

    QCOMPARE(m_database->takeRuns(), QByteArray("-q\n"));
}

void DesktopRemovalTest::listsInstalledEntriesByPackage()
{
    QCOMPARE(m_manager->installedEntries(), QStringList());

    m_manager->onCreateLauncher(otherLauncher());
    m_manager->onCreateLauncher(launcher());
    m_manager->onCreateLauncher(handler());

    QCOMPARE(m_manager->installedEntries(),
             QStringList({entryPath(Handler), entryPath(Launcher), entryPath(Other)}));
}

void DesktopRemovalTest::resolvesThePackageOfADesktopFile()
{
    m_manager->onCreateLauncher(launcher());
    takeLog(QtDebugMsg);

    QCOMPARE(m_manager->packageOfDesktopFile(entryPath(Launcher)), QStringLiteral("a.b"));
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList(line("Resolved:", entryPath(Launcher)) + QStringLiteral(" ->  \"a.b\"")));

    QCOMPARE(m_manager->packageOfDesktopFile(QStringLiteral("a.b")), QString());
    QCOMPARE(m_manager->packageOfDesktopFile(entryPath(Other)), QString());
    QCOMPARE(takeLog(QtDebugMsg, Category), QStringList());
}

void DesktopRemovalTest::knowsNamesOfApplications()
{
    m_manager->onCreateLauncher(launcher());

    QCOMPARE(m_manager->applicationName(QStringLiteral("a.b")), QStringLiteral("An App"));
    QCOMPARE(m_manager->applicationName(QStringLiteral("a")), QString());

    HostFiles::write(entryPath(Other), "[Desktop Entry]\nX-bramd-packageName=c.d\n");
    QCOMPARE(m_manager->applicationName(QStringLiteral("c.d")), QString());
    QCOMPARE(takeLog(QtWarningMsg, Category),
             QStringList(
                 QStringLiteral("File \"%1\" does not have key: \"Name\"").arg(entryPath(Other))));
}

QTEST_GUILESS_MAIN(DesktopRemovalTest)
#include "tst_desktopremoval.moc"
