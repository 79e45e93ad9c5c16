#include "config/daemonconfig.h"
#include "launcher/desktopmanager.h"
#include "launcher/launcherhost.h"
#include "launcher/updatedatabasestub.h"
#include "support/testcase.h"

#include <QtTest>

#include <sys/stat.h>

using namespace LauncherHost;

namespace {

constexpr char Launcher[] = "bramd_launcher_a_b-a_b_Main";
constexpr char Handler[] = "bramd_handler_a_b-a_b_Open";
constexpr char Share[] = "bramd_handler_a_b-a_b_Share";
const QString Category = QStringLiteral("com.corvo.bramd.launcher");

QByteArray launcherText(const QByteArray &name)
{
    return "[Desktop Entry]\n"
           "Exec=bramd-launcher a.b.apk a.b/a.b.Main\n"
           "Icon=/var/lib/bramd/bramd_launcher_a_b-a_b_Main.png\n"
           "Name=" +
           name +
           "\n"
           "Type=Application\n"
           "Version=1.0\n"
           "X-Orca-Application-Type=no-invoker\n"
           "X-bramd-apkfile=/home/.android/data/app//a.b.apk\n"
           "X-bramd-packageName=a.b\n";
}

QString line(const char *literal, const QString &path)
{
    return QLatin1String(literal) + QLatin1String(" \"") + path + QLatin1Char('"');
}

} // namespace

/// What DesktopManager makes of announcements.
class DesktopManagerTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void createsAPlainLauncher();
    void createsAHandler();
    void createsAShareTarget();
    void joinsEmptyMimeTypes();
    void tellsOfNewLaunchersBeforeTheyAreWritten();
    void leavesAnUnchangedLauncherAlone();
    void rewritesOnlyAChangedName();
    void keepsForeignKeys();
    void showsALauncherThatWasHidden();
    void turnsAHandlerWithoutMimeTypesIntoOneWithThem();
    void rewritesAChangedIcon();
    void writesTheIconOfANewEntryAnew();
    void hidesABlacklistedLauncher();
    void dropsABlacklistedHandler_data();
    void dropsABlacklistedHandler();
    void movesPartnerAppsToTheirSpace_data();
    void movesPartnerAppsToTheirSpace();
    void usesTheDataRootOfTheConfiguration();
    void writesForEveryUserWhateverTheUmask();
    void doesNotRunTheRefresh();
    void goesOnWhenTheIconCannotBeWritten();
    void goesOnWhenNothingCanBeWritten();
    void keepsOldFilesWhenTheDisksAreFull();

private:
    const DaemonConfig m_config;
};

void DesktopManagerTest::init()
{
    TestCase::init();
    LauncherHost::reset();
}

void DesktopManagerTest::createsAPlainLauncher()
{
    DesktopManager manager(&m_config);
    QSignalSpy installed(&manager, &DesktopManager::newApplicationInstalled);

    manager.onCreateLauncher(launcher());

    QCOMPARE(HostFiles::read(entryPath(Launcher)), launcherText("An App"));
    QCOMPARE(HostFiles::read(iconPath(Launcher)), launcher().icon);
    QVERIFY(HostFiles::read(settingsPath(Launcher)).contains("\"packageVersion\": \"1.0\""));
    QCOMPARE(files(), QStringList({entryPath(Launcher), iconPath(Launcher), sharingPath(),
                                   settingsPath(Launcher)}));
    QCOMPARE(HostFiles::read(sharingPath()), QByteArray());
    QCOMPARE(installed.count(), 1);
    QCOMPARE(installed.first().first().value<ApkLauncher>(), launcher());
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList({line("onCreateLauncher:", entryPath(Launcher)),
                          line("iconfilename:", iconPath(Launcher)),
                          line("Updating:", entryPath(Launcher))}));
}

