#include "support/hostfiles.h"
#include "support/testcase.h"
#include "tools/ctl/appentry.h"
#include "tools/ctl/blacklistfile.h"
#include "tools/ctl/literals.h"
#include "tools/ctl/regularfile.h"
#include "tools/ctl/sharetarget.h"

#include <QFile>
#include <QtTest>

#include <sys/stat.h>

namespace {

const QString Applications = QStringLiteral("/usr/share/applications/");
const QString Registry = QStringLiteral("/var/lib/bramd/sharing.json");

const QByteArray Launcher = "[Desktop Entry]\nExec=bramd-launcher a.b.apk a.b/a.b.C$D\n"
                            "Icon=/x.png\nName=App\nX-bramd-packageName=a.b\n";

} // namespace

class CtlReadersTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void readsAnEntry();
    void gathersApps();
    void survivesHostileEntries();
    void readsRegularFilesOnly();
    void readsVersions_data();
    void readsVersions();
    void readsTheRegistry();
    void judgesRegistries_data();
    void judgesRegistries();
    void editsTheBlacklist_data();
    void editsTheBlacklist();
    void findsTheSecondBlacklist_data();
    void findsTheSecondBlacklist();
};

void CtlReadersTest::init()
{
    TestCase::init();
    HostFiles::makeEmptyDirectory(Applications);
    HostFiles::makeEmptyDirectory("/var/lib/bramd"_q);
    HostFiles::makeEmptyDirectory("/usr/share/corvo-settings/entries"_q);
}

void CtlReadersTest::readsAnEntry()
{
    const AppEntry launcher = AppEntries::parse("/x/bramd_launcher_1.desktop"_q, Launcher);
    QCOMPARE(launcher.packageName, "a.b"_q);
    QCOMPARE(launcher.className, "a.b.C$D"_q);
    QCOMPARE(launcher.name, "App"_q);
    QCOMPARE(launcher.iconPath, "/x.png"_q);
    QVERIFY(!launcher.isHandler && !launcher.isHidden);

    const AppEntry handler = AppEntries::parse(
        "/x/bramd_handler_1.desktop"_q, "[Desktop Entry]\nExec=bramd-launcher -d %U a.apk a/a.V\n"
                                        "MimeType=a/b;c/d\nNoDisplay=true\nX-bramd-packageName=a\n"
                                        "Name=back\\\\slash");
    QCOMPARE(handler.name, "back\\slash"_q);
    QCOMPARE(handler.className, "a.V"_q);
    QCOMPARE(handler.mimeTypes, QStringList({"a/b"_q, "c/d"_q}));
    QVERIFY(handler.isHandler && handler.isHidden);
}

void CtlReadersTest::gathersApps()
{
    HostFiles::write(Applications + "bramd_launcher_1.desktop"_q, Launcher);
    HostFiles::write(Applications + "bramd_handler_1.desktop"_q,
                     "[Desktop Entry]\nName=Handler\nMimeType=a/b\nNoDisplay=true\n"
                     "X-bramd-packageName=a.b\n");
    HostFiles::write(Applications + "bramd_handler_2.desktop"_q,
                     "[Desktop Entry]\nName=Other\nNoDisplay=true\nX-bramd-packageName=a.a\n");
    HostFiles::write(Applications + "foreign.desktop"_q, Launcher);
    HostFiles::write("/usr/share/corvo-settings/entries/bramd_launcher_1.json"_q,
                     R"({"entries":[{"params":{"properties":{"packageVersion":"1.4"}}}]})");

    const QVector<App> apps = AppEntries::installedApps();

    QCOMPARE(apps.size(), 2);
    QCOMPARE(apps.first().packageName, "a.a"_q);
    QVERIFY(apps.first().isHidden);
    QCOMPARE(apps.last().name, "App"_q);
    QCOMPARE(apps.last().version, "1.4"_q);
    QCOMPARE(apps.last().launchers, QStringList("a.b.C$D"_q));
    QCOMPARE(apps.last().opens, QStringList("a/b"_q));
    QVERIFY(!apps.last().isHidden);
    QVERIFY(AppEntries::isInstalled("a.a"_q));
    QVERIFY(!AppEntries::isInstalled("a"_q));
    QVERIFY(!AppEntries::isInstalled(QString()));
}

void CtlReadersTest::survivesHostileEntries()
{
    for (const QByteArray &content :
         {QByteArray(), QByteArray("\0\xff\xfe=", 4), QByteArray("[Desktop Entry]\n=\n==\nExec="),
          QByteArray("[Desktop Entry]\nX-bramd-packageName=%1\nExec= %1.apk %1/"),
          QByteArray("[Desktop Entry]\n") + QByteArray(1 << 20, '='), QByteArray(1 << 20, '\n')}) {
        const AppEntry entry = AppEntries::parse("/x/bramd_launcher_1.desktop"_q, content);
        QVERIFY(entry.className.isEmpty());
        AppEntries::appsOf({entry});
    }

    const QByteArray fifo = QFile::encodeName(Applications + "bramd_launcher_1.desktop"_q);
    QCOMPARE(mkfifo(fifo.constData(), 0600), 0);
    QFile::link("/nowhere"_q, Applications + "bramd_launcher_2.desktop"_q);
    QFile::link("/dev/zero"_q, Applications + "bramd_launcher_3.desktop"_q);
    const QVector<AppEntry> entries = AppEntries::readAll();
    QCOMPARE(entries.size(), 3);
    for (const AppEntry &entry : entries)
        QVERIFY2(entry.state == RegularFile::State::Unusable, qUtf8Printable(entry.path));
}

