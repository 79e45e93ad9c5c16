#include "daemon/packagestaging.h"
#include "support/otherusers.h"
#include "support/systemcalls.h"
#include "support/testcase.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QVector>
#include <QtTest>

#include <cerrno>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>

namespace {

QVector<unsigned> modeCalls()
{
    return {
#ifdef SYS_chmod
        SYS_chmod,
#endif
        SYS_fchmod, SYS_fchmodat};
}

QVector<unsigned> ownerCalls()
{
    return {
#ifdef SYS_chown
        SYS_chown,
#endif
        SYS_fchown, SYS_fchownat};
}

} // namespace

class TestPackageStaging : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void the_directory_is_created_with_its_parents();
    void an_existing_directory_becomes_roots_again();
    void a_directory_that_cannot_be_made_is_reported();
    void leftover_files_are_removed();
    void a_leftover_that_cannot_be_removed_is_reported();
    void a_file_is_staged_under_its_name_data();
    void a_file_is_staged_under_its_name();
    void a_staged_file_is_roots_and_readable_by_all();
    void what_is_in_the_way_is_replaced_data();
    void what_is_in_the_way_is_replaced();
    void a_source_that_is_no_file_is_a_failed_copy_data();
    void a_source_that_is_no_file_is_a_failed_copy();
    void nothing_is_left_of_a_copy_that_failed();
    void a_directory_in_the_way_is_a_failed_rename();
    void a_missing_staging_directory_is_a_failed_copy();
    void a_source_that_these_rights_do_not_open_is_a_failed_copy();
    void another_files_staged_copy_is_left_alone_data();
    void another_files_staged_copy_is_left_alone();
    void a_link_on_the_way_is_reported_and_not_followed_data();
    void a_link_on_the_way_is_reported_and_not_followed();
    void a_copy_that_does_not_become_roots_is_reported_data();
    void a_copy_that_does_not_become_roots_is_reported();

private:
    QString root() const { return m_directory->filePath(QStringLiteral("data")); }
    PackageStaging staging() const { return PackageStaging(root(), m_incoming); }
    QString stage(const QString &source) const { return staging().stage(source, std::nullopt); }
    void write(const QString &file, const QByteArray &content) const;
    static QByteArray read(const QString &file);
    static mode_t mode(const QString &path);
    QStringList incomingFiles() const;

    QScopedPointer<QTemporaryDir> m_directory;
    QString m_source;
    QString m_incoming;
};

void TestPackageStaging::init()
{
    TestCase::init();
    m_directory.reset(new QTemporaryDir);
    m_source = m_directory->filePath(QStringLiteral("source/"));
    m_incoming = m_directory->filePath(QStringLiteral("data/staging/incoming/"));
    QVERIFY(QDir().mkpath(m_source));
    staging().prepare();
}

void TestPackageStaging::write(const QString &file, const QByteArray &content) const
{
    QFile opened(file);
    QVERIFY(opened.open(QIODevice::WriteOnly));
    QCOMPARE(opened.write(content), content.size());
}

QByteArray TestPackageStaging::read(const QString &file)
{
    QFile opened(file);
    return opened.open(QIODevice::ReadOnly) ? opened.readAll() : QByteArray("(cannot be read)");
}