void DesktopManagerTest::createsAHandler()
{
    DesktopManager manager(&m_config);

    manager.onCreateLauncher(handler());

    QCOMPARE(HostFiles::read(entryPath(Handler)),
             QByteArray("[Desktop Entry]\n"
                        "Exec=bramd-launcher -d %U a.b.apk a.b/a.b.Open\n"
                        "Icon=/var/lib/bramd/bramd_handler_a_b-a_b_Open.png\n"
                        "MimeType=text/plain;x-scheme-handler/tel\n"
                        "Name=An App\n"
                        "NoDisplay=true\n"
                        "Type=Application\n"
                        "Version=1.0\n"
                        "X-Orca-Application-Type=no-invoker\n"
                        "X-bramd-apkfile=/home/.android/data/app//a.b.apk\n"
                        "X-bramd-packageName=a.b\n"));
    QCOMPARE(files(), QStringList({entryPath(Handler), iconPath(Handler), sharingPath()}));
    QCOMPARE(HostFiles::read(sharingPath()), QByteArray());
}

void DesktopManagerTest::createsAShareTarget()
{
    DesktopManager manager(&m_config);

    manager.onCreateLauncher(shareTarget());

    QCOMPARE(HostFiles::read(entryPath(Share)),
             QByteArray("[Desktop Entry]\n"
                        "Exec=bramd-launcher a.b.apk a.b/a.b.Share\n"
                        "Icon=/var/lib/bramd/bramd_handler_a_b-a_b_Share.png\n"
                        "Name=An App\n"
                        "NoDisplay=true\n"
                        "Type=Application\n"
                        "Version=1.0\n"
                        "X-Orca-Application-Type=no-invoker\n"
                        "X-bramd-apkfile=/home/.android/data/app//a.b.apk\n"
                        "X-bramd-packageName=a.b\n"));
    QCOMPARE(files(), QStringList({entryPath(Share), iconPath(Share), sharingPath()}));
    const QJsonObject target = QJsonDocument::fromJson(HostFiles::read(sharingPath()))
                                   .object()
                                   .value(QStringLiteral("a.b"))
                                   .toObject()
                                   .value(QStringLiteral("a.b.Share"))
                                   .toObject();
    QCOMPARE(target.value(QStringLiteral("icon")).toString(), iconPath(Share));
    QCOMPARE(target.value(QStringLiteral("caption")).toString(), shareTarget().caption);
}

void DesktopManagerTest::joinsEmptyMimeTypes()
{
    DesktopManager manager(&m_config);
    ApkLauncher announced = handler();
    announced.mimeTypes = QStringList{QString(), QString(), QString()};

    manager.onCreateLauncher(announced);

    QCOMPARE(HostFiles::desktopEntry(entryPath(Handler)).value(QStringLiteral("MimeType")),
             QStringLiteral(";;"));
}

void DesktopManagerTest::tellsOfNewLaunchersBeforeTheyAreWritten()
{
    DesktopManager manager(&m_config);
    bool existed = true;
    connect(&manager, &DesktopManager::newApplicationInstalled, this,
            [&existed] { existed = QFile::exists(entryPath(Launcher)); });

    manager.onCreateLauncher(launcher());

    QVERIFY(!existed);
}

void DesktopManagerTest::leavesAnUnchangedLauncherAlone()
{
    const QVector<ApkLauncher> announced{launcher(), handler(), shareTarget()};
    DesktopManager manager(&m_config);
    for (const ApkLauncher &each : announced)
        manager.onCreateLauncher(each);
    QMap<QString, quint64> before;
    for (const QString &path : files())
        before.insert(path, HostFiles::inode(path));
    takeLog(QtDebugMsg);
    QSignalSpy installed(&manager, &DesktopManager::newApplicationInstalled);

    for (const ApkLauncher &each : announced)
        manager.onCreateLauncher(each);

    QMap<QString, quint64> after;
    for (const QString &path : files())
        after.insert(path, HostFiles::inode(path));
    QCOMPARE(after, before);
    QCOMPARE(installed.count(), 0);
    for (const QString &text : takeLog(QtDebugMsg))
        QVERIFY2(!text.startsWith(QLatin1String("Updating:")), qPrintable(text));
}

