#include "config/runtimetext.h"
#include "launcher/desktopfile.h"
#include "support/hostfiles.h"
#include "support/testcase.h"

#include <QTextCodec>
#include <QtTest>

class DesktopFileTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void readsTheGroup_data();
    void readsTheGroup();
    void isEmptyWithoutAFile();
    void warnsWhenTheFileCannotBeRead();
    void warnsOfAMissingKey();
    void writesKeysInAscendingOrder();
    void keepsForeignKeysAndLaterGroups();
    void writesNothingWithoutAChange();
    void writesWhenAKeyIsRemoved();
    void readsBackWhatItWrote_data();
    void readsBackWhatItWrote();
    void warnsWhenTheFileCannotBeOpened();
    void warnsWhenTheDiskIsFull();

private:
    const QString m_directory = QStringLiteral("/run/files");
    const QString m_path = QStringLiteral("/run/files/a.desktop");
};

void DesktopFileTest::initTestCase()
{
    // Desktop files are in UTF-8 whatever the locale says.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
}

void DesktopFileTest::init()
{
    TestCase::init();
    HostFiles::makeEmptyDirectory(m_directory);
}

void DesktopFileTest::readsTheGroup_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("value");

    const auto row = [](const char *name, const char *content, const char *value) {
        QTest::newRow(name) << QByteArray(content) << QString::fromUtf8(value);
    };
    row("plain", "[Desktop Entry]\nName=a\n", "a");
    row("no last line end", "[Desktop Entry]\nName=a", "a");
    row("carriage returns", "[Desktop Entry]\r\nName=a\r\n", "a");
    row("UTF-8", "[Desktop Entry]\nName=\xE6\x97\xA5\n", "\xE6\x97\xA5");
    row("value with an equals sign", "[Desktop Entry]\nName=a=b=\n", "a=b=");
    row("blanks are part of the value", "[Desktop Entry]\nName= a \n", " a ");
    row("empty value", "[Desktop Entry]\nName=\n", "");
    row("lines before the group are ignored", "Name=b\n# x\n[Desktop Entry]\nName=a\n", "a");
    row("lines without an equals sign are skipped", "[Desktop Entry]\nName\n\nName=a\n# b\n", "a");
    row("later lines win", "[Desktop Entry]\nName=b\nName=a\n", "a");
    row("keys that begin alike", "[Desktop Entry]\nName=a\nNames=b\n Name=c\n", "a");
    row("byte order marks",
        "\xEF\xBB\xBF[Desktop Entry]\nName=b\xEF\xBB\xBF"
        "a\n",
        "b\xEF\xBB\xBF"
        "a");
    row("no UTF-8", "[Desktop Entry]\nName=\xE6\x97\n\xC0=b\nX=\xE6", "\xEF\xBF\xBD\xEF\xBF\xBD");
    QTest::newRow("behind a NUL") << QByteArrayLiteral("[Desktop Entry]\nX=\0\nName=a\n")
                                  << QStringLiteral("a");
    QTest::newRow("with a NUL") << QByteArrayLiteral("[Desktop Entry]\nName=a\0b\n")
                                << QString::fromLatin1("a\0b", 3);
    row("later groups count too", "[Desktop Entry]\nName=b\n[Desktop Action x]\nName=a\n", "a");
}

void DesktopFileTest::readsTheGroup()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, value);
    HostFiles::write(m_path, content);

    const DesktopFile file(m_path);

    QCOMPARE(file.value(QStringLiteral("Name")), value);
    QCOMPARE(DesktopFile::readValue(m_path, "Name"), value);
}

void DesktopFileTest::isEmptyWithoutAFile()
{
    HostFiles::write(m_path, "Name=a\n [Desktop Entry]\nName=b\n[Desktop Entry] \nName=c\n");
    const QStringList paths{QStringLiteral("/run/nowhere"), m_directory, m_path};

    for (const QString &path : paths) {
        QCOMPARE(DesktopFile(path).value(QStringLiteral("Name")), QString());
        QCOMPARE(DesktopFile::readValue(path, "Name"), QString());
        const QString line = QStringLiteral("File \"%1\" does not have key: \"Name\"").arg(path);
        QVERIFY(takeLogLine(QtWarningMsg, line));
        QVERIFY(takeLogLine(QtWarningMsg, line));
    }
}

void DesktopFileTest::warnsWhenTheFileCannotBeRead()
{
    const DesktopFile missing(QStringLiteral("/run/nowhere"));
    const DesktopFile unreadable(m_directory);

    QCOMPARE(takeLog(QtWarningMsg, QStringLiteral("com.corvo.bramd.launcher")),
             QStringList(QStringLiteral("Could not read: \"%1\"").arg(m_directory)));
}

void DesktopFileTest::warnsOfAMissingKey()
{
    HostFiles::write(m_path, "[Desktop Entry]\nName=a\n");

    const DesktopFile file(m_path);

    QCOMPARE(file.value(QStringLiteral("name")), QString());
    QCOMPARE(
        takeLog(QtWarningMsg, QStringLiteral("com.corvo.bramd.launcher")),
        QStringList(QStringLiteral("File \"/run/files/a.desktop\" does not have key: \"name\"")));
}