void CtlReadersTest::readsRegularFilesOnly()
{
    using State = RegularFile::State;
    QCOMPARE(RegularFile::read("/nowhere"_q).state, State::Missing);
    QCOMPARE(RegularFile::read("/usr"_q).state, State::Unusable);
    QCOMPARE(RegularFile::read("/dev/zero"_q).state, State::Unusable);
    HostFiles::write(Registry, "x");
    QVERIFY(RegularFile::read(Registry).isRead());
    QCOMPARE(RegularFile::read(Registry).content, QByteArray("x"));
    QFile file(Registry);
    QVERIFY(file.resize(9 * 1024 * 1024));
    QCOMPARE(RegularFile::read(Registry).state, State::Unusable);
}

void CtlReadersTest::readsVersions_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("version");
    QTest::newRow("one") << QByteArray(
                                R"({"entries":[{"params":{"properties":{"packageVersion":"2"}}}]})")
                         << "2"_q;
    QTest::newRow("nothing") << QByteArray() << QString();
    QTest::newRow("damaged") << QByteArray("{\"entries\":[") << QString();
    QTest::newRow("no entries") << QByteArray("{\"entries\":[]}") << QString();
    QTest::newRow("other types") << QByteArray("{\"entries\":[[1],2]}") << QString();
}

void CtlReadersTest::readsVersions()
{
    QFETCH(QByteArray, content);
    QTEST(AppEntries::versionOf(content), "version");
}

void CtlReadersTest::readsTheRegistry()
{
    HostFiles::write(Registry, R"({"b": {"b.X": {"label": "B", "caption": "To B", "icon": "/i.png",
                                   "mimetypes": ["a/b", 1], "multi": true}},
                                   "a": {"a.Y": {}, "a.Z": 5}, "c": []})");

    const RegisteredTargets registry = RegisteredTargets::read();

    QCOMPARE(registry.state, RegisteredTargets::State::Filled);
    QCOMPARE(registry.targets.size(), 2);
    QCOMPARE(registry.targets.first().component(), "a/a.Y"_q);
    QVERIFY(!registry.targets.first().takes("a/b"_q));
    const ShareTarget &target = registry.targets.last();
    QCOMPARE(target.component(), "b/b.X"_q);
    QCOMPARE(target.label, "B"_q);
    QCOMPARE(target.caption, "To B"_q);
    QCOMPARE(target.iconPath, "/i.png"_q);
    QVERIFY(target.takesSeveral && target.takes("a/b"_q));
}

void CtlReadersTest::judgesRegistries_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("state");
    const auto row = [](const char *name, const QByteArray &content,
                        RegisteredTargets::State state) {
        QTest::newRow(name) << content << static_cast<int>(state);
    };
    row("as the daemon starts", QByteArray(), RegisteredTargets::State::Empty);
    row("line end", QByteArray("\n"), RegisteredTargets::State::Empty);
    row("after the last app has gone", QByteArray("{\n}\n"), RegisteredTargets::State::Empty);
    row("no targets", QByteArray("{\"a\": {}}"), RegisteredTargets::State::Empty);
    row("cut", QByteArray("{\"a\": {"), RegisteredTargets::State::Damaged);
    row("a list", QByteArray("[]"), RegisteredTargets::State::Damaged);
    row("no text", QByteArray("\xff\xfe\0", 3), RegisteredTargets::State::Damaged);
}

void CtlReadersTest::judgesRegistries()
{
    QFETCH(QByteArray, content);
    QFETCH(int, state);
    QCOMPARE(static_cast<int>(RegisteredTargets::parse(content).state), state);
}

void CtlReadersTest::editsTheBlacklist_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("with");
    QTest::addColumn<QByteArray>("without");
    const auto row = [](const char *name, const QByteArray &before, const QByteArray &with,
                        const QByteArray &without) {
        QTest::newRow(name) << before << with << without;
    };
    row("empty", "", "a.b\n", "");
    row("others", "x\n y \n\n", "x\n y \n\na.b\n", "x\n y \n\n");
    row("there", "x\na.b\n", "x\na.b\n", "x\n");
    row("twice, with blanks", " a.b\t\nx\na.b", " a.b\t\nx\na.b", "x\n");
    row("no line end", "x", "x\na.b\n", "x");
    row("only similar", "a.b.c\nA.B\n", "a.b.c\nA.B\na.b\n", "a.b.c\nA.B\n");
    row("other bytes", "\xff\xfe\n", "\xff\xfe\na.b\n", "\xff\xfe\n");
}

void CtlReadersTest::editsTheBlacklist()
{
    QFETCH(QByteArray, before);
    QTEST(BlacklistFile::with(before, "a.b"_q), "with");
    QTEST(BlacklistFile::without(before, "a.b"_q), "without");
}

void CtlReadersTest::findsTheSecondBlacklist_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("path");
    const QByteArray name = "BRAMD_PACKAGE_BLACKLIST_PATH";
    QTest::newRow("none") << QByteArray("X=y\n") << QString();
    QTest::newRow("plain") << QByteArray("X=y\n" + name + "=/a b\n") << "/a b"_q;
    QTest::newRow("quoted") << QByteArray(name + "=\"/a\"\n") << "/a"_q;
    QTest::newRow("last") << QByteArray(name + "=/a\n" + name + "='/b'") << "/b"_q;
    QTest::newRow("comment") << QByteArray("#" + name + "=/a\n") << QString();
}

void CtlReadersTest::findsTheSecondBlacklist()
{
    QFETCH(QByteArray, content);
    QTEST(BlacklistFile::secondPathIn(content), "path");
}

QTEST_GUILESS_MAIN(CtlReadersTest)
#include "tst_ctlreaders.moc"
