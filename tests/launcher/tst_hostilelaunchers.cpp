#include "config/daemonconfig.h"
#include "config/runtimetext.h"
#include "launcher/desktopmanager.h"
#include "launcher/launcherhost.h"
#include "launcher/updatedatabasestub.h"
#include "support/testcase.h"

#include <QSettings>
#include <QtTest>

using namespace LauncherHost;

namespace {

const QString Category = QStringLiteral("com.corvo.bramd.launcher");

ApkLauncher labelled(const QString &label)
{
    ApkLauncher announced = launcher();
    announced.label = label;
    return announced;
}

ApkLauncher opening(const QStringList &mimeTypes)
{
    ApkLauncher announced = launcher();
    announced.mimeTypes = mimeTypes;
    return announced;
}

ApkLauncher named(const QString &packageName, const QString &className)
{
    return launcher(packageName, className);
}

/// What the rules of INI files make of a value without quotation marks: a semicolon begins a
/// comment, commas part the items of a list, and blanks around these and a byte order mark do not
/// count. Those of desktop entries know nothing of all this.
QStringList itemsInIni(const QString &written)
{
    QStringList items = written.section(QLatin1Char(';'), 0, 0).split(QLatin1Char(','));
    for (QString &item : items) {
        item.replace(QStringLiteral("\\\\"), QStringLiteral("\\"));
        item = item.trimmed();
        if (item.startsWith(QChar(QChar::ByteOrderMark)))
            item.remove(0, 1);
    }
    return items;
}

constexpr int Mebibyte = 1024 * 1024;

/// In which every byte tells where it belongs, more or less.
QByteArray pattern(int size)
{
    QByteArray block;
    for (int i = 0; i < 251; ++i)
        block.append(static_cast<char>(i));
    return block.repeated(size / block.size() + 1).left(size);
}

/// The most memory that this process has had since the object was made.
class PeakMemory
{
public:
    PeakMemory()
    {
        HostFiles::write(QStringLiteral("/proc/self/clear_refs"), "5"); // forgets the highest
        m_before = bytes();
    }

    /// In bytes.
    qint64 growth() const { return bytes() - m_before; }

private:
    static qint64 bytes()
    {
        static const QRegularExpression line(QStringLiteral("VmHWM:\\s+(\\d+) kB"));
        const QByteArray status = HostFiles::read(QStringLiteral("/proc/self/status"));
        return line.match(QString::fromLatin1(status)).captured(1).toLongLong() * 1024;
    }

    qint64 m_before = 0;
};

} // namespace

/// Announcements that no well-behaved runtime would send. Whatever comes, only files of the
/// daemon's own are written, and an entry holds the intended keys and no others.
class HostileLaunchersTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void writesNothingButTheIntendedKeys_data();
    void writesNothingButTheIntendedKeys();
    void writesAHugeIconWithoutACopy();
    void dropsNamesThatCannotBeFiles_data();
    void dropsNamesThatCannotBeFiles();
    void survivesHostilePackageRemovals();
    void leavesTheFilesOfOtherAppsAlone_data();
    void leavesTheFilesOfOtherAppsAlone();
    void keepsTheLaterOfOneAppsTwoNamesForAFile();
    void writesNoMoreThanALimitedNumber();
    void keepsCountingHiddenHandlersUntilTheyAreGone();

private:
    const DaemonConfig m_config;
    const UpdateDatabaseStub m_database;
};

void HostileLaunchersTest::init()
{
    TestCase::init();
    LauncherHost::reset();
}