void DesktopFileTest::writesKeysInAscendingOrder()
{
    {
        DesktopFile file(m_path);
        file.setValue(QStringLiteral("b"), QStringLiteral("2"));
        file.setValue(QStringLiteral("Z"), QStringLiteral("1"));
        file.setValue(QStringLiteral("a"), QString::fromUtf8("\xC3\xA9"));
        QVERIFY(!QFile::exists(m_path));
    }

    QCOMPARE(HostFiles::read(m_path), QByteArray("[Desktop Entry]\nZ=1\na=\xC3\xA9\nb=2\n"));
    QCOMPARE(HostFiles::mode(m_path), 0644);
    QCOMPARE(takeLog(QtDebugMsg, QStringLiteral("com.corvo.bramd.launcher")),
             QStringList(QStringLiteral("Updating: \"/run/files/a.desktop\"")));
}

void DesktopFileTest::keepsForeignKeysAndLaterGroups()
{
    HostFiles::write(m_path, "# head\n[Desktop Entry]\n#c=d\nName=a\nName[fr]=b\n"
                             "[Desktop Action x]\nOther=e=f\n");
    {
        DesktopFile file(m_path);
        file.setValue(QStringLiteral("Name"), QStringLiteral("new"));
    }

    QCOMPARE(HostFiles::read(m_path),
             QByteArray("[Desktop Entry]\n#c=d\nName=new\nName[fr]=b\nOther=e=f\n"));
}

void DesktopFileTest::writesNothingWithoutAChange()
{
    HostFiles::write(m_path, "[Desktop Entry]\nName=a\nEmpty=\nB=order\nA=differs\n");
    const quint64 before = HostFiles::inode(m_path);
    {
        DesktopFile file(m_path);
        file.setValue(QStringLiteral("Name"), QStringLiteral("a"));
        file.setValue(QStringLiteral("Empty"), QString());
        file.remove(QStringLiteral("Missing"));
    }

    QCOMPARE(HostFiles::inode(m_path), before);
    QCOMPARE(takeLog(QtDebugMsg), QStringList());
}

void DesktopFileTest::writesWhenAKeyIsRemoved()
{
    HostFiles::write(m_path, "[Desktop Entry]\nName=a\nType=b\n");
    {
        DesktopFile file(m_path);
        file.remove(QStringLiteral("Name"));
    }

    QCOMPARE(HostFiles::read(m_path), QByteArray("[Desktop Entry]\nType=b\n"));
}

void DesktopFileTest::readsBackWhatItWrote_data()
{
    QTest::addColumn<QString>("value");

    QTest::newRow("nothing") << QString();
    QTest::newRow("blanks") << QStringLiteral("  a  ");
    QTest::newRow("place markers") << QStringLiteral("%1 %2 %U");
    QTest::newRow("backslashes") << QStringLiteral("\\n\\\\");
    QTest::newRow("a group header") << QStringLiteral("[Desktop Entry]");
    QTest::newRow("byte order mark") << QString(QChar(0xFEFF)) + QStringLiteral("a");
    QTest::newRow("noncharacters") << QString(QChar(0xFFFE)) + QChar(0xFFFF);
    QTest::newRow("surrogate pair") << QString::fromUtf8("\xF0\x9F\x98\x80");
    QTest::newRow("half of a pair")
        << RuntimeText::singleLine(QString(QChar(0xD83D)) + QLatin1Char('a'));
    QTest::newRow("long") << QString(100000, QChar(0x65E5));
}

void DesktopFileTest::readsBackWhatItWrote()
{
    QFETCH(QString, value);
    {
        DesktopFile file(m_path);
        file.setValue(QStringLiteral("Name"), value);
    }

    QCOMPARE(DesktopFile(m_path).value(QStringLiteral("Name")), value);
}

void DesktopFileTest::warnsWhenTheFileCannotBeOpened()
{
    {
        DesktopFile file(QStringLiteral("/run/nowhere/a.desktop"));
        file.setValue(QStringLiteral("Name"), QStringLiteral("a"));
    }

    QCOMPARE(takeLog(QtWarningMsg, QStringLiteral("com.corvo.bramd.launcher")),
             QStringList(QStringLiteral("Could not open \"/run/nowhere/a.desktop\" for writing")));
}

void DesktopFileTest::warnsWhenTheDiskIsFull()
{
    const HostFiles::Mount disk = HostFiles::Mount::memory(m_directory, "size=16k");
    HostFiles::write(m_path, "[Desktop Entry]\nName=a\n");
    HostFiles::fillDisk(m_directory);
    {
        DesktopFile file(m_path);
        file.setValue(QStringLiteral("Name"), QStringLiteral("b"));
    }

    QCOMPARE(takeLog(QtWarningMsg, QStringLiteral("com.corvo.bramd.launcher")),
             QStringList(QStringLiteral("Could not write desktop file \"/run/files/a.desktop\"")));
    QCOMPARE(HostFiles::read(m_path), QByteArray("[Desktop Entry]\nName=a\n"));
}

QTEST_GUILESS_MAIN(DesktopFileTest)
#include "tst_desktopfile.moc"
