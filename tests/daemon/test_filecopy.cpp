#include "daemon/filecopy.h"
#include "support/testcase.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

class TestFileCopy : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void content_is_copied_data();
    void content_is_copied();
    void a_link_to_a_file_is_followed();
    void a_sparse_file_is_copied_whole();
    void only_regular_files_are_copied_data();
    void only_regular_files_are_copied();
    void an_existing_destination_is_left_alone();
    void a_link_at_the_destination_is_not_followed();
    void a_file_larger_than_the_disk_is_refused_before_it_fills_it();
    void a_missing_destination_directory_fails();

private:
    QString path(const char *name) const { return m_directory->filePath(QLatin1String(name)); }
    void write(const QString &file, const QByteArray &content) const;
    static QByteArray read(const QString &file);

    QScopedPointer<QTemporaryDir> m_directory;
};

void TestFileCopy::init()
{
    TestCase::init();
    m_directory.reset(new QTemporaryDir);
}

void TestFileCopy::write(const QString &file, const QByteArray &content) const
{
    QFile opened(file);
    QVERIFY(opened.open(QIODevice::WriteOnly));
    QCOMPARE(opened.write(content), content.size());
}

QByteArray TestFileCopy::read(const QString &file)
{
    QFile opened(file);
    return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray("(cannot be read)");
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

    QVERIFY(copyRegularFile(path("source"), path("copy")));

    QCOMPARE(read(path("copy")), content);
}

void TestFileCopy::a_link_to_a_file_is_followed()
{
    write(path("source"), "content");
    QVERIFY(QFile::link(path("source"), path("link")));

    QVERIFY(copyRegularFile(path("link"), path("copy")));

    QVERIFY(!QFileInfo(path("copy")).isSymLink());
    QCOMPARE(read(path("copy")), QByteArray("content"));
}

void TestFileCopy::a_sparse_file_is_copied_whole()
{
    write(path("source"), "begin");
    QVERIFY(QFile::resize(path("source"), 1 << 20));

    QVERIFY(copyRegularFile(path("source"), path("copy")));

    QCOMPARE(read(path("copy")), read(path("source")));
}

void TestFileCopy::only_regular_files_are_copied_data()
{
    QTest::addColumn<QString>("source");

    QTest::newRow("FIFO, which would block") << QStringLiteral("fifo");
    QTest::newRow("link to a FIFO") << QStringLiteral("link-to-fifo");
    QTest::newRow("directory") << QStringLiteral(".");
    QTest::newRow("link to a device") << QStringLiteral("link-to-device");
    QTest::newRow("nothing") << QStringLiteral("missing");
    QTest::newRow("link to nothing") << QStringLiteral("link-to-nothing");
}

void TestFileCopy::only_regular_files_are_copied()
{
    QFETCH(QString, source);
    QCOMPARE(::mkfifo(QFile::encodeName(path("fifo")).constData(), 0600), 0);
    QVERIFY(QFile::link(path("fifo"), path("link-to-fifo")));
    QVERIFY(QFile::link(QStringLiteral("/dev/zero"), path("link-to-device")));
    QVERIFY(QFile::link(path("missing"), path("link-to-nothing")));

    QVERIFY(!copyRegularFile(m_directory->filePath(source), path("copy")));

    QVERIFY(!QFile::exists(path("copy")));
}

void TestFileCopy::an_existing_destination_is_left_alone()
{
    write(path("source"), "new");
    write(path("copy"), "old");

    QVERIFY(!copyRegularFile(path("source"), path("copy")));

    QCOMPARE(read(path("copy")), QByteArray("old"));
}

void TestFileCopy::a_link_at_the_destination_is_not_followed()
{
    write(path("source"), "new");
    QVERIFY(QFile::link(path("elsewhere"), path("copy")));

    QVERIFY(!copyRegularFile(path("source"), path("copy")));

    QVERIFY(!QFile::exists(path("elsewhere")));
}

void TestFileCopy::a_file_larger_than_the_disk_is_refused_before_it_fills_it()
{
    write(path("source"), "content");
    if (::truncate(QFile::encodeName(path("source")).constData(), 1LL << 42) != 0)
        QSKIP("This file system does not hold files of 4 TB");

    QVERIFY(!copyRegularFile(path("source"), path("copy")));
}

void TestFileCopy::a_missing_destination_directory_fails()
{
    write(path("source"), "content");

    QVERIFY(!copyRegularFile(path("source"), path("missing/copy")));
}

QTEST_GUILESS_MAIN(TestFileCopy)
#include "test_filecopy.moc"
