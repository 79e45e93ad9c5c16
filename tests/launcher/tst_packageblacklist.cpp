#include "launcher/packageblacklist.h"
#include "support/hostfiles.h"
#include "support/testcase.h"

#include <QtTest>

class PackageBlacklistTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void isEmptyAndSilentWithoutFiles();
    void readsOnePackagePerLine();
    void readsTheSecondListToo();
    void skipsWhatCannotBeRead();
    void readsTheListsOnce();
};

void PackageBlacklistTest::init()
{
    TestCase::init();
    qunsetenv("BRAMD_PACKAGE_BLACKLIST_PATH");
    HostFiles::removeAll(QStringLiteral("/etc/bramd/app-blacklist"));
}

void PackageBlacklistTest::isEmptyAndSilentWithoutFiles()
{
    const PackageBlacklist blacklist;

    QVERIFY(!blacklist.contains(QStringLiteral("a.b")));
    QVERIFY(!blacklist.contains(QString()));
    QVERIFY(log().isEmpty());
}

void PackageBlacklistTest::readsOnePackagePerLine()
{
    HostFiles::write(QStringLiteral("/etc/bramd/app-blacklist"),
                     "a.b\n\n \t c.d \t\r\nc.d\n   \n# e.f\ng.\xC3\xA9\nlast");

    const PackageBlacklist blacklist;

    QVERIFY(blacklist.contains(QStringLiteral("a.b")));
    QVERIFY(blacklist.contains(QStringLiteral("c.d")));
    QVERIFY(blacklist.contains(QString::fromUtf8("g.\xC3\xA9")));
    QVERIFY(blacklist.contains(QStringLiteral("last")));
    // no comments, no empty names, and case tells
    QVERIFY(blacklist.contains(QStringLiteral("# e.f")));
    QVERIFY(!blacklist.contains(QStringLiteral("e.f")));
    QVERIFY(!blacklist.contains(QString()));
    QVERIFY(!blacklist.contains(QStringLiteral("A.b")));
    QVERIFY(!blacklist.contains(QStringLiteral("a")));
}

void PackageBlacklistTest::readsTheSecondListToo()
{
    HostFiles::write(QStringLiteral("/etc/bramd/app-blacklist"), "a.b\n");
    HostFiles::write(QStringLiteral("/run/more-\u00E9"), "c.d\n");
    qputenv("BRAMD_PACKAGE_BLACKLIST_PATH", "/run/more-\xC3\xA9");

    const PackageBlacklist blacklist;

    QVERIFY(blacklist.contains(QStringLiteral("a.b")));
    QVERIFY(blacklist.contains(QStringLiteral("c.d")));
}

void PackageBlacklistTest::skipsWhatCannotBeRead()
{
    HostFiles::write(QStringLiteral("/etc/bramd/app-blacklist"), "a.b\n");
    for (const char *path : {"", "/run", "/run/nowhere"}) {
        qputenv("BRAMD_PACKAGE_BLACKLIST_PATH", path);

        const PackageBlacklist blacklist;

        QVERIFY(blacklist.contains(QStringLiteral("a.b")));
        QVERIFY(log().isEmpty());
    }
}

void PackageBlacklistTest::readsTheListsOnce()
{
    const PackageBlacklist blacklist;
    HostFiles::write(QStringLiteral("/etc/bramd/app-blacklist"), "a.b\n");

    QVERIFY(!blacklist.contains(QStringLiteral("a.b")));
}

QTEST_GUILESS_MAIN(PackageBlacklistTest)
#include "tst_packageblacklist.moc"
