#include "launcher/settingsentry.h"
#include "support/hostfiles.h"
#include "support/testcase.h"

#include <QtTest>

#include <optional>

class SettingsEntryTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void writesTheWholeEntry();
    void readsBackWhateverTheNames();
    void leavesAnUnchangedEntryAlone();
    void rewritesAChangedVersion();
    void warnsWhenItCannotWrite_data();
    void warnsWhenItCannotWrite();

private:
    const QString m_desktopFile =
        QStringLiteral("/usr/share/applications/bramd_launcher_a_b-Main.desktop");
    const QString m_path =
        QStringLiteral("/usr/share/corvo-settings/entries/bramd_launcher_a_b-Main.json");
};

void SettingsEntryTest::init()
{
    TestCase::init();
    HostFiles::makeEmptyDirectory(QStringLiteral("/usr/share/corvo-settings/entries"));
}

void SettingsEntryTest::writesTheWholeEntry()
{
    SettingsEntry::write(m_desktopFile, QStringLiteral("a.b"), QStringLiteral("1.0"));

    QCOMPARE(HostFiles::read(m_path), QByteArray(R"({
    "entries": [
        {
            "params": {
                "properties": {
                    "packageName": "a.b",
                    "packageVersion": "1.0"
                },
                "source": "/usr/share/corvo-settings/pages/apk-configuration/apkConfigurationPage.qml"
            },
            "path": "applications/bramd_launcher_a_b-Main.desktop",
            "type": "page"
        }
    ]
}
)"));
    QCOMPARE(HostFiles::mode(m_path), 0644);
}

void SettingsEntryTest::readsBackWhateverTheNames()
{
    const QString version = QStringLiteral("1\"\n\\ \u65E5");
    const QByteArray content =
        SettingsEntry::content(m_desktopFile, QStringLiteral("a.b"), version);

    QCOMPARE(content, QJsonDocument::fromJson(content).toJson());
    const QJsonObject entry = QJsonDocument::fromJson(content)
                                  .object()
                                  .value(QStringLiteral("entries"))
                                  .toArray()
                                  .first()
                                  .toObject();

    const QJsonObject params = entry.value(QStringLiteral("params")).toObject();
    QCOMPARE(params.value(QStringLiteral("properties"))
                 .toObject()
                 .value(QStringLiteral("packageVersion"))
                 .toString(),
             version);
}

void SettingsEntryTest::leavesAnUnchangedEntryAlone()
{
    SettingsEntry::write(m_desktopFile, QStringLiteral("a.b"), QStringLiteral("1.0"));
    const quint64 before = HostFiles::inode(m_path);

    SettingsEntry::write(m_desktopFile, QStringLiteral("a.b"), QStringLiteral("1.0"));

    QCOMPARE(HostFiles::inode(m_path), before);
}

void SettingsEntryTest::rewritesAChangedVersion()
{
    SettingsEntry::write(m_desktopFile, QStringLiteral("a.b"), QStringLiteral("1.0"));

    SettingsEntry::write(m_desktopFile, QStringLiteral("a.b"), QStringLiteral("1.1"));

    QVERIFY(HostFiles::read(m_path).contains("\"packageVersion\": \"1.1\""));
}

void SettingsEntryTest::warnsWhenItCannotWrite_data()
{
    QTest::addColumn<QByteArray>("disk");

    QTest::newRow("read-only") << QByteArray("ro");
    QTest::newRow("missing directory") << QByteArray();
    QTest::newRow("full") << QByteArray("size=16k");
}

void SettingsEntryTest::warnsWhenItCannotWrite()
{
    QFETCH(QByteArray, disk);
    const QString directory = QStringLiteral("/usr/share/corvo-settings/entries");
    std::optional<HostFiles::Mount> mount;
    if (disk == "ro") {
        mount.emplace(HostFiles::Mount::readOnly(directory));
    } else if (disk.isEmpty()) {
        HostFiles::removeAll(directory);
    } else {
        mount.emplace(HostFiles::Mount::memory(directory, disk));
        HostFiles::fillDisk(directory);
    }

    SettingsEntry::write(m_desktopFile, QStringLiteral("a.b"), QStringLiteral("1.0"));

    QCOMPARE(
        takeLog(QtWarningMsg, QStringLiteral("com.corvo.bramd.launcher")),
        QStringList(QStringLiteral("Unable to open json file \"%1\" for writing").arg(m_path)));
    QVERIFY(!QFile::exists(m_path));
}

QTEST_GUILESS_MAIN(SettingsEntryTest)
#include "tst_settingsentry.moc"
