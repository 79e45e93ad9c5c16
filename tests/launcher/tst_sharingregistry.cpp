#include "launcher/apklauncher.h"
#include "launcher/sharingregistry.h"
#include "support/hostfiles.h"
#include "support/testcase.h"

#include <QtTest>

#include <sys/stat.h>

namespace {

const QString SharingFile = QStringLiteral("/var/lib/bramd/sharing.json");
const QString Directory = QStringLiteral("/var/lib/bramd");
const QString Category = QStringLiteral("com.corvo.bramd.launcher");

ApkLauncher target(const QString &packageName, const QString &className)
{
    ApkLauncher launcher;
    launcher.label = QStringLiteral("Label");
    launcher.caption = QStringLiteral("Caption");
    launcher.packageName = packageName;
    launcher.className = className;
    launcher.shareMimeTypes =
        QStringList{QStringLiteral("text/plain"), QStringLiteral("image/png")};
    return launcher;
}

ApkLauncher target()
{
    return target(QStringLiteral("a.b"), QStringLiteral("a.b.Share"));
}

} // namespace

class SharingRegistryTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void startsWithAnEmptyFile();
    void makesTheDirectoryForEveryone();
    void warnsWhenTheDirectoryCannotBeMade();
    void writesATarget();
    void leavesAnUnchangedFileAlone();
    void rewritesAFileThatWasChangedByOthers();
    void removesAPackageFromTheFile();
    void rewritesNothingForAnUnknownPackage();
    void removesNothingWhileThereAreNoTargets();
    void keepsTheChangeWhenTheDiskIsFull();
    void writesAgainOnlyWhatCouldNotBeWritten();
    void readsBackWhateverTheNames();
    void leavesOutWhatDoesNotFit();
};

void SharingRegistryTest::init()
{
    TestCase::init();
    HostFiles::makeEmptyDirectory(Directory);
}

void SharingRegistryTest::startsWithAnEmptyFile()
{
    HostFiles::write(SharingFile, "{\"left\": {}}");

    const SharingRegistry registry;

    QCOMPARE(HostFiles::read(SharingFile), QByteArray());
    QCOMPARE(HostFiles::mode(SharingFile), 0644);
}

void SharingRegistryTest::makesTheDirectoryForEveryone()
{
    HostFiles::removeAll(Directory);

    const mode_t before = ::umask(0077);
    const SharingRegistry registry;
    ::umask(before);

    QCOMPARE(HostFiles::mode(Directory), 0755);
    QCOMPARE(HostFiles::mode(SharingFile), 0644);
}

void SharingRegistryTest::warnsWhenTheDirectoryCannotBeMade()
{
    HostFiles::removeAll(Directory);
    HostFiles::write(Directory, "in the way");

    const SharingRegistry registry;

    QCOMPARE(takeLog(QtWarningMsg, Category),
             QStringList({QStringLiteral("Cannot create directory: \"/var/lib/bramd/\""),
                          QStringLiteral("Unable to write sharing file")}));
    HostFiles::removeAll(Directory);
}

void SharingRegistryTest::writesATarget()
{
    SharingRegistry registry;

    registry.add(target());

    QCOMPARE(HostFiles::read(SharingFile), QByteArray(R"({
    "a.b": {
        "a.b.Share": {
            "caption": "Caption",
            "icon": "/var/lib/bramd/bramd_handler_a_b-a_b_Share.png",
            "label": "Label",
            "mimetypes": [
                "text/plain",
                "image/png"
            ],
            "multi": false
        }
    }
}
)"));
    QCOMPARE(HostFiles::mode(SharingFile), 0644);
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList(QStringLiteral("Adding \"a.b\" \"a.b.Share\" to sharing plugins")));
}

void SharingRegistryTest::leavesAnUnchangedFileAlone()
{
    SharingRegistry registry;
    registry.add(target());
    const quint64 before = HostFiles::inode(SharingFile);

    registry.add(target());

    QCOMPARE(HostFiles::inode(SharingFile), before);
}

void SharingRegistryTest::rewritesAFileThatWasChangedByOthers()
{
    SharingRegistry registry;
    registry.add(target());
    const QByteArray content = HostFiles::read(SharingFile);
    HostFiles::removeAll(SharingFile);

    registry.add(target());

    QCOMPARE(HostFiles::read(SharingFile), content);
}