void DesktopManagerTest::rewritesOnlyAChangedName()
{
    DesktopManager manager(&m_config);
    manager.onCreateLauncher(launcher());
    ApkLauncher renamed = launcher();
    renamed.label = QString::fromUtf8("\xC3\x84pp");

    manager.onCreateLauncher(renamed);

    QCOMPARE(HostFiles::read(entryPath(Launcher)), launcherText("\xC3\x84pp"));
}

void DesktopManagerTest::keepsForeignKeys()
{
    HostFiles::write(entryPath(Launcher), "[Desktop Entry]\n"
                                          "Comment=Kept\n"
                                          "Name[de]=Eine App\n"
                                          "X-Orca-Single-Instance=yes\n");
    DesktopManager manager(&m_config);
    QSignalSpy installed(&manager, &DesktopManager::newApplicationInstalled);

    manager.onCreateLauncher(launcher());

    QByteArray expected = launcherText("An App");
    expected.replace("[Desktop Entry]\n", "[Desktop Entry]\nComment=Kept\n");
    expected.replace("Name=An App\n", "Name=An App\nName[de]=Eine App\n");
    QCOMPARE(HostFiles::read(entryPath(Launcher)), expected);
    QCOMPARE(installed.count(), 0);
}

void DesktopManagerTest::showsALauncherThatWasHidden()
{
    HostFiles::write(entryPath(Launcher), "[Desktop Entry]\nMimeType=a/b\nNoDisplay=true\n");
    DesktopManager manager(&m_config);

    manager.onCreateLauncher(launcher());

    QCOMPARE(HostFiles::read(entryPath(Launcher)), launcherText("An App"));
}

void DesktopManagerTest::turnsAHandlerWithoutMimeTypesIntoOneWithThem()
{
    DesktopManager manager(&m_config);
    ApkLauncher announced = handler();
    announced.shareMimeTypes = std::exchange(announced.mimeTypes, QStringList());
    manager.onCreateLauncher(announced);
    QVERIFY(!HostFiles::desktopEntry(entryPath(Handler)).contains(QStringLiteral("MimeType")));

    manager.onCreateLauncher(handler());

    const QMap<QString, QString> entry = HostFiles::desktopEntry(entryPath(Handler));
    QCOMPARE(entry.value(QStringLiteral("MimeType")),
             QStringLiteral("text/plain;x-scheme-handler/tel"));
    QCOMPARE(entry.value(QStringLiteral("Exec")),
             QStringLiteral("bramd-launcher -d %U a.b.apk a.b/a.b.Open"));
}

void DesktopManagerTest::rewritesAChangedIcon()
{
    DesktopManager manager(&m_config);
    manager.onCreateLauncher(launcher());
    const quint64 before = HostFiles::inode(entryPath(Launcher));
    ApkLauncher changed = launcher();
    changed.icon = "other";

    manager.onCreateLauncher(changed);

    QCOMPARE(HostFiles::read(iconPath(Launcher)), QByteArray("other"));
    QCOMPARE(HostFiles::inode(entryPath(Launcher)), before);
}

void DesktopManagerTest::writesTheIconOfANewEntryAnew()
{
    HostFiles::write(iconPath(Launcher), launcher().icon);
    const quint64 before = HostFiles::inode(iconPath(Launcher));
    DesktopManager manager(&m_config);

    manager.onCreateLauncher(launcher());

    QVERIFY(HostFiles::inode(iconPath(Launcher)) != before);
    QCOMPARE(HostFiles::read(iconPath(Launcher)), launcher().icon);
}

void DesktopManagerTest::hidesABlacklistedLauncher()
{
    HostFiles::write(QStringLiteral("/etc/bramd/app-blacklist"), "a.b\n");
    DesktopManager manager(&m_config);

    manager.onCreateLauncher(launcher());

    QCOMPARE(HostFiles::desktopEntry(entryPath(Launcher)).value(QStringLiteral("NoDisplay")),
             QStringLiteral("true"));
    QVERIFY(QFile::exists(settingsPath(Launcher)));
}

