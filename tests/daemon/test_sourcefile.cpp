#include "daemon/sourcefile.h"
#include "support/hostfiles.h"
#include "support/testcase.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

class TestSourceFile : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void a_regular_file_is_opened_data();
    void a_regular_file_is_opened();
    void anything_else_is_refused_data();
    void anything_else_is_refused();

private:
    QString path(const char *name) const { return m_directory->filePath(QLatin1String(name)); }
    static bool hasContent(const FileDescriptor &file, const QByteArray &content);

    QScopedPointer<QTemporaryDir> m_directory;
};

void TestSourceFile::init()
{
    TestCase::init();
    m_directory.reset(new QTemporaryDir);
    HostFiles::write(path("file"), "content");
    QVERIFY(QFile::link(path("file"), path("link")));
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

QTEST_GUILESS_MAIN(TestSourceFile)
#include "test_sourcefile.moc"
