#include "launcher/publicfile.h"
#include "support/hostfiles.h"
#include "support/systemcalls.h"
#include "support/testcase.h"

#include <QtTest>

#include <cerrno>
#include <functional>
#include <optional>
#include <sys/stat.h>
#include <sys/syscall.h>

using PublicFile::WriteResult;

namespace {

/// Runs `work`, which writes "new".
bool failing(int call, const QVector<int> &errors, const std::function<void()> &work)
{
    const auto size = call == SYS_write ? std::make_optional(3U) : std::nullopt;
    return SystemCalls::fail(static_cast<unsigned>(call), errors, work, size);
}

} // namespace

class PublicFileTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void writesWhateverTheUmask_data();
    void writesWhateverTheUmask();
    void replacesTheOldFile();
    void writesThroughALink();
    void cannotOpenADirectory();
    void leavesAloneWhatIsNoFile();
    void cannotOpenInAMissingDirectory();
    void cannotOpenOnAReadOnlyDisk();
    void keepsTheOldFileWhenTheDiskIsFull_data();
    void keepsTheOldFileWhenTheDiskIsFull();
    void writesWithoutProc_data();
    void writesWithoutProc();
    void getsOverWhatPasses_data();
    void getsOverWhatPasses();
    void tellsWhatDoesNotPass_data();
    void tellsWhatDoesNotPass();
    void reads();
    void comparesContent();
    void writesOnlyWhatChanged();
    void replacesFilesWithNamesUpToTheLimit();
    void knowsNamesOfTemporaryFiles_data();
    void knowsNamesOfTemporaryFiles();

private:
    const QString m_directory = QStringLiteral("/run/files");
    const QString m_path = QStringLiteral("/run/files/a.txt");
};

void PublicFileTest::init()
{
    TestCase::init();
    HostFiles::makeEmptyDirectory(m_directory);
}

void PublicFileTest::writesWhateverTheUmask_data()
{
    QTest::addColumn<int>("mask");

    QTest::newRow("ordinary") << 0022;
    QTest::newRow("strict") << 0777;
    QTest::newRow("lax") << 0000;
}

void PublicFileTest::writesWhateverTheUmask()
{
    QFETCH(int, mask);

    const mode_t before = ::umask(static_cast<mode_t>(mask));
    const WriteResult result = PublicFile::write(m_path, QByteArray("a\0b\n", 4));
    ::umask(before);

    QCOMPARE(result, WriteResult::Written);
    QCOMPARE(HostFiles::read(m_path), QByteArray("a\0b\n", 4));
    QCOMPARE(HostFiles::mode(m_path), 0644);
    QCOMPARE(HostFiles::filesBelow(m_directory), QStringList(m_path));
}

void PublicFileTest::replacesTheOldFile()
{
    HostFiles::write(m_path, "old and longer");
    QVERIFY(QFile::setPermissions(m_path, QFile::ReadOwner | QFile::WriteOwner));
    const quint64 before = HostFiles::inode(m_path);

    QCOMPARE(PublicFile::write(m_path, "new"), WriteResult::Written);

    QCOMPARE(HostFiles::read(m_path), QByteArray("new"));
    QCOMPARE(HostFiles::mode(m_path), 0644);
    QVERIFY(HostFiles::inode(m_path) != before);
}

void PublicFileTest::writesThroughALink()
{
    const QString link = m_directory + QLatin1String("/link");
    HostFiles::write(m_path, "old");
    QVERIFY(QFile::link(QStringLiteral("a.txt"), link));

    QCOMPARE(PublicFile::write(link, "new"), WriteResult::Written);

    QCOMPARE(HostFiles::read(m_path), QByteArray("new"));
    QCOMPARE(QFile::symLinkTarget(link), m_path);
}

void PublicFileTest::cannotOpenADirectory()
{
    HostFiles::makeEmptyDirectory(m_path);

    QCOMPARE(PublicFile::write(m_path, "new"), WriteResult::CannotOpen);

    QVERIFY(QFileInfo(m_path).isDir());
    QVERIFY(QDir(m_directory).entryList(QDir::Files | QDir::Hidden).isEmpty());
}

void PublicFileTest::leavesAloneWhatIsNoFile()
{
    QVERIFY(::mkfifo(QFile::encodeName(m_path).constData(), 0644) == 0);

    QVERIFY(!PublicFile::read(m_path)); // nor waits for somebody to write into it
    QVERIFY(!PublicFile::hasContent(m_path, ""));
    QCOMPARE(PublicFile::write(m_path, "a"), WriteResult::CannotOpen);
}