void DesktopManagerTest::dropsABlacklistedHandler_data()
{
    QTest::addColumn<ApkLauncher>("announced");

    QTest::newRow("opens content") << handler();
    QTest::newRow("takes shared content") << shareTarget();
}

void DesktopManagerTest::dropsABlacklistedHandler()
{
    QFETCH(ApkLauncher, announced);
    HostFiles::write(QStringLiteral("/etc/bramd/app-blacklist"), "a.b\n");
    DesktopManager manager(&m_config);
    QSignalSpy installed(&manager, &DesktopManager::newApplicationInstalled);

    manager.onCreateLauncher(announced);

    QCOMPARE(files(), QStringList(sharingPath()));
    QCOMPARE(HostFiles::read(sharingPath()), QByteArray());
    QCOMPARE(installed.count(), 0);
}

void DesktopManagerTest::movesPartnerAppsToTheirSpace_data()
{
    QTest::addColumn<QString>("packageName");
    QTest::addColumn<QString>("marker");
    QTest::addColumn<bool>("partner");

    QTest::newRow("its own marker") << QStringLiteral("a.b") << QStringLiteral("a.b.apk") << true;
    QTest::newRow("version folded away")
        << QStringLiteral("a.b-12") << QStringLiteral("a.b.apk") << true;
    QTest::newRow("the marker's version is not folded")
        << QStringLiteral("a.b") << QStringLiteral("a.b-12.apk") << false;
    QTest::newRow("another's marker")
        << QStringLiteral("a.b") << QStringLiteral("a.c.apk") << false;
}

void DesktopManagerTest::movesPartnerAppsToTheirSpace()
{
    QFETCH(QString, packageName);
    QFETCH(QString, marker);
    QFETCH(bool, partner);
    HostFiles::write(QLatin1String("/usr/share/bramd/partnerspace/") + marker, QByteArray());
    DesktopManager manager(&m_config);
    const ApkLauncher announced = launcher(packageName, QStringLiteral("Main"));

    manager.onCreateLauncher(announced);

    const QString path = HostFiles::filesBelow(QStringLiteral("/usr/share/applications")).value(0);
    const QMap<QString, QString> entry = HostFiles::desktopEntry(path);
    QCOMPARE(entry.value(QStringLiteral("NoDisplay")),
             partner ? QStringLiteral("true") : QString());
    QCOMPARE(entry.value(QStringLiteral("Categories")),
             partner ? QStringLiteral("X-TidewaterPartnerSpace") : QString());

    const quint64 before = HostFiles::inode(path);
    manager.onCreateLauncher(announced);
    QCOMPARE(HostFiles::inode(path), before);
}

void DesktopManagerTest::usesTheDataRootOfTheConfiguration()
{
    qputenv("ANDROID_DATA_ROOT", "/data/%1");
    const DaemonConfig config;
    qunsetenv("ANDROID_DATA_ROOT");
    DesktopManager manager(&config);

    manager.onCreateLauncher(launcher());

    QCOMPARE(HostFiles::desktopEntry(entryPath(Launcher)).value(QStringLiteral("X-bramd-apkfile")),
             QStringLiteral("/data/%1/data/app//a.b.apk"));
}

void DesktopManagerTest::writesForEveryUserWhateverTheUmask()
{
    const mode_t before = ::umask(0077);
    DesktopManager manager(&m_config);
    manager.onCreateLauncher(launcher());
    manager.onCreateLauncher(shareTarget());
    ::umask(before);

    QCOMPARE(files().size(), 6);
    for (const QString &path : files())
        QCOMPARE(HostFiles::mode(path), 0644);
}

void DesktopManagerTest::doesNotRunTheRefresh()
{
    UpdateDatabaseStub stub;
    DesktopManager manager(&m_config);

    manager.onCreateLauncher(launcher());

    QCOMPARE(stub.takeRuns(), QByteArray());
}