mode_t TestPackageStaging::mode(const QString &path)
{
    struct stat status
    {
    };
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

QStringList TestPackageStaging::incomingFiles() const
{
    return QDir(m_incoming)
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

void TestPackageStaging::the_directory_is_created_with_its_parents()
{
    QVERIFY(QFileInfo(m_incoming).isDir());
    QCOMPARE(mode(m_incoming), mode_t(0755));
    QCOMPARE(QFileInfo(m_incoming).ownerId(), 0U);
}

void TestPackageStaging::an_existing_directory_becomes_roots_again()
{
    QCOMPARE(::chmod(QFile::encodeName(m_incoming).constData(), 0777), 0);

    staging().prepare();

    QCOMPARE(mode(m_incoming), mode_t(0755));
}

void TestPackageStaging::a_directory_that_cannot_be_made_is_reported()
{
    write(m_source + QStringLiteral("file"), "");
    const QString impossible = m_source + QStringLiteral("file/incoming/");

    PackageStaging(m_source, impossible).prepare();

    const QString quoted = QStringLiteral("\"%1\"").arg(impossible);
    QCOMPARE(takeLog(QtWarningMsg, QStringLiteral("com.corvo.bramd.daemon")),
             QStringList({QStringLiteral("Cannot create incoming apk directory: ") + quoted,
                          QStringLiteral("Cannot set ownership of directory: ") + quoted,
                          QStringLiteral("Cannot set permission of directory: ") + quoted}));
}

void TestPackageStaging::leftover_files_are_removed()
{
    write(m_incoming + QStringLiteral("a.apk"), "a");
    write(m_incoming + QStringLiteral(".hidden.apk.tmp"), "b");
    QVERIFY(QDir(m_incoming).mkdir(QStringLiteral("directory")));

    staging().removeLeftovers();

    QCOMPARE(incomingFiles(), QStringList(QStringLiteral("directory")));
    QVERIFY(takeLogLine(QtDebugMsg,
                        QStringLiteral("Removing old incoming file: \"%1a.apk\"").arg(m_incoming)));
}

void TestPackageStaging::a_leftover_that_cannot_be_removed_is_reported()
{
    const QString file = m_incoming + QStringLiteral("a.apk");
    write(file, "a");
    const QByteArray mountPoint = QFile::encodeName(file); // which is not removed while it is one
    QCOMPARE(::mount(mountPoint.constData(), mountPoint.constData(), nullptr, MS_BIND, nullptr), 0);

    staging().removeLeftovers();

    QCOMPARE(::umount(mountPoint.constData()), 0);
    QVERIFY(takeLogLine(QtWarningMsg, QStringLiteral("Could not remove file:: \"%1\"").arg(file)));
}

void TestPackageStaging::a_file_is_staged_under_its_name_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("plain") << QStringLiteral("a.apk");
    QTest::newRow("with a line break") << QStringLiteral("a\nb.apk");
    QTest::newRow("beyond ASCII") << QStringLiteral("K\u00e4se.apk");
    QTest::newRow("three dots") << QStringLiteral("...");
    QTest::newRow("with blanks") << QStringLiteral(" a b ");
    QTest::newRow("as long as can be") << QString(247, QLatin1Char('x')) + QStringLiteral(".apk");
    QTest::newRow("like an option") << QStringLiteral("-rf");
    QTest::newRow("with .tmp inside") << QStringLiteral("a.tmp.apk");
}

void TestPackageStaging::a_file_is_staged_under_its_name()
{
    QFETCH(QString, name);
    write(m_source + name, "content");

    QCOMPARE(stage(m_source + name), m_incoming + name);

    QCOMPARE(incomingFiles(), QStringList(name));
    QCOMPARE(read(m_incoming + name), QByteArray("content"));
}

void TestPackageStaging::a_staged_file_is_roots_and_readable_by_all()
{
    write(m_source + QStringLiteral("a.apk"), "content");
    QVERIFY(QFile::setPermissions(m_source + QStringLiteral("a.apk"), QFile::ReadOwner));

    const QString staged = stage(m_source + QStringLiteral("a.apk"));

    QCOMPARE(mode(staged), mode_t(0644));
    QCOMPARE(QFileInfo(staged).ownerId(), 0U);
    QCOMPARE(QFileInfo(staged).groupId(), 0U);
}

void TestPackageStaging::what_is_in_the_way_is_replaced_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isLink");
    QTest::addColumn<QString>("warning");

    const QString staged = QStringLiteral("File already exists in incoming folder: \"%1a.apk\"");
    const QString temporary =
        QStringLiteral("Tmp file already exists in incoming folder: \"%1a.apk.tmp\"");
    QTest::newRow("staged file") << QStringLiteral("a.apk") << false << staged;
    QTest::newRow("temporary file") << QStringLiteral("a.apk.tmp") << false << temporary;
    QTest::newRow("link as staged file") << QStringLiteral("a.apk") << true << staged;
    QTest::newRow("link as temporary file") << QStringLiteral("a.apk.tmp") << true << temporary;
}

void TestPackageStaging::what_is_in_the_way_is_replaced()
{
    QFETCH(QString, name);
    QFETCH(bool, isLink);
    QFETCH(QString, warning);
    write(m_source + QStringLiteral("a.apk"), "new");
    if (isLink)
        QVERIFY(QFile::link(QStringLiteral("/nonexistent"), m_incoming + name));
    else
        write(m_incoming + name, "old");

    const QString staged = stage(m_source + QStringLiteral("a.apk"));

    QCOMPARE(takeLog(QtWarningMsg), QStringList(warning.arg(m_incoming)));
    QCOMPARE(incomingFiles(), QStringList(QStringLiteral("a.apk")));
    QVERIFY(!QFileInfo(staged).isSymLink());
    QCOMPARE(read(staged), QByteArray("new"));
}