void HostileLaunchersTest::writesNothingButTheIntendedKeys_data()
{
    QTest::addColumn<ApkLauncher>("announced");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");

    const QString name = QStringLiteral("Name");
    const auto label = [&name](const char *row, const QString &given, const QString &written) {
        QTest::newRow(row) << labelled(given) << name << written;
    };
    label("line feed", QStringLiteral("A\nExec=/bin/sh"), QStringLiteral("A Exec=/bin/sh"));
    label("carriage return", QStringLiteral("A\rExec=x"), QStringLiteral("A Exec=x"));
    label("both", QStringLiteral("A\r\nX=y"), QStringLiteral("A  X=y"));
    label("a group of its own", QStringLiteral("A\n[Desktop Action x]\nExec=x"),
          QStringLiteral("A [Desktop Action x] Exec=x"));
    label("only line feeds", QStringLiteral("\n\n"), QStringLiteral("  "));
    label("NUL", QString(QChar(0)) + QStringLiteral("A"), QStringLiteral(" A"));
    label("vertical tab and form feed", QStringLiteral("\vA\fB"), QStringLiteral(" A B"));
    label("tab and escape", QStringLiteral("A\tB\x1B[2J"), QStringLiteral("A B [2J"));
    label("delete", QStringLiteral("A\x7F"), QStringLiteral("A "));
    label("next line", QStringLiteral("A\u0085X=y"), QStringLiteral("A X=y"));
    label("Unicode line separator", QStringLiteral("A\u2028X=y"), QStringLiteral("A X=y"));
    label("Unicode paragraph separator", QStringLiteral("A\u2029X=y"), QStringLiteral("A X=y"));
    label("half of a surrogate pair", QString(QChar(0xD83D)), QString(QChar(0xFFFD)));
    label("byte order mark", QStringLiteral("\uFEFFA"), QStringLiteral("\uFEFFA"));
    label("equals signs", QStringLiteral("=A=B="), QStringLiteral("=A=B="));
    label("a group header", QStringLiteral("[Desktop Entry]"), QStringLiteral("[Desktop Entry]"));
    label("a comment sign", QStringLiteral("#A"), QStringLiteral("#A"));
    label("place markers", QStringLiteral("%1%2%3%U"), QStringLiteral("%1%2%3%U"));
    label("backslashes", QStringLiteral("A\\nB\\"), QStringLiteral("A\\\\nB\\\\"));
    label("blanks at both ends", QStringLiteral("  A  "), QStringLiteral("  A  "));
    label("quote that does not end", QStringLiteral("\"A"), QStringLiteral("\"A"));
    label("semicolon", QStringLiteral("A;Exec=x"), QStringLiteral("A;Exec=x"));
    label("nothing", QString(), QString());
    label("very long", QString(1000000, QLatin1Char('A')), QString(1000000, QLatin1Char('A')));

    const QString mimeType = QStringLiteral("MimeType");
    QTest::newRow("line feed in a MIME type")
        << opening({QStringLiteral("a/b\nExec=x"), QStringLiteral("c/d")}) << mimeType
        << QStringLiteral("a/b Exec=x;c/d");
    QTest::newRow("NUL in a MIME type")
        << opening({QStringLiteral("a/b") + QChar(0)}) << mimeType << QStringLiteral("a/b ");
    QTest::newRow("line feed in a scheme")
        << opening({QStringLiteral("x-scheme-handler/tel\rX=y")}) << mimeType
        << QStringLiteral("x-scheme-handler/tel X=y");
    QTest::newRow("a hundred thousand empty MIME types")
        << opening(QVector<QString>(100000).toList()) << mimeType
        << QString(99999, QLatin1Char(';'));

    const QString package = QStringLiteral("X-bramd-packageName");
    QTest::newRow("package of dots")
        << named(QStringLiteral(".."), QStringLiteral("..")) << package << QStringLiteral("..");
    QTest::newRow("package with the suffix of entries")
        << named(QStringLiteral("a.desktop"), QStringLiteral("b")) << package
        << QStringLiteral("a.desktop");
    QTest::newRow("longest name that fits")
        << named(QString(100, QLatin1Char('p')), QString(124, QLatin1Char('c'))) << package
        << QString(100, QLatin1Char('p'));
}