void DesktopManagerTest::goesOnWhenTheIconCannotBeWritten()
{
    DesktopManager manager(&m_config);
    const HostFiles::Mount readOnly = HostFiles::Mount::readOnly(QStringLiteral("/var/lib/bramd"));

    manager.onCreateLauncher(launcher());

    QCOMPARE(takeLog(QtWarningMsg, Category),
             QStringList(line("Unable to write icon:", iconPath(Launcher))));
    QCOMPARE(HostFiles::read(entryPath(Launcher)), launcherText("An App"));
    QVERIFY(QFile::exists(settingsPath(Launcher)));
}

void DesktopManagerTest::goesOnWhenNothingCanBeWritten()
{
    DesktopManager manager(&m_config);
    HostFiles::removeAll(QStringLiteral("/usr/share/applications"));
    HostFiles::removeAll(QStringLiteral("/usr/share/corvo-settings/entries"));
    HostFiles::removeAll(QStringLiteral("/var/lib/bramd"));
    QSignalSpy installed(&manager, &DesktopManager::newApplicationInstalled);

    manager.onCreateLauncher(launcher());
    manager.onCreateLauncher(shareTarget());

    const QString entry = QStringLiteral("Could not open \"%1\" for writing");
    QCOMPARE(
        takeLog(QtWarningMsg, Category),
        QStringList({line("Unable to write icon:", iconPath(Launcher)),
                     QStringLiteral("Unable to open json file \"%1\" for writing")
                         .arg(settingsPath(Launcher)),
                     entry.arg(entryPath(Launcher)), line("Unable to write icon:", iconPath(Share)),
                     QStringLiteral("Unable to write sharing file"), entry.arg(entryPath(Share))}));
    QCOMPARE(installed.count(), 2);
}

void DesktopManagerTest::keepsOldFilesWhenTheDisksAreFull()
{
    const HostFiles::Mount disks[] = {
        HostFiles::Mount::memory(QStringLiteral("/usr/share/applications"), "size=64k"),
        HostFiles::Mount::memory(QStringLiteral("/usr/share/corvo-settings/entries"), "size=64k"),
        HostFiles::Mount::memory(QStringLiteral("/var/lib/bramd"), "size=64k"),
    };
    DesktopManager manager(&m_config);
    manager.onCreateLauncher(launcher());
    manager.onCreateLauncher(shareTarget());
    QMap<QString, QByteArray> before;
    for (const QString &path : files())
        before.insert(path, HostFiles::read(path));
    for (const char *directory :
         {"/usr/share/applications", "/usr/share/corvo-settings/entries", "/var/lib/bramd"})
        HostFiles::fillDisk(QString::fromLatin1(directory));

    ApkLauncher changed = launcher();
    changed.label = QStringLiteral("Changed");
    changed.icon = QByteArray(100000, 'i');
    changed.packageVersion = QStringLiteral("2.0");
    manager.onCreateLauncher(changed);
    ApkLauncher changedShare = shareTarget();
    changedShare.label = QStringLiteral("Changed");
    manager.onCreateLauncher(changedShare);

    QCOMPARE(takeLog(QtWarningMsg, Category),
             QStringList({line("Unable to write icon:", iconPath(Launcher)),
                          QStringLiteral("Unable to open json file \"%1\" for writing")
                              .arg(settingsPath(Launcher)),
                          line("Could not write desktop file", entryPath(Launcher)),
                          QStringLiteral("Unable to write sharing file"),
                          line("Could not write desktop file", entryPath(Share))}));
    for (auto file = before.constBegin(); file != before.constEnd(); ++file)
        QCOMPARE(HostFiles::read(file.key()), file.value());
    QCOMPARE(files().size(), before.size() + 3); // the fillers, and no temporary files
}

QTEST_GUILESS_MAIN(DesktopManagerTest)
#include "tst_desktopmanager.moc"
