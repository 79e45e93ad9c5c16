#include "daemon/filecopy.h"
#include "daemon/filedescriptor.h"
#include "support/hostfiles.h"
#include "support/systemcalls.h"
#include "support/testcase.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using HostFiles::read;
using HostFiles::write;

using Change = std::function<void(const QString &source)>;
Q_DECLARE_METATYPE(Change)

namespace {

FileDescriptor openFile(const QString &path, int flags)
{
    return FileDescriptor(::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC, 0600));
}

bool copy(const QString &source, const QString &destination)
{
    return copyContent(openFile(source, O_RDONLY),
                       openFile(destination, O_WRONLY | O_CREAT | O_EXCL));
}

} // namespace

class TestFileCopy : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void content_is_copied_data();
    void content_is_copied();
    void a_sparse_file_is_copied_whole();
    void a_file_larger_than_any_apk_is_refused_before_it_fills_the_disk_data();
    void a_file_larger_than_any_apk_is_refused_before_it_fills_the_disk();
    void a_file_larger_than_the_disk_is_refused_before_it_fills_it();
    void a_change_meanwhile_data();
    void a_change_meanwhile();
    void files_that_are_not_open_are_a_failure();

private:
    QString path(const char *name) const { return m_directory->filePath(QLatin1String(name)); }

    QScopedPointer<QTemporaryDir> m_directory;
};

void TestFileCopy::init()
{
    TestCase::init();
    m_directory.reset(new QTemporaryDir);
}

void TestFileCopy::content_is_copied_data()
{
    QTest::addColumn<QByteArray>("content");

    QTest::newRow("empty") << QByteArray();
    QTest::newRow("one byte") << QByteArray(1, '\0');
    QTest::newRow("several megabytes") << QByteArray(5000001, 'x');
}

void TestFileCopy::content_is_copied()
{
    QFETCH(QByteArray, content);
    write(path("source"), content);

    QVERIFY(copy(path("source"), path("copy")));

    QCOMPARE(read(path("copy")), content);
}

void TestFileCopy::a_sparse_file_is_copied_whole()
{
    write(path("source"), "begin");
    QVERIFY(QFile::resize(path("source"), 1 << 20));

    QVERIFY(copy(path("source"), path("copy")));

    QCOMPARE(read(path("copy")), read(path("source")));
}

void TestFileCopy::a_file_larger_than_any_apk_is_refused_before_it_fills_the_disk_data()
{
    QTest::addColumn<qint64>("size");

    QTest::newRow("a byte more than 32 bits tell") << (Q_INT64_C(1) << 32);
    QTest::newRow("a terabyte, of which nothing is stored") << (Q_INT64_C(1) << 40);
}

void TestFileCopy::a_file_larger_than_any_apk_is_refused_before_it_fills_the_disk()
{
    QFETCH(qint64, size);
    write(path("source"), "begin");
    QVERIFY(QFile::resize(path("source"), size));

    QVERIFY(!copy(path("source"), path("copy")));

    QCOMPARE(errno, EFBIG);
    QCOMPARE(read(path("copy")), QByteArray());
}

void TestFileCopy::a_file_larger_than_the_disk_is_refused_before_it_fills_it()
{
    QVERIFY(QDir().mkpath(path("disk")));
    const HostFiles::Mount disk = HostFiles::Mount::memory(path("disk"), "size=64k");
    write(path("small"), QByteArray(10000, 'x'));
    write(path("large"), QByteArray(64 * 1024 + 1, 'x'));

    QVERIFY(copy(path("small"), path("disk/small")));
    QVERIFY(!copy(path("large"), path("disk/large")));

    QCOMPARE(read(path("disk/large")), QByteArray());
}

void TestFileCopy::a_change_meanwhile_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<bool>("copies");

    QTest::newRow("a file that grows is copied as it was") << Change([](const QString &source) {
        QFile file(source);
        QVERIFY(file.open(QIODevice::Append));
        QCOMPARE(file.write("and more"), qint64(8));
    }) << true;
    QTest::newRow("a file that is replaced is copied to its end")
        << Change([](const QString &source) {
               QVERIFY(QFile::remove(source));
               write(source, "another content");
           })
        << true;
    QTest::newRow("a file that is cut is a failure")
        << Change([](const QString &source) { QVERIFY(QFile::resize(source, 3)); }) << false;
}

void TestFileCopy::a_change_meanwhile()
{
    QFETCH(Change, change);
    QFETCH(bool, copies);
    write(path("source"), "content");
    bool copied = !copies;

    QVERIFY(SystemCalls::hold(
        SYS_copy_file_range, [&] { copied = copy(path("source"), path("copy")); },
        [&] { change(path("source")); }));

    QCOMPARE(copied, copies);
    if (copies)
        QCOMPARE(read(path("copy")), QByteArray("content"));
}

void TestFileCopy::files_that_are_not_open_are_a_failure()
{
    write(path("source"), "content");

    QVERIFY(!copy(path("missing"), path("copy")));
    QVERIFY(!copy(path("source"), path("missing/copy")));
}

QTEST_GUILESS_MAIN(TestFileCopy)
#include "test_filecopy.moc"