void SharingRegistryTest::removesAPackageFromTheFile()
{
    SharingRegistry registry;
    registry.add(target());
    takeLog(QtDebugMsg);

    registry.removePackage(QStringLiteral("a.b"));

    QCOMPARE(HostFiles::read(SharingFile), QByteArray("{\n}\n"));
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList(QStringLiteral("Package \"a.b\" removed from sharing file. Writing.")));
}

void SharingRegistryTest::rewritesNothingForAnUnknownPackage()
{
    SharingRegistry registry;
    registry.add(target());
    takeLog(QtDebugMsg);
    const quint64 before = HostFiles::inode(SharingFile);

    registry.removePackage(QStringLiteral("c.d"));

    QCOMPARE(HostFiles::inode(SharingFile), before);
    QCOMPARE(takeLog(QtDebugMsg), QStringList());
}

void SharingRegistryTest::removesNothingWhileThereAreNoTargets()
{
    SharingRegistry registry;
    HostFiles::write(SharingFile, "changed by others");

    registry.removePackage(QStringLiteral("a.b"));

    QCOMPARE(HostFiles::read(SharingFile), QByteArray("changed by others"));
}

void SharingRegistryTest::keepsTheChangeWhenTheDiskIsFull()
{
    SharingRegistry registry;
    {
        const HostFiles::Mount disk = HostFiles::Mount::memory(Directory, "size=16k");
        HostFiles::write(SharingFile, "old");
        HostFiles::fillDisk(Directory);

        registry.add(target());

        QCOMPARE(takeLog(QtWarningMsg, Category),
                 QStringList(QStringLiteral("Unable to write sharing file")));
        QCOMPARE(HostFiles::read(SharingFile), QByteArray("old"));
    }

    registry.add(target(QStringLiteral("c"), QStringLiteral("c.D")));

    const QJsonObject root = QJsonDocument::fromJson(HostFiles::read(SharingFile)).object();
    QCOMPARE(root.keys(), QStringList({QStringLiteral("a.b"), QStringLiteral("c")}));
}

void SharingRegistryTest::writesAgainOnlyWhatCouldNotBeWritten()
{
    SharingRegistry registry;
    {
        const HostFiles::Mount readOnly = HostFiles::Mount::readOnly(Directory);
        registry.add(target());
        registry.retry();
    }
    const QString failure = QStringLiteral("Unable to write sharing file");
    QCOMPARE(takeLog(QtWarningMsg, Category), QStringList({failure, failure}));

    registry.retry();
    const quint64 written = HostFiles::inode(SharingFile);
    registry.retry();

    QVERIFY(HostFiles::read(SharingFile).contains("a.b.Share"));
    QCOMPARE(HostFiles::inode(SharingFile), written);
}

void SharingRegistryTest::readsBackWhateverTheNames()
{
    SharingRegistry registry;
    ApkLauncher launcher = target();
    launcher.label = QStringLiteral("\"}, \\ \n \u65E5");
    launcher.caption = QString(QChar(0));

    registry.add(launcher);

    const QJsonObject written = QJsonDocument::fromJson(HostFiles::read(SharingFile))
                                    .object()
                                    .value(QStringLiteral("a.b"))
                                    .toObject()
                                    .value(QStringLiteral("a.b.Share"))
                                    .toObject();
    QCOMPARE(written.value(QStringLiteral("label")).toString(), launcher.label);
    QCOMPARE(written.value(QStringLiteral("caption")).toString(), launcher.caption);
}

void SharingRegistryTest::leavesOutWhatDoesNotFit()
{
    SharingRegistry registry;
    ApkLauncher launcher = target();
    launcher.label = QString(SharingRegistry::MaxBytes - 1000, QLatin1Char('a'));
    registry.add(launcher);
    const QByteArray before = HostFiles::read(SharingFile);
    QVERIFY(before.size() > SharingRegistry::MaxBytes - 1000);

    ApkLauncher large = target(QStringLiteral("c"), QStringLiteral("c.D"));
    large.label = QString(2000, QLatin1Char('a'));
    registry.add(large);
    registry.add(large);
    QCOMPARE(HostFiles::read(SharingFile), before);
    QCOMPARE(takeLog(QtWarningMsg, Category),
             QStringList(QStringLiteral("Too many share targets, leaving out this and what "
                                        "follows: \"c\" \"c.D\"")));

    registry.removePackage(launcher.packageName);
    registry.add(large);
    QCOMPARE(QJsonDocument::fromJson(HostFiles::read(SharingFile)).object().keys(),
             QStringList(QStringLiteral("c")));
}

QTEST_GUILESS_MAIN(SharingRegistryTest)
#include "tst_sharingregistry.moc"