void TestPackageStaging::a_source_that_is_no_file_is_a_failed_copy_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("temporary");

    QTest::newRow("FIFO") << QStringLiteral("fifo") << QStringLiteral("fifo.tmp");
    QTest::newRow("directory") << QStringLiteral("directory") << QStringLiteral("directory.tmp");
    QTest::newRow("missing") << QStringLiteral("missing") << QStringLiteral("missing.tmp");
    QTest::newRow("this directory") << QStringLiteral(".") << QStringLiteral("..tmp");
    QTest::newRow("parent directory") << QStringLiteral("..") << QStringLiteral("...tmp");
    QTest::newRow("no name") << QStringLiteral("") << QStringLiteral(".tmp");
    const QString longest = QString(255, QLatin1Char('x')); // which leaves no room for the suffix
    QTest::newRow("255 bytes") << longest << longest + QStringLiteral(".tmp");
    QTest::newRow("252 bytes") << longest.left(252) << longest.left(252) + QStringLiteral(".tmp");
    QTest::newRow("as a temporary copy")
        << QStringLiteral("a.apk.tmp") << QStringLiteral("a.apk.tmp.tmp");
}

void TestPackageStaging::a_source_that_is_no_file_is_a_failed_copy()
{
    QFETCH(QString, name);
    QFETCH(QString, temporary);
    QCOMPARE(::mkfifo(QFile::encodeName(m_source + QStringLiteral("fifo")).constData(), 0600), 0);
    QVERIFY(QDir(m_source).mkdir(QStringLiteral("directory")));
    write(m_source + QStringLiteral("a.apk.tmp"), "content");
    if (name.size() > 250)
        write(m_source + name, "content");

    QVERIFY(stage(m_source + name).isNull());

    QVERIFY(
        takeLogLine(QtCriticalMsg, QStringLiteral("Could not copy incoming file: \"%1\" -> \"%2\"")
                                       .arg(m_source + name, m_incoming + temporary)));
    QCOMPARE(incomingFiles(), QStringList());
}

void TestPackageStaging::nothing_is_left_of_a_copy_that_failed()
{
    write(m_source + QStringLiteral("a.apk"), "content");
    QVERIFY(QFile::resize(m_source + QStringLiteral("a.apk"), Q_INT64_C(1) << 40));

    QVERIFY(stage(m_source + QStringLiteral("a.apk")).isNull());

    QCOMPARE(takeLog(QtCriticalMsg).size(), 1);
    QCOMPARE(incomingFiles(), QStringList());
}

void TestPackageStaging::a_directory_in_the_way_is_a_failed_rename()
{
    write(m_source + QStringLiteral("a.apk"), "content");
    QVERIFY(QDir(m_incoming).mkdir(QStringLiteral("a.apk")));

    QVERIFY(stage(m_source + QStringLiteral("a.apk")).isNull());

    QCOMPARE(takeLog(QtWarningMsg).size(), 1);
    QVERIFY(takeLogLine(
        QtCriticalMsg,
        QStringLiteral("Could not rename file: \"%1a.apk.tmp\" -> \"%1a.apk\"").arg(m_incoming)));
    QCOMPARE(incomingFiles(), QStringList(QStringLiteral("a.apk")));
}

void TestPackageStaging::a_copy_that_does_not_become_roots_is_reported_data()
{
    QTest::addColumn<QVector<unsigned>>("refusedCalls");
    QTest::addColumn<QString>("line");

    QTest::newRow("mode") << modeCalls()
                          << QStringLiteral("Cannot change permissions: \"%1\" ( \"%2\" )");
    QTest::newRow("owner") << ownerCalls()
                           << QStringLiteral("Cannot change ownership: \"%1\" ( \"%2\" )");
}

void TestPackageStaging::a_copy_that_does_not_become_roots_is_reported()
{
    QFETCH(QVector<unsigned>, refusedCalls);
    QFETCH(QString, line);
    write(m_source + QStringLiteral("a.apk"), "content");

    // In a thread of its own, because there is no way back from refused calls.
    bool refused = false;
    bool accepted = true;
    std::thread([&] {
        refused = SystemCalls::refuse(refusedCalls);
        accepted = !stage(m_source + QStringLiteral("a.apk")).isNull();
    }).join();

    QVERIFY(refused);
    QVERIFY(!accepted);
    QVERIFY(takeLogLine(QtCriticalMsg,
                        line.arg(m_incoming + QStringLiteral("a.apk"), qt_error_string(EPERM))));
}

