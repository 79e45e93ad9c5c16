#include "daemon/runtimedirectory.h"
#include "support/hostfiles.h"
#include "support/otherusers.h"
#include "support/testcase.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

using HostFiles::write;

class TestRuntimeDirectory : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void a_directory_below_the_root_is_opened();
    void what_is_missing_is_only_made_when_asked_for();
    void the_root_is_made_too();
    void a_root_without_a_name_is_that_of_the_host();
    void a_link_on_the_way_is_not_followed_data();
    void a_link_on_the_way_is_not_followed();
    void a_link_to_the_root_is_followed();
    void what_is_no_directory_is_not_entered_data();
    void what_is_no_directory_is_not_entered();
    void files_and_links_are_listed();
    void a_file_is_made_where_there_is_none_data();
    void a_file_is_made_where_there_is_none();
    void a_link_is_removed_and_not_what_it_leads_to();
    void a_link_is_replaced_and_not_what_it_leads_to();
    void a_directory_is_not_removed();
    void owner_and_mode_are_set();
    void a_link_put_in_its_place_meanwhile_has_no_effect();
    void one_that_is_not_open_does_nothing();

private:
    QString path(const char *name) const { return m_directory->filePath(QLatin1String(name)); }
    QString root() const { return path("root"); }
    QString incoming() const { return path("root/data/staging/incoming/"); }
    RuntimeDirectory opened() const { return RuntimeDirectory::open(root(), incoming()); }
    static QStringList entries(const QString &directory);

    QScopedPointer<QTemporaryDir> m_directory;
};

void TestRuntimeDirectory::init()
{
    TestCase::init();
    m_directory.reset(new QTemporaryDir);
    QVERIFY(QDir().mkpath(incoming()));
    QVERIFY(QDir().mkpath(path("victim")));
    write(path("victim/file"), "precious");
}

QStringList TestRuntimeDirectory::entries(const QString &directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                     QDir::NoDotAndDotDot);
}

void TestRuntimeDirectory::a_directory_below_the_root_is_opened()
{
    QVERIFY(opened().isOpen());
    QVERIFY(opened().create("a").isOpen());
    QCOMPARE(entries(incoming()), QStringList(QStringLiteral("a")));
}

void TestRuntimeDirectory::what_is_missing_is_only_made_when_asked_for()
{
    const QString missing = path("root/data/other/incoming/");

    QVERIFY(!RuntimeDirectory::open(root(), missing).isOpen());
    QVERIFY(!QFileInfo::exists(path("root/data/other")));

    QVERIFY(RuntimeDirectory::make(root(), missing).isOpen());
    QVERIFY(QFileInfo(missing).isDir());
}

void TestRuntimeDirectory::the_root_is_made_too()
{
    QVERIFY(RuntimeDirectory::make(path("new/root"), path("new/root/data/")).isOpen());
    QVERIFY(QFileInfo(path("new/root/data")).isDir());
}

void TestRuntimeDirectory::a_root_without_a_name_is_that_of_the_host()
{
    QVERIFY(RuntimeDirectory::open(QString(), incoming()).isOpen());
}

void TestRuntimeDirectory::a_link_on_the_way_is_not_followed_data()
{
    QTest::addColumn<QString>("replaced");
    QTest::addColumn<QString>("target");

    const QString victim = QStringLiteral("../victim");
    QTest::newRow("first step") << QStringLiteral("root/data") << victim;
    QTest::newRow("second step") << QStringLiteral("root/data/staging")
                                 << QStringLiteral("../../victim");
    QTest::newRow("last step") << QStringLiteral("root/data/staging/incoming")
                               << QStringLiteral("../../../victim");
    QTest::newRow("to a place below the root")
        << QStringLiteral("root/data") << QStringLiteral(".");
    QTest::newRow("to nothing") << QStringLiteral("root/data") << QStringLiteral("../none");
    QTest::newRow("to a process's root")
        << QStringLiteral("root/data") << QStringLiteral("/proc/self/root");
}

void TestRuntimeDirectory::a_link_on_the_way_is_not_followed()
{
    QFETCH(QString, replaced);
    QFETCH(QString, target);
    QVERIFY(QDir().mkpath(path("victim/staging/incoming")));
    QVERIFY(QDir().mkpath(path("victim/incoming")));
    const QString link = m_directory->filePath(replaced);
    HostFiles::removeAll(link);
    QVERIFY(QFile::link(target, link));
    const QStringList before = entries(path("victim"));

    QVERIFY(!opened().isOpen());
    QVERIFY(!RuntimeDirectory::make(root(), incoming()).isOpen());

    QCOMPARE(entries(path("victim")), before);
    QVERIFY(!QFileInfo::exists(path("none")));
    QVERIFY(QFileInfo(link).isSymLink());
}

void TestRuntimeDirectory::a_link_to_the_root_is_followed()
{
    QVERIFY(QFile::link(root(), path("link")));

    QVERIFY(RuntimeDirectory::open(path("link"), path("link/data/staging/incoming/")).isOpen());
}

void TestRuntimeDirectory::what_is_no_directory_is_not_entered_data()
{
    QTest::addColumn<QString>("replaced");

    QTest::newRow("on the way") << QStringLiteral("root/data/staging");
    QTest::newRow("in its place") << QStringLiteral("root/data/staging/incoming");
}

void TestRuntimeDirectory::what_is_no_directory_is_not_entered()
{
    QFETCH(QString, replaced);
    const QString fifo = m_directory->filePath(replaced); // which blocks who opens it
    HostFiles::removeAll(fifo);
    QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);

    QVERIFY(!opened().isOpen());
    QVERIFY(!RuntimeDirectory::make(root(), incoming()).isOpen());
}