void HostileLaunchersTest::writesNothingButTheIntendedKeys()
{
    QFETCH(ApkLauncher, announced);
    QFETCH(QString, key);
    QFETCH(QString, value);
    DesktopManager manager(&m_config);

    manager.onCreateLauncher(announced);

    const QStringList entries = HostFiles::filesBelow(QStringLiteral("/usr/share/applications"));
    QCOMPARE(entries.size(), 1);
    const QMap<QString, QString> entry = HostFiles::desktopEntry(entries.first());
    QStringList keys{QStringLiteral("Exec"),
                     QStringLiteral("Icon"),
                     QStringLiteral("Name"),
                     QStringLiteral("Type"),
                     QStringLiteral("Version"),
                     QStringLiteral("X-Orca-Application-Type"),
                     QStringLiteral("X-bramd-apkfile"),
                     QStringLiteral("X-bramd-packageName")};
    if (announced.isHandler()) {
        keys.insert(2, QStringLiteral("MimeType"));
        keys.insert(4, QStringLiteral("NoDisplay"));
    }
    QCOMPARE(entry.keys(), keys);

    QCOMPARE(entry.value(key), value);

    // Qt's own reader of INI files finds nothing more either. A quotation mark that does not end
    // hides from it what follows.
    QSettings settings(entries.first(), QSettings::IniFormat);
    settings.setIniCodec("UTF-8");
    QCOMPARE(settings.childGroups(), QStringList(QStringLiteral("Desktop Entry")));
    settings.beginGroup(QStringLiteral("Desktop Entry"));
    const bool isQuoted = value.contains(QLatin1Char('"'));
    const QStringList readable = isQuoted ? keys.mid(0, keys.indexOf(key)) : keys;
    for (const QString &readKey : readable)
        QCOMPARE(settings.value(readKey).toStringList(), itemsInIni(entry.value(readKey)));
    QCOMPARE(settings.allKeys(), isQuoted ? readable + QStringList(key) : readable);

    // an entry, its icon, the sharing registry, and for launchers a settings entry
    QCOMPARE(files().size(), announced.isHandler() ? 3 : 4);
    QVERIFY(QFile::exists(entry.value(QStringLiteral("Icon"))));

    // announced again it is the same entry, which stays, is found, and goes
    const quint64 before = HostFiles::inode(entries.first());
    manager.onCreateLauncher(announced);
    manager.onLaunchersComplete();
    QCOMPARE(manager.installedEntries(), entries);
    QCOMPARE(HostFiles::inode(entries.first()), before);
    QCOMPARE(manager.applicationName(announced.packageName),
             RuntimeText::singleLine(announced.label));
    manager.onRemovePackage(announced.packageName);
    QCOMPARE(files(), QStringList(sharingPath()));
    takeLog(QtWarningMsg, Category);
}

// No message can carry that much, but that is not for the one who writes the files to rely on.
void HostileLaunchersTest::writesAHugeIconWithoutACopy()
{
    constexpr qint64 Slack = 4 * Mebibyte;
    DesktopManager manager(&m_config);
    ApkLauncher announced = launcher();
    announced.icon = pattern(20 * Mebibyte);
    const QString path = iconPath("bramd_launcher_a_b-a_b_Main");

    const PeakMemory writing;
    manager.onCreateLauncher(announced);
    QVERIFY2(writing.growth() < Slack, qPrintable(QString::number(writing.growth())));

    QVERIFY(HostFiles::read(path) == announced.icon);
    QCOMPARE(files().size(), 4);
    const quint64 before = HostFiles::inode(path);

    // announced again it is compared, for which it is read once
    const PeakMemory comparing;
    manager.onCreateLauncher(announced);
    QVERIFY2(comparing.growth() < announced.icon.size() + 2 * Slack,
             qPrintable(QString::number(comparing.growth())));
    QCOMPARE(HostFiles::inode(path), before);

    announced.icon.truncate(1);
    manager.onCreateLauncher(announced);
    QCOMPARE(HostFiles::read(path), announced.icon);
}

