#include "launcher/installedentries.h"
#include "support/hostfiles.h"
#include "support/testcase.h"

#include <QtTest>

#include <sys/stat.h>

namespace {

QString entry(const QString &name)
{
    return QLatin1String("/usr/share/applications/") + name;
}

void writeEntry(const QString &name, const QByteArray &package)
{
    HostFiles::write(entry(name), "[Desktop Entry]\nX-bramd-packageName=" + package + '\n');
}

} // namespace

class InstalledEntriesTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void isEmptyWithoutEntries();
    void ordersPathsByPackage();
    void seesOnlyItsOwnFiles();
    void filesEntriesWithoutAPackageUnderTheEmptyName();
    void tellsThePackageOfAPath();
};

void InstalledEntriesTest::init()
{
    TestCase::init();
    HostFiles::makeEmptyDirectory(QStringLiteral("/usr/share/applications"));
}

void InstalledEntriesTest::isEmptyWithoutEntries()
{
    QCOMPARE(InstalledEntries().all(), QStringList());

    HostFiles::removeAll(QStringLiteral("/usr/share/applications"));
    QCOMPARE(InstalledEntries().all(), QStringList());
}

void InstalledEntriesTest::ordersPathsByPackage()
{
    writeEntry(QStringLiteral("bramd_launcher_1.desktop"), "c");
    writeEntry(QStringLiteral("bramd_launcher_2.desktop"), "B");
    writeEntry(QStringLiteral("bramd_handler_3.desktop"), "c");
    writeEntry(QStringLiteral("bramd_handler_4.desktop"), "a");
    writeEntry(QStringLiteral("linked"), "d");
    QVERIFY(QFile::link(entry(QStringLiteral("linked")),
                        entry(QStringLiteral("bramd_handler_.desktop"))));

    const InstalledEntries entries;

    QCOMPARE(entries.all(), QStringList({entry(QStringLiteral("bramd_launcher_2.desktop")),
                                         entry(QStringLiteral("bramd_handler_4.desktop")),
                                         entry(QStringLiteral("bramd_handler_3.desktop")),
                                         entry(QStringLiteral("bramd_launcher_1.desktop")),
                                         entry(QStringLiteral("bramd_handler_.desktop"))}));
    QCOMPARE(entries.ofPackage(QStringLiteral("c")),
             QStringList({entry(QStringLiteral("bramd_handler_3.desktop")),
                          entry(QStringLiteral("bramd_launcher_1.desktop"))}));
    QCOMPARE(entries.ofPackage(QStringLiteral("e")), QStringList());
}

void InstalledEntriesTest::seesOnlyItsOwnFiles()
{
    for (const char *name :
         {"browser.desktop", "bramd_other_1.desktop", "bramd_launcher_1.txt",
          "Bramd_Launcher_1.desktop", "bramd_launcher_1.desktop.bak", "x_bramd_launcher_1.desktop"})
        writeEntry(QString::fromLatin1(name), "a");
    HostFiles::makeEmptyDirectory(entry(QStringLiteral("bramd_launcher_dir.desktop")));
    QVERIFY(QFile::link(entry(QString()), entry(QStringLiteral("bramd_launcher_link.desktop"))));
    QVERIFY(
        QFile::link(QStringLiteral("nowhere"), entry(QStringLiteral("bramd_handler_x.desktop"))));
    QCOMPARE(::mkfifo("/usr/share/applications/bramd_handler_fifo.desktop", 0644), 0);

    QCOMPARE(InstalledEntries().all(), QStringList());
}

void InstalledEntriesTest::filesEntriesWithoutAPackageUnderTheEmptyName()
{
    const QString path = entry(QStringLiteral("bramd_launcher_1.desktop"));
    HostFiles::write(path, "");

    const InstalledEntries entries;

    QCOMPARE(entries.ofPackage(QString()), QStringList(path));
    QCOMPARE(takeLog(QtWarningMsg, QStringLiteral("com.corvo.bramd.launcher")),
             QStringList(QStringLiteral("File \"/usr/share/applications/bramd_launcher_1.desktop\" "
                                        "does not have key: \"X-bramd-packageName\"")));
}

void InstalledEntriesTest::tellsThePackageOfAPath()
{
    writeEntry(QStringLiteral("bramd_launcher_1.desktop"), "a.b");
    writeEntry(QStringLiteral("bramd_launcher_2.desktop"), "");

    const InstalledEntries entries;

    QCOMPARE(entries.packageOf(entry(QStringLiteral("bramd_launcher_1.desktop"))),
             std::optional<QString>(QStringLiteral("a.b")));
    QCOMPARE(entries.packageOf(entry(QStringLiteral("bramd_launcher_2.desktop"))),
             std::optional<QString>(QString()));
    QVERIFY(!entries.packageOf(entry(QStringLiteral("Bramd_launcher_1.desktop"))));
    QVERIFY(!entries.packageOf(QStringLiteral("bramd_launcher_1.desktop")));
}

QTEST_GUILESS_MAIN(InstalledEntriesTest)
#include "tst_installedentries.moc"