void TestPackageStaging::a_missing_staging_directory_is_a_failed_copy()
{
    write(m_source + QStringLiteral("a.apk"), "content");
    QVERIFY(QDir(m_incoming).removeRecursively());

    QVERIFY(stage(m_source + QStringLiteral("a.apk")).isNull());

    QCOMPARE(takeLog(QtCriticalMsg).size(), 1);
}

void TestPackageStaging::a_source_that_these_rights_do_not_open_is_a_failed_copy()
{
    if (!OtherUsers::exist())
        QSKIP("Needs a second user: run the tests as root");
    const QString source = m_source + QStringLiteral("a.apk");
    write(source, "content");
    QCOMPARE(::chmod(QFile::encodeName(m_directory->path()).constData(), 0755), 0);
    QVERIFY(QFile::setPermissions(source, QFile::ReadOwner));

    QVERIFY(staging().stage(source, UserRights()).isNull());

    QVERIFY(takeLogLine(QtCriticalMsg,
                        QStringLiteral("Could not copy incoming file: \"%1\" -> \"%2a.apk.tmp\"")
                            .arg(source, m_incoming)));
    QCOMPARE(incomingFiles(), QStringList());

    QVERIFY(QFile::setPermissions(source, QFile::ReadOwner | QFile::ReadOther));
    QVERIFY(!staging().stage(source, UserRights()).isNull());
    QCOMPARE(QFileInfo(m_incoming + QStringLiteral("a.apk")).ownerId(), 0U);
}

void TestPackageStaging::another_files_staged_copy_is_left_alone_data()
{
    QTest::addColumn<QString>("other");

    QTest::newRow("temporary copy") << QStringLiteral("a.apk.tmp");
    QTest::newRow("its temporary copy") << QStringLiteral("a.apk.tmp.tmp");
    QTest::newRow("this directory") << QStringLiteral(".");
    QTest::newRow("parent directory") << QStringLiteral("..");
    QTest::newRow("nothing") << QString();
}

void TestPackageStaging::another_files_staged_copy_is_left_alone()
{
    QFETCH(QString, other);
    write(m_source + QStringLiteral("a.apk"), "content");
    write(m_source + QStringLiteral("a.apk.tmp"), "other");
    write(m_source + QStringLiteral("a.apk.tmp.tmp"), "other");
    QVERIFY(!stage(m_source + QStringLiteral("a.apk")).isNull());
    const QStringList before = QDir(root()).entryList();

    QVERIFY(stage(m_source + other).isNull());

    QCOMPARE(takeLog(QtCriticalMsg).size(), 1);
    QCOMPARE(incomingFiles(), QStringList(QStringLiteral("a.apk")));
    QCOMPARE(read(m_incoming + QStringLiteral("a.apk")), QByteArray("content"));
    QCOMPARE(QDir(root()).entryList(), before);
}

void TestPackageStaging::a_link_on_the_way_is_reported_and_not_followed_data()
{
    QTest::addColumn<QString>("replaced");

    QTest::newRow("staging directory") << QStringLiteral("data/staging/incoming");
    QTest::newRow("its parent") << QStringLiteral("data/staging");
}

void TestPackageStaging::a_link_on_the_way_is_reported_and_not_followed()
{
    QFETCH(QString, replaced);
    const QString victim = m_directory->filePath(QStringLiteral("victim"));
    QVERIFY(QDir().mkpath(victim + QStringLiteral("/incoming")));
    for (const char *file : {"/a.apk", "/incoming/a.apk"})
        write(victim + QLatin1String(file), "precious");
    QCOMPARE(::chmod(QFile::encodeName(victim).constData(), 0700), 0);
    write(m_source + QStringLiteral("a.apk"), "content");
    const QString link = m_directory->filePath(replaced);
    QVERIFY(QDir(link).removeRecursively());
    QVERIFY(QFile::link(victim, link));

    staging().removeLeftovers();
    staging().prepare();
    QVERIFY(stage(m_source + QStringLiteral("a.apk")).isNull());

    QCOMPARE(takeLog(QtWarningMsg).size(), 3);
    QCOMPARE(takeLog(QtCriticalMsg).size(), 1);
    QCOMPARE(mode(victim), mode_t(0700));
    for (const char *file : {"/a.apk", "/incoming/a.apk"})
        QCOMPARE(read(victim + QLatin1String(file)), QByteArray("precious"));
    QVERIFY(QFileInfo(link).isSymLink());
}

QTEST_GUILESS_MAIN(TestPackageStaging)
#include "test_packagestaging.moc"