void HostileLaunchersTest::dropsNamesThatCannotBeFiles_data()
{
    QTest::addColumn<QString>("packageName");
    QTest::addColumn<QString>("className");
    QTest::addColumn<QString>("warning");

    const QString good = QStringLiteral("a.b");
    const QString unusable = QStringLiteral("Dropping launcher with unusable name:");
    const QString tooLong = QStringLiteral("Dropping launcher whose name is too long for a file:");
    const auto both = [&good](const char *row, const QString &bad, const QString &warning) {
        QTest::newRow(qPrintable(QStringLiteral("package: ") + QString::fromLatin1(row)))
            << bad << good << warning;
        QTest::newRow(qPrintable(QStringLiteral("class: ") + QString::fromLatin1(row)))
            << good << bad << warning;
    };
    both("null", QString(), unusable);
    both("empty", QStringLiteral(""), unusable);
    both("slash", QStringLiteral("a/b"), unusable);
    both("a way up", QStringLiteral("../../../etc/cron.d/x"), unusable);
    both("absolute path", QStringLiteral("/etc/passwd"), unusable);
    both("slash alone", QStringLiteral("/"), unusable);
    both("line feed", QStringLiteral("a\nExec=x"), unusable);
    both("carriage return last", QStringLiteral("a\r"), unusable);
    both("NUL", QStringLiteral("a") + QChar(0) + QStringLiteral("b"), unusable);
    both("escape", QStringLiteral("\x1B[2J"), unusable);
    both("delete", QStringLiteral("a\x7F"), unusable);
    both("next line", QStringLiteral("a\u0085"), unusable);
    both("Unicode line separator", QStringLiteral("a\u2028"), unusable);
    both("place markers", QStringLiteral("%3%1"), unusable);
    both("wildcard", QStringLiteral("*"), unusable);
    both("an argument of its own", QStringLiteral("a -d tel:112"), unusable);
    both("option", QStringLiteral("-d"), unusable);
    both("quote", QStringLiteral("a\"b"), unusable);
    both("backslash", QStringLiteral("a\\b"), unusable);
    both("right-to-left override", QStringLiteral("a\u202Eb"), unusable);
    both("half of a surrogate pair", QStringLiteral("a") + QChar(0xDC00), unusable);
    both("longer than a file name", QString(300, QLatin1Char('a')), tooLong);
    both("longer once escaped", QString(120, QLatin1Char('_')), tooLong);
    both("longer once encoded", QString(100, QChar(0x65E5)), tooLong);
    both("two million letters", QString(2000000, QLatin1Char('a')), tooLong);
    QTest::newRow("one letter too long together")
        << QString(100, QLatin1Char('p')) << QString(126, QLatin1Char('c')) << tooLong;
}

void HostileLaunchersTest::dropsNamesThatCannotBeFiles()
{
    QFETCH(QString, packageName);
    QFETCH(QString, className);
    QFETCH(QString, warning);
    DesktopManager manager(&m_config);
    QSignalSpy installed(&manager, &DesktopManager::newApplicationInstalled);
    ApkLauncher announced = named(packageName, className);

    manager.onCreateLauncher(announced);
    announced.shareMimeTypes = QStringList(QStringLiteral("text/plain"));
    manager.onCreateLauncher(announced);

    QCOMPARE(files(), QStringList(sharingPath()));
    QCOMPARE(HostFiles::read(sharingPath()), QByteArray());
    QCOMPARE(installed.count(), 0);
    const QStringList warnings = takeLog(QtWarningMsg, Category);
    QCOMPARE(warnings.size(), 2);
    for (const QString &text : warnings) {
        QVERIFY2(text.startsWith(warning), qPrintable(text.left(200)));
        QVERIFY(text.size() < 1000);
    }
}

void HostileLaunchersTest::survivesHostilePackageRemovals()
{
    DesktopManager manager(&m_config);
    manager.onCreateLauncher(launcher());
    const QStringList before = files();

    for (const QString &package :
         {QString(), QStringLiteral("../a.b"), QStringLiteral("*"), QStringLiteral("a.b\n"),
          QString(2000000, QLatin1Char('a')), QString(QChar(0))})
        manager.onRemovePackage(package);

    QCOMPARE(files(), before);
}

void HostileLaunchersTest::leavesTheFilesOfOtherAppsAlone_data()
{
    QTest::addColumn<ApkLauncher>("other");

    // "com.a_.b-M" and "com.a._b-M" are both escaped to "com_a___b-M".
    QTest::newRow("dot and underscore")
        << named(QStringLiteral("com.a._b"), QStringLiteral("M.X-Y"));
    QTest::newRow("dash") << named(QStringLiteral("com.a_.b-M.X"), QStringLiteral("Y"));
}