void PublicFileTest::cannotOpenInAMissingDirectory()
{
    QCOMPARE(PublicFile::write(QStringLiteral("/run/nowhere/a.txt"), "x"), WriteResult::CannotOpen);
}

void PublicFileTest::cannotOpenOnAReadOnlyDisk()
{
    HostFiles::write(m_path, "old");
    const HostFiles::Mount readOnly = HostFiles::Mount::readOnly(m_directory);

    QCOMPARE(PublicFile::write(m_path, "new"), WriteResult::CannotOpen);

    QCOMPARE(HostFiles::read(m_path), QByteArray("old"));
}

void PublicFileTest::keepsTheOldFileWhenTheDiskIsFull_data()
{
    QTest::addColumn<int>("size");

    QTest::newRow("less than a buffer") << 3;
    QTest::newRow("more than a buffer") << 200000;
}

void PublicFileTest::keepsTheOldFileWhenTheDiskIsFull()
{
    QFETCH(int, size);
    const HostFiles::Mount disk = HostFiles::Mount::memory(m_directory, "size=64k");
    HostFiles::write(m_path, "old");
    HostFiles::fillDisk(m_directory);
    const QStringList files = HostFiles::filesBelow(m_directory);

    QCOMPARE(PublicFile::write(m_path, QByteArray(size, 'n')), WriteResult::CannotWrite);

    QCOMPARE(HostFiles::read(m_path), QByteArray("old"));
    QCOMPARE(HostFiles::filesBelow(m_directory), files);
}

void PublicFileTest::writesWithoutProc_data()
{
    QTest::addColumn<bool>("isNew");

    QTest::newRow("new") << true;
    QTest::newRow("old") << false;
}

void PublicFileTest::writesWithoutProc()
{
    QFETCH(bool, isNew);
    if (!isNew)
        HostFiles::write(m_path, "old");

    WriteResult result = WriteResult::CannotOpen;
    {
        const HostFiles::Mount nothing = HostFiles::Mount::memory(QStringLiteral("/proc"), "");
        result = PublicFile::write(m_path, "new");
    }

    QCOMPARE(result, WriteResult::Written);
    QCOMPARE(HostFiles::read(m_path), QByteArray("new"));
    QCOMPARE(HostFiles::mode(m_path), 0644);
    QCOMPARE(HostFiles::filesBelow(m_directory), QStringList(m_path));
}

void PublicFileTest::getsOverWhatPasses_data()
{
    QTest::addColumn<int>("call");
    QTest::addColumn<QVector<int>>("errors");

    QTest::newRow("writing is interrupted") << SYS_write << QVector<int>{EINTR, EINTR};
    QTest::newRow("synchronising is interrupted") << SYS_fdatasync << QVector<int>{EINTR, EINTR};
    QTest::newRow("there is nothing to synchronise") << SYS_fdatasync << QVector<int>{EINVAL};
    QTest::newRow("somebody was faster") << SYS_linkat << QVector<int>{EEXIST};
    QTest::newRow("names are taken") << SYS_linkat << QVector<int>{EEXIST, EEXIST, EEXIST};
    QTest::newRow("every file has a name") << SYS_openat << QVector<int>{EOPNOTSUPP};
    QTest::newRow("every file has a name, some are taken")
        << SYS_openat << QVector<int>{EOPNOTSUPP, EEXIST, EEXIST};
}

void PublicFileTest::getsOverWhatPasses()
{
    QFETCH(int, call);
    QFETCH(QVector<int>, errors);

    WriteResult result = WriteResult::CannotOpen;
    QVERIFY(failing(call, errors, [&] { result = PublicFile::write(m_path, "new"); }));

    QCOMPARE(result, WriteResult::Written);
    QCOMPARE(HostFiles::read(m_path), QByteArray("new"));
    QCOMPARE(HostFiles::mode(m_path), 0644);
    QCOMPARE(HostFiles::filesBelow(m_directory), QStringList(m_path));
}

void PublicFileTest::tellsWhatDoesNotPass_data()
{
    QTest::addColumn<int>("call");
    QTest::addColumn<QVector<int>>("errors");
    QTest::addColumn<bool>("isOpen");

    const QVector<int> allTaken(100, EEXIST);
    QTest::newRow("nothing is written") << SYS_write << QVector<int>{0} << true;
    QTest::newRow("synchronising fails") << SYS_fdatasync << QVector<int>{EIO} << true;
    QTest::newRow("all names are taken") << SYS_linkat << (QVector<int>{EEXIST} + allTaken) << true;
    QTest::newRow("linking fails") << SYS_linkat << QVector<int>{EIO, EIO} << true;
    QTest::newRow("every file has a name, all are taken")
        << SYS_openat << (QVector<int>{EOPNOTSUPP} + allTaken) << false;
}

