#include "runtime/packagestore.h"
#include "support/testcase.h"

#include <QDir>
#include <QtTest>

#include <sys/mount.h>

using namespace SimRuntime;

namespace {

const QString Incoming = QStringLiteral("/data/xrs-staging/app/incoming/");
const QString Metronome = QStringLiteral("org.example.metronome");

} // namespace

class PackageStoreTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void installsAnApk();
    void keepsAppsAcrossRestarts();
    void losesAnAppWhoseApkIsDamaged();
    void replacesAnOlderVersion();
    void refuses_data();
    void refuses();
    void countsUidsUp();
    void removesEverything();
    void keepsDataWhenAskedTo();
    void doesNotRemoveWhatIsNotThere();
    void clearsCacheAndData();
    void removesLinksWithoutFollowingThem();
    void measuresApps();
    void respectsTheStorageLimit();
    void noticesAFullDisk();

private:
    QString stage(const char *apk);
    InstallResult install(PackageStore *store, const char *apk, int flags = InstallReplaceExisting);
    bool exists(const QString &path) const { return QFileInfo::exists(m_root->path() + path); }
    void put(const QString &path, int size) const;

    std::unique_ptr<QTemporaryDir> m_root;
};

void PackageStoreTest::init()
{
    TestCase::init();
    m_root = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(m_root->path()).mkpath(m_root->path() + Incoming));
}

void PackageStoreTest::cleanup()
{
    m_root.reset();
    TestCase::cleanup();
}

QString PackageStoreTest::stage(const char *apk)
{
    const QString name = QLatin1String(apk);
    QFile::copy(QStringLiteral(SIM_APKS "/") + name, m_root->path() + Incoming + name);
    return Incoming + name;
}

InstallResult PackageStoreTest::install(PackageStore *store, const char *apk, int flags)
{
    QString package;
    return store->install(stage(apk), flags, &package);
}

void PackageStoreTest::put(const QString &path, int size) const
{
    QFile file(m_root->path() + path);
    QDir().mkpath(QFileInfo(file).path());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(QByteArray(size, 'x')), size);
}

void PackageStoreTest::installsAnApk()
{
    PackageStore store(m_root->path(), 28, 0);
    QString package;

    QCOMPARE(store.install(stage("metronome-1.apk"), InstallReplaceExisting, &package),
             InstallSucceeded);

    QCOMPARE(package, Metronome);
    QCOMPARE(store.names(), QStringList{Metronome});
    QCOMPARE(store.find(Metronome).uid, 10000);
    QCOMPARE(store.find(Metronome).info.versionCode, 1);
    QVERIFY(exists(QStringLiteral("/data/app/org.example.metronome.apk")));
    QVERIFY(exists(QStringLiteral("/data/data/org.example.metronome")));
    QVERIFY(exists(Incoming + QStringLiteral("metronome-1.apk")));
}

void PackageStoreTest::keepsAppsAcrossRestarts()
{
    {
        PackageStore store(m_root->path(), 28, 0);
        install(&store, "papertrail.apk");
        install(&store, "metronome-1.apk");
        store.remove(QStringLiteral("org.example.papertrail"), 0);
    }

    PackageStore store(m_root->path(), 28, 0);
    store.load();

    QCOMPARE(store.names(), QStringList{Metronome});
    QCOMPARE(store.find(Metronome).uid, 10001);
    QCOMPARE(store.find(Metronome).info.launchers.size(), 1);
}

void PackageStoreTest::losesAnAppWhoseApkIsDamaged()
{
    {
        PackageStore store(m_root->path(), 28, 0);
        install(&store, "metronome-1.apk");
    }
    put(QStringLiteral("/data/app/org.example.metronome.apk"), 100);

    PackageStore store(m_root->path(), 28, 0);
    store.load();

    QVERIFY(store.names().isEmpty());
    QCOMPARE(takeLog(QtWarningMsg).size(), 1);
}

void PackageStoreTest::replacesAnOlderVersion()
{
    PackageStore store(m_root->path(), 28, 0);
    install(&store, "metronome-1.apk");
    put(QStringLiteral("/data/data/org.example.metronome/files/score"), 10);

    QCOMPARE(install(&store, "metronome-2.apk"), InstallSucceeded);

    QCOMPARE(store.find(Metronome).info.versionCode, 2);
    QCOMPARE(store.find(Metronome).uid, 10000);
    QVERIFY(exists(QStringLiteral("/data/data/org.example.metronome/files/score")));
}

void PackageStoreTest::refuses_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("second");
    QTest::addColumn<int>("flags");
    QTest::addColumn<int>("result");
    const int replace = InstallReplaceExisting;
    QTest::newRow("an older version")
        << QByteArray("metronome-2.apk") << QByteArray("metronome-1.apk") << replace << -25;
    QTest::newRow("the same app when it must not be replaced")
        << QByteArray("metronome-1.apk") << QByteArray("metronome-1.apk") << 0 << -1;
    QTest::newRow("a provider that another app owns")
        << QByteArray("addressbook.apk") << QByteArray("addresssync.apk") << replace << -13;
    QTest::newRow("an app for a newer release")
        << QByteArray("metronome-1.apk") << QByteArray("starmap.apk") << replace << -12;
    QTest::newRow("a file that is not there")
        << QByteArray("metronome-1.apk") << QByteArray("nothing.apk") << replace << -3;
}

void PackageStoreTest::refuses()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, second);
    QFETCH(int, flags);
    QFETCH(int, result);
    PackageStore store(m_root->path(), 28, 0);
    QCOMPARE(install(&store, first.constData()), InstallSucceeded);
    const QString before = store.names().join(QLatin1Char(' '));
    const qint64 version = store.find(store.names().constFirst()).info.versionCode;

    QCOMPARE(int(install(&store, second.constData(), flags)), result);

    QCOMPARE(store.names().join(QLatin1Char(' ')), before);
    QCOMPARE(store.find(store.names().constFirst()).info.versionCode, version);
}

