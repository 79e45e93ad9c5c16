#include "launcher/filelisting.h"
#include "support/hostfiles.h"
#include "support/testcase.h"

#include <QtTest>

namespace {

const QString Directory = QStringLiteral("/run/files/");

QStringList paths(const QStringList &names)
{
    QStringList result;
    for (const QString &name : names)
        result += Directory + name;
    return result;
}

bool anyName(const QString &)
{
    return true;
}

} // namespace

class FileListingTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void findsFilesThatAreWanted();
    void leavesOutDirectories();
    void takesADirectoryThatDoesNotExistForEmpty();
    void tellsWhatItCouldNotList();
};

void FileListingTest::init()
{
    TestCase::init();
    HostFiles::removeAll(Directory);
    HostFiles::makeEmptyDirectory(Directory);
}

void FileListingTest::findsFilesThatAreWanted()
{
    for (const char *name : {"b.txt", "a.txt", "ä.txt", "a.TXT", "a.txt.bak"})
        HostFiles::write(Directory + QString::fromUtf8(name), "x");

    const auto isText = [](const QString &name) { return name.endsWith(QLatin1String(".txt")); };
    QCOMPARE(listFiles(Directory, isText),
             paths({QStringLiteral("a.txt"), QStringLiteral("b.txt"), QStringLiteral("ä.txt")}));
}

void FileListingTest::leavesOutDirectories()
{
    HostFiles::makeEmptyDirectory(Directory + QStringLiteral("directory"));
    HostFiles::write(Directory + QStringLiteral("file"), "x");
    QVERIFY(QFile::link(QStringLiteral("file"), Directory + QStringLiteral("link")));
    QVERIFY(QFile::link(QStringLiteral("directory"), Directory + QStringLiteral("other link")));
    QVERIFY(QFile::link(QStringLiteral("nothing"), Directory + QStringLiteral("broken link")));

    QCOMPARE(listFiles(Directory, anyName),
             paths({QStringLiteral("file"), QStringLiteral("link")}));
}

void FileListingTest::takesADirectoryThatDoesNotExistForEmpty()
{
    QCOMPARE(listFiles(QStringLiteral("/run/nowhere/"), anyName), QStringList());
}

void FileListingTest::tellsWhatItCouldNotList()
{
    HostFiles::write(QStringLiteral("/run/file"), "x");

    QCOMPARE(listFiles(QStringLiteral("/run/file/"), anyName), QStringList());
    QCOMPARE(takeLog(QtWarningMsg, QStringLiteral("com.corvo.bramd.launcher")),
             QStringList(QStringLiteral("Could not list: \"/run/file/\"")));
}

QTEST_GUILESS_MAIN(FileListingTest)
#include "tst_filelisting.moc"
