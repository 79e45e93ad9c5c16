#include "daemon/sourcefile.h"
#include "daemon/userrights.h"
#include "support/hostfiles.h"
#include "support/otherusers.h"
#include "support/testcase.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr uint user = 100000;
constexpr uint group = 100001;

} // namespace

class TestSourceFile : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void a_regular_file_is_opened_data();
    void a_regular_file_is_opened();
    void anything_else_is_refused_data();
    void anything_else_is_refused();
    void rights_decide_what_is_opened_data();
    void rights_decide_what_is_opened();
    void no_other_process_is_a_way_to_a_file_data();
    void no_other_process_is_a_way_to_a_file();
    void a_file_that_was_deleted_has_no_way_to_it();

private:
    QString path(const char *name) const { return m_directory->filePath(QLatin1String(name)); }
    void setOwner(const char *name, uint owner, uint ownerGroup, uint mode) const;
    static bool hasContent(const FileDescriptor &file, const QByteArray &content);

    QScopedPointer<QTemporaryDir> m_directory;
};

void TestSourceFile::init()
{
    TestCase::init();
    m_directory.reset(new QTemporaryDir);
    QCOMPARE(::chmod(QFile::encodeName(m_directory->path()).constData(), 0755), 0);
    HostFiles::write(path("file"), "content");
    QVERIFY(QFile::link(path("file"), path("link")));
}

void TestSourceFile::setOwner(const char *name, uint owner, uint ownerGroup, uint mode) const
{
    const QByteArray file = QFile::encodeName(path(name));
    QCOMPARE(::chown(file.constData(), owner, ownerGroup), 0);
    QCOMPARE(::chmod(file.constData(), mode), 0);
}

bool TestSourceFile::hasContent(const FileDescriptor &file, const QByteArray &content)
{
    QByteArray found(100, '\0');
    const ssize_t size = ::read(file.get(), found.data(), static_cast<size_t>(found.size()));
    return size >= 0 && found.left(static_cast<int>(size)) == content;
}

void TestSourceFile::a_regular_file_is_opened_data()
{
    QTest::addColumn<QString>("source");

    QTest::newRow("file") << QStringLiteral("file");
    QTest::newRow("link to it") << QStringLiteral("link");
    QTest::newRow("way round") << QStringLiteral("directory/.././file");
}

void TestSourceFile::a_regular_file_is_opened()
{
    QFETCH(QString, source);
    QVERIFY(QDir().mkpath(path("directory")));

    QVERIFY(
        hasContent(SourceFile::open(m_directory->path() + QLatin1Char('/') + source), "content"));
}

void TestSourceFile::anything_else_is_refused_data()
{
    QTest::addColumn<QString>("source");

    QTest::newRow("FIFO, which would block") << QStringLiteral("fifo");
    QTest::newRow("link to a FIFO") << QStringLiteral("link-to-fifo");
    QTest::newRow("directory") << QStringLiteral(".");
    QTest::newRow("device") << QStringLiteral("/dev/zero");
    QTest::newRow("link to a device") << QStringLiteral("link-to-device");
    QTest::newRow("nothing") << QStringLiteral("missing");
    QTest::newRow("link to nothing") << QStringLiteral("link-to-nothing");
    QTest::newRow("link to itself") << QStringLiteral("loop");
    QTest::newRow("the kernel's version") << QStringLiteral("/proc/version");
    QTest::newRow("the daemon's memory") << QStringLiteral("/proc/self/mem");
    QTest::newRow("the daemon's environment") << QStringLiteral("/proc/self/environ");
    QTest::newRow("a link to it") << QStringLiteral("link-to-environ");
    QTest::newRow("a namespace") << QStringLiteral("/proc/self/ns/mnt");
    QTest::newRow("a setting of the kernel's") << QStringLiteral("/proc/sys/kernel/core_pattern");
    QTest::newRow("a property of the hardware") << QStringLiteral("/sys/devices/system/cpu/online");
}

void TestSourceFile::anything_else_is_refused()
{
    QFETCH(QString, source);
    QCOMPARE(::mkfifo(QFile::encodeName(path("fifo")).constData(), 0600), 0);
    QVERIFY(QFile::link(path("fifo"), path("link-to-fifo")));
    QVERIFY(QFile::link(QStringLiteral("/dev/zero"), path("link-to-device")));
    QVERIFY(QFile::link(path("missing"), path("link-to-nothing")));
    QVERIFY(QFile::link(path("loop"), path("loop")));
    QVERIFY(QFile::link(QStringLiteral("/proc/self/environ"), path("link-to-environ")));

    QVERIFY(!SourceFile::open(QDir(m_directory->path()).filePath(source)).isOpen());
}