void TestRuntimeDirectory::files_and_links_are_listed()
{
    const QByteArray noUtf8 = QFile::encodeName(incoming()) + "\xff\n.apk";
    write(incoming() + QStringLiteral("a.apk"), "");
    write(incoming() + QStringLiteral(".hidden"), "");
    QCOMPARE(::symlink("/nowhere", noUtf8.constData()), 0);
    QVERIFY(QDir().mkpath(incoming() + QStringLiteral("directory")));
    QCOMPARE(::mkfifo(QFile::encodeName(incoming() + QStringLiteral("fifo")).constData(), 0600), 0);

    QVector<QByteArray> files = opened().files();
    std::sort(files.begin(), files.end());

    QCOMPARE(files, (QVector<QByteArray>{".hidden", "a.apk", "\xff\n.apk"}));
    QVERIFY(opened().remove(files.last())); // which Qt could not
}

void TestRuntimeDirectory::a_file_is_made_where_there_is_none_data()
{
    QTest::addColumn<QString>("linkTarget");

    QTest::newRow("file") << QString();
    QTest::newRow("link to a file") << QStringLiteral("../../../../victim/file");
    QTest::newRow("link to nothing") << QStringLiteral("/nonexistent/none");
}

void TestRuntimeDirectory::a_file_is_made_where_there_is_none()
{
    QFETCH(QString, linkTarget);
    const RuntimeDirectory directory = opened();
    if (linkTarget.isNull())
        write(incoming() + QStringLiteral("taken"), "old");
    else
        QVERIFY(QFile::link(linkTarget, incoming() + QStringLiteral("taken")));

    QVERIFY(directory.contains("taken"));
    QVERIFY(!directory.create("taken").isOpen());
    QVERIFY(!directory.contains("free"));
    QVERIFY(directory.create("free").isOpen());
    QCOMPARE(HostFiles::mode(incoming() + QStringLiteral("free")), 0600);
}

void TestRuntimeDirectory::a_link_is_removed_and_not_what_it_leads_to()
{
    QVERIFY(QFile::link(path("victim/file"), incoming() + QStringLiteral("link")));

    QVERIFY(opened().remove("link"));

    QVERIFY(entries(incoming()).isEmpty());
    QVERIFY(QFile::exists(path("victim/file")));
}

void TestRuntimeDirectory::a_link_is_replaced_and_not_what_it_leads_to()
{
    QVERIFY(QFile::link(path("victim/file"), incoming() + QStringLiteral("link")));
    write(incoming() + QStringLiteral("new"), "new");

    QVERIFY(opened().rename("new", "link"));

    QCOMPARE(HostFiles::read(incoming() + QStringLiteral("link")), QByteArray("new"));
    QCOMPARE(HostFiles::read(path("victim/file")), QByteArray("precious"));
}

void TestRuntimeDirectory::a_directory_is_not_removed()
{
    QVERIFY(QDir().mkpath(incoming() + QStringLiteral("directory")));

    QVERIFY(!opened().remove("directory"));
    QVERIFY(opened().contains("directory"));
}

void TestRuntimeDirectory::owner_and_mode_are_set()
{
    QVERIFY(opened().setMode(0700));
    QCOMPARE(HostFiles::mode(incoming()), 0700);
    if (OtherUsers::exist())
        QCOMPARE(::chown(QFile::encodeName(incoming()).constData(), 65534, 65534), 0);
    QVERIFY(opened().setOwner(0, 0));
    QCOMPARE(QFileInfo(incoming()).ownerId(), 0U);
    QCOMPARE(QFileInfo(incoming()).groupId(), 0U);
}

void TestRuntimeDirectory::a_link_put_in_its_place_meanwhile_has_no_effect()
{
    const RuntimeDirectory directory = opened();
    write(incoming() + QStringLiteral("file"), "");
    const QString place = path("root/data/staging/incoming");
    const QString moved = path("root/data/moved");
    QVERIFY(QDir().rename(place, moved));
    QVERIFY(QFile::link(path("victim"), place));

    QVERIFY(directory.remove("file"));
    QVERIFY(directory.create("new").isOpen());
    QVERIFY(directory.rename("new", "newer"));
    QVERIFY(directory.setMode(0700));

    QCOMPARE(entries(path("victim")), QStringList(QStringLiteral("file")));
    QVERIFY(HostFiles::mode(path("victim")) != 0700);
    QCOMPARE(entries(moved), QStringList(QStringLiteral("newer")));
}

void TestRuntimeDirectory::one_that_is_not_open_does_nothing()
{
    const RuntimeDirectory directory = RuntimeDirectory::open(root(), path("root/none/"));
    QVERIFY(!directory.isOpen());

    // In the current directory, to which an unlucky descriptor could lead.
    QDir::setCurrent(path("victim"));
    QVERIFY(!directory.contains("file"));
    QVERIFY(!directory.remove("file"));
    QVERIFY(!directory.rename("file", "other"));
    QVERIFY(!directory.create("new").isOpen());
    QVERIFY(!directory.setMode(0700));
    QVERIFY(!directory.setOwner(0, 0));
    QVERIFY(directory.files().isEmpty());
    QDir::setCurrent(QStringLiteral("/"));

    QCOMPARE(entries(path("victim")), QStringList(QStringLiteral("file")));
}

QTEST_GUILESS_MAIN(TestRuntimeDirectory)
#include "test_runtimedirectory.moc"