void HostileLaunchersTest::leavesTheFilesOfOtherAppsAlone()
{
    QFETCH(ApkLauncher, other);
    DesktopManager manager(&m_config);
    const ApkLauncher first = named(QStringLiteral("com.a_.b"), QStringLiteral("M.X-Y"));
    manager.onCreateLauncher(first);
    const QStringList before = files();
    const QByteArray entry = HostFiles::read(before.first());

    other.icon = "other";
    manager.onCreateLauncher(other);

    QCOMPARE(files(), before);
    QCOMPARE(HostFiles::read(before.first()), entry);
    QVERIFY(takeLogLine(
        QtWarningMsg,
        QStringLiteral("Dropping launcher whose files are those of another app: \"%1\" \"%2\"")
            .arg(other.packageName, other.className)));

    manager.onRemovePackage(other.packageName);
    manager.onLaunchersComplete();
    QCOMPARE(files(), before);

    // once the first is gone, the name is free
    manager.onRemovePackage(first.packageName);
    manager.onCreateLauncher(other);
    QCOMPARE(manager.installedEntries().size(), 1);
}

void HostileLaunchersTest::keepsTheLaterOfOneAppsTwoNamesForAFile()
{
    DesktopManager manager(&m_config);
    manager.onCreateLauncher(named(QStringLiteral("a.b"), QStringLiteral("a._M")));
    manager.onCreateLauncher(named(QStringLiteral("a.b"), QStringLiteral("a_.M")));

    const QStringList entries = manager.installedEntries();
    QCOMPARE(entries.size(), 1);
    QCOMPARE(HostFiles::desktopEntry(entries.first()).value(QStringLiteral("Exec")),
             QStringLiteral("bramd-launcher a.b.apk a.b/a_.M"));
}

void HostileLaunchersTest::writesNoMoreThanALimitedNumber()
{
    DesktopManager manager(&m_config);
    ApkLauncher announced = launcher();
    announced.icon.clear();
    for (int number = 0; number < AnnouncedActivities::MaxActivities + 3; ++number) {
        announced.className = QStringLiteral("a.b.C%1").arg(number);
        manager.onCreateLauncher(announced);
    }
    const int most = AnnouncedActivities::MaxActivities;
    QCOMPARE(manager.installedEntries().size(), most);
    QVERIFY(takeLogLine(QtWarningMsg,
                        QStringLiteral("Too many launchers, dropping this and what follows: "
                                       "\"a.b\" \"a.b.C%1\"")
                            .arg(most)));
    // and only once; what has its files can change
    announced.className = QStringLiteral("a.b.C1");
    announced.label = QStringLiteral("Changed");
    manager.onCreateLauncher(announced);
    QCOMPARE(HostFiles::desktopEntry(entryPath("bramd_launcher_a_b-a_b_C1"))
                 .value(QStringLiteral("Name")),
             QStringLiteral("Changed"));

    manager.onRemovePackage(announced.packageName);
    QCOMPARE(files(), QStringList(sharingPath()));
    manager.onCreateLauncher(launcher());
    QCOMPARE(manager.installedEntries().size(), 1);
}

void HostileLaunchersTest::keepsCountingHiddenHandlersUntilTheyAreGone()
{
    HostFiles::write(QStringLiteral("/etc/bramd/app-blacklist"), "a_.b\n");
    DesktopManager manager(&m_config);
    ApkLauncher hidden = named(QStringLiteral("a_.b"), QStringLiteral("C"));
    manager.onCreateLauncher(hidden);
    hidden.mimeTypes = QStringList(QStringLiteral("a/b"));
    manager.onCreateLauncher(hidden);
    const QStringList before = files();

    const ApkLauncher other = named(QStringLiteral("a._b"), QStringLiteral("C"));
    manager.onCreateLauncher(other);
    QCOMPARE(files(), before);
    QCOMPARE(takeLog(QtWarningMsg, Category).size(), 1);

    manager.onLaunchersComplete();
    QCOMPARE(files(), QStringList(sharingPath()));
    manager.onCreateLauncher(other);
    QCOMPARE(manager.installedEntries().size(), 1);
}

QTEST_GUILESS_MAIN(HostileLaunchersTest)
#include "tst_hostilelaunchers.moc"