void PackageStoreTest::countsUidsUp()
{
    PackageStore store(m_root->path(), 28, 0);
    install(&store, "metronome-1.apk");
    install(&store, "papertrail.apk");

    QCOMPARE(store.find(QStringLiteral("org.example.papertrail")).uid, 10001);
}

void PackageStoreTest::removesEverything()
{
    PackageStore store(m_root->path(), 28, 0);
    install(&store, "metronome-1.apk");
    put(QStringLiteral("/data/data/org.example.metronome/files/score"), 10);

    QCOMPARE(store.remove(Metronome, 2), DeleteSucceeded);

    QVERIFY(store.names().isEmpty());
    QVERIFY(!exists(QStringLiteral("/data/app/org.example.metronome.apk")));
    QVERIFY(!exists(QStringLiteral("/data/data/org.example.metronome")));
}

void PackageStoreTest::keepsDataWhenAskedTo()
{
    PackageStore store(m_root->path(), 28, 0);
    install(&store, "metronome-1.apk");

    QCOMPARE(store.remove(Metronome, DeleteKeepData), DeleteSucceeded);

    QVERIFY(exists(QStringLiteral("/data/data/org.example.metronome")));
}

void PackageStoreTest::doesNotRemoveWhatIsNotThere()
{
    PackageStore store(m_root->path(), 28, 0);
    put(QStringLiteral("/data/keep"), 1);

    QCOMPARE(store.remove(QStringLiteral("../keep"), 2), DeleteFailedInternalError);
    QCOMPARE(store.remove(QString(), 2), DeleteFailedInternalError);

    QVERIFY(exists(QStringLiteral("/data/keep")));
}

void PackageStoreTest::clearsCacheAndData()
{
    PackageStore store(m_root->path(), 28, 0);
    install(&store, "metronome-1.apk");
    put(QStringLiteral("/data/data/org.example.metronome/cache/a/b"), 10);
    put(QStringLiteral("/data/data/org.example.metronome/files/score"), 10);

    QVERIFY(store.clearCache(Metronome));
    QVERIFY(!exists(QStringLiteral("/data/data/org.example.metronome/cache")));
    QVERIFY(exists(QStringLiteral("/data/data/org.example.metronome/files/score")));

    QVERIFY(store.clearData(Metronome));
    QVERIFY(!exists(QStringLiteral("/data/data/org.example.metronome/files")));
    QVERIFY(exists(QStringLiteral("/data/data/org.example.metronome")));

    QVERIFY(!store.clearCache(QStringLiteral("not.there")));
    QVERIFY(!store.clearData(QStringLiteral("not.there")));
}

void PackageStoreTest::removesLinksWithoutFollowingThem()
{
    PackageStore store(m_root->path(), 28, 0);
    install(&store, "metronome-1.apk");
    put(QStringLiteral("/outside/keep"), 1);
    QVERIFY(QFile::link(m_root->path() + QStringLiteral("/outside"),
                        m_root->path() + QStringLiteral("/data/data/org.example.metronome/cache")));

    QVERIFY(store.clearCache(Metronome));

    QVERIFY(!exists(QStringLiteral("/data/data/org.example.metronome/cache")));
    QVERIFY(exists(QStringLiteral("/outside/keep")));
}

void PackageStoreTest::measuresApps()
{
    PackageStore store(m_root->path(), 28, 0);
    install(&store, "metronome-1.apk");
    put(QStringLiteral("/data/data/org.example.metronome/cache/a"), 100);
    put(QStringLiteral("/data/data/org.example.metronome/code_cache/b"), 20);
    put(QStringLiteral("/data/data/org.example.metronome/files/c"), 3);

    const PackageSizes sizes = store.sizes(Metronome);

    QCOMPARE(sizes.code, QFileInfo(QStringLiteral(SIM_APKS "/metronome-1.apk")).size());
    QCOMPARE(sizes.data, 123);
    QCOMPARE(sizes.cache, 120);
}

void PackageStoreTest::respectsTheStorageLimit()
{
    const qint64 size = QFileInfo(QStringLiteral(SIM_APKS "/metronome-1.apk")).size();
    PackageStore store(m_root->path(), 28, size + 1000);

    QCOMPARE(install(&store, "metronome-1.apk"), InstallSucceeded);
    QCOMPARE(install(&store, "papertrail.apk"), InstallFailedInsufficientStorage);
    QVERIFY(!exists(QStringLiteral("/data/app/org.example.papertrail.apk")));
    QCOMPARE(install(&store, "metronome-1.apk"), InstallSucceeded); // takes its own place
}

void PackageStoreTest::noticesAFullDisk()
{
    const QByteArray apps = QFile::encodeName(m_root->path() + QStringLiteral("/data/app"));
    QVERIFY(QDir().mkpath(QFile::decodeName(apps)));
    QVERIFY2(mount("tmpfs", apps.constData(), "tmpfs", 0, "size=4k") == 0, strerror(errno));
    PackageStore store(m_root->path(), 28, 0);

    const InstallResult result = install(&store, "papertrail.apk");
    const QStringList left = QDir(QFile::decodeName(apps)).entryList(QDir::Files | QDir::Hidden);
    umount(apps.constData());

    QCOMPARE(result, InstallFailedInsufficientStorage);
    QCOMPARE(left, QStringList());
    QVERIFY(store.names().isEmpty());
}

QTEST_GUILESS_MAIN(PackageStoreTest)
#include "tst_packagestore.moc"