void PublicFileTest::tellsWhatDoesNotPass()
{
    QFETCH(int, call);
    QFETCH(QVector<int>, errors);
    QFETCH(bool, isOpen);

    WriteResult result = WriteResult::Written;
    QVERIFY(failing(call, errors, [&] { result = PublicFile::write(m_path, "new"); }));

    QCOMPARE(result, isOpen ? WriteResult::CannotWrite : WriteResult::CannotOpen);
    QCOMPARE(HostFiles::filesBelow(m_directory), QStringList());
}

void PublicFileTest::reads()
{
    HostFiles::write(m_path, QByteArray("a\0b\n", 4));
    QCOMPARE(PublicFile::read(m_path), std::optional<QByteArray>(QByteArray("a\0b\n", 4)));
    HostFiles::write(m_path, "");
    QCOMPARE(PublicFile::read(m_path), std::optional<QByteArray>(QByteArray()));
    QVERIFY(!PublicFile::read(QStringLiteral("/run/nowhere")));
    QVERIFY(!PublicFile::read(m_directory));
}

void PublicFileTest::comparesContent()
{
    HostFiles::write(m_path, "abc");

    QVERIFY(PublicFile::hasContent(m_path, "abc"));
    QVERIFY(!PublicFile::hasContent(m_path, "abd"));
    QVERIFY(!PublicFile::hasContent(m_path, "abcd"));
    QVERIFY(!PublicFile::hasContent(m_path, "ab"));
    QVERIFY(!PublicFile::hasContent(QStringLiteral("/run/nowhere"), ""));
    QVERIFY(!PublicFile::hasContent(m_directory, ""));
}

void PublicFileTest::writesOnlyWhatChanged()
{
    QVERIFY(PublicFile::writeIfChanged(m_path, "abc"));
    const quint64 before = HostFiles::inode(m_path);

    QVERIFY(PublicFile::writeIfChanged(m_path, "abc"));
    QCOMPARE(HostFiles::inode(m_path), before);

    QVERIFY(PublicFile::writeIfChanged(m_path, "abd"));
    QCOMPARE(HostFiles::read(m_path), QByteArray("abd"));
    QVERIFY(!PublicFile::writeIfChanged(QStringLiteral("/run/nowhere/a.txt"), "abc"));
}

void PublicFileTest::replacesFilesWithNamesUpToTheLimit()
{
    const int limit = PublicFile::maxNameBytes();
    const QString longest = m_directory + QLatin1Char('/') + QString(limit, QLatin1Char('n'));
    const QString tooLong = longest + QLatin1Char('n');
    HostFiles::write(longest, "old");
    HostFiles::write(tooLong, "old");

    QCOMPARE(PublicFile::write(longest, "new"), WriteResult::Written);
    QCOMPARE(PublicFile::write(tooLong, "new"), WriteResult::CannotWrite);

    QCOMPARE(HostFiles::read(longest), QByteArray("new"));
    QCOMPARE(HostFiles::read(tooLong), QByteArray("old"));
}

void PublicFileTest::knowsNamesOfTemporaryFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("finalName");

    const auto row = [](const char *rule, const char *name, const char *finalName) {
        QTest::newRow(rule) << QString::fromLatin1(name) << QString::fromLatin1(finalName);
    };
    row("temporary", "a.txt.aBcXyZ", "a.txt");
    row("other file", "a.txt", "a.txt");
    row("too short", "a.txt.aBcXy", "a.txt.aBcXy");
    row("too long", "a.txt.aBcXyZz", "a.txt.aBcXyZz");
    row("with a digit", "a.txt.aBcXy2", "a.txt.aBcXy2");
    row("shorter than a suffix", "a.b", "a.b");
    row("empty", "", "");
}

void PublicFileTest::knowsNamesOfTemporaryFiles()
{
    QFETCH(QString, name);
    QFETCH(QString, finalName);

    QCOMPARE(PublicFile::withoutTemporarySuffix(name), finalName);
}

QTEST_GUILESS_MAIN(PublicFileTest)
#include "tst_publicfile.moc"