void TestSourceFile::rights_decide_what_is_opened_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<bool>("opens");

    QTest::newRow("everybody's") << QStringLiteral("everybodys") << true;
    QTest::newRow("own") << QStringLiteral("own") << true;
    QTest::newRow("of a group") << QStringLiteral("groups") << true;
    QTest::newRow("root's") << QStringLiteral("roots") << false;
    QTest::newRow("own link to root's") << QStringLiteral("link-to-roots") << false;
    QTest::newRow("in root's directory") << QStringLiteral("closed/file") << false;
    QTest::newRow("own link into root's directory") << QStringLiteral("link-into-closed") << false;
}

void TestSourceFile::rights_decide_what_is_opened()
{
    if (!OtherUsers::exist())
        QSKIP("Needs a second user: run the tests as root");
    QFETCH(QString, source);
    QFETCH(bool, opens);
    QVERIFY(QDir().mkpath(path("closed")));
    for (const char *name : {"everybodys", "own", "groups", "roots", "closed/file"})
        HostFiles::write(path(name), name);
    setOwner("everybodys", 0, 0, 0644);
    setOwner("own", user, 0, 0400);
    setOwner("groups", 0, group, 0640);
    setOwner("roots", 0, 0, 0600);
    setOwner("closed", 0, 0, 0700);
    setOwner("closed/file", 0, 0, 0644);
    const auto link = [this](const char *target, const char *name) {
        const QByteArray made = QFile::encodeName(path(name));
        return ::symlink(QFile::encodeName(path(target)).constData(), made.constData()) == 0 &&
               ::lchown(made.constData(), user, user) == 0;
    };
    QVERIFY(link("roots", "link-to-roots"));
    QVERIFY(link("closed/file", "link-into-closed"));
    const QString file = QDir(m_directory->path()).filePath(source);

    QVERIFY(SourceFile::open(file).isOpen()); // by root's rights everything is

    QCOMPARE(SourceFile::open(file, {user, {group}}).isOpen(), opens);
    QVERIFY(SourceFile::open(path("roots")).isOpen()); // these are still there
}

void TestSourceFile::no_other_process_is_a_way_to_a_file_data()
{
    QTest::addColumn<QString>("way");

    QTest::newRow("file that the daemon has open") << QStringLiteral("/proc/self/fd/%1");
    QTest::newRow("the same below /dev") << QStringLiteral("/dev/fd/%1");
    QTest::newRow("the same through a link") << QStringLiteral("link-to-fd");
    QTest::newRow("file that another process has open") << QStringLiteral("/proc/%2/fd/%1");
    QTest::newRow("directory of another process") << QStringLiteral("/proc/%2/cwd/file");
}

void TestSourceFile::no_other_process_is_a_way_to_a_file()
{
    if (!OtherUsers::exist())
        QSKIP("Needs a second user: run the tests as root");
    QFETCH(QString, way);
    QVERIFY(QDir().mkpath(path("closed")));
    HostFiles::write(path("closed/file"), "everybody may read it who gets there");
    setOwner("closed/file", 0, 0, 0644);
    setOwner("closed", 0, 0, 0700);
    const QByteArray closed = QFile::encodeName(path("closed"));
    const FileDescriptor open(::open((closed + "/file").constData(), O_RDONLY));
    QVERIFY(open.isOpen());
    const OtherUsers::WaitingProcess process([&] { return ::chdir(closed.constData()) == 0; });
    const QString number = QString::number(open.get());
    QVERIFY(QFile::link(QStringLiteral("/proc/self/fd/") + number, path("link-to-fd")));
    way.replace(QLatin1String("%1"), number);
    way.replace(QLatin1String("%2"), QString::number(process.id()));
    const QString file = QDir(m_directory->path()).filePath(way);

    QVERIFY(SourceFile::open(file).isOpen()); // root may go any way

    QVERIFY(!SourceFile::open(file, {user, {group}}).isOpen());
}

void TestSourceFile::a_file_that_was_deleted_has_no_way_to_it()
{
    if (!OtherUsers::exist())
        QSKIP("Needs a second user: run the tests as root");
    const FileDescriptor open(::open(QFile::encodeName(path("file")).constData(), O_RDONLY));
    QVERIFY(open.isOpen());
    QVERIFY(QFile::remove(path("file")));
    HostFiles::write(path("file (deleted)"), "what the kernel calls it now");
    const QString file = QStringLiteral("/proc/self/fd/%1").arg(open.get());

    QVERIFY(!SourceFile::open(file, {user, {group}}).isOpen());
}

QTEST_GUILESS_MAIN(TestSourceFile)
#include "test_sourcefile.moc"
