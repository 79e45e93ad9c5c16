#include "config/buildproperties.h"
#include "support/testcase.h"

#include <QtTest>

class BuildPropertiesTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheThreeKeys();
    void readsOneLine_data();
    void readsOneLine();
    void keepsWhatTheContentDoesNotName();
    void replacesWhatTheContentNames();
};

void BuildPropertiesTest::readsTheThreeKeys()
{
    const BuildProperties properties = parseBuildProperties("# begin build properties\n"
                                                            "ro.build.id=PQ3A\n"
                                                            "ro.build.version.sdk=28\n"
                                                            "\n"
                                                            "ro.build.version.release=9\n"
                                                            "ro.build.version.security_patch="
                                                            "2021-05-05\n");

    QCOMPARE(properties.sdkVersion, 28);
    QCOMPARE(properties.release, QStringLiteral("9"));
    QCOMPARE(properties.securityPatch, QStringLiteral("2021-05-05"));
}

void BuildPropertiesTest::readsOneLine_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("sdkVersion");
    QTest::addColumn<QString>("release");

    const QString none;
    QTest::newRow("nothing") << QByteArray() << 0 << none;
    QTest::newRow("another level") << QByteArray("ro.build.version.sdk=30\n") << 30 << none;
    QTest::newRow("no line end") << QByteArray("ro.build.version.sdk=30") << 30 << none;
    QTest::newRow("carriage return") << QByteArray("ro.build.version.sdk=30\r\n") << 30 << none;
    QTest::newRow("blanks around the line")
        << QByteArray(" \tro.build.version.sdk=30\t \n") << 30 << none;
    QTest::newRow("blank before the equals sign")
        << QByteArray("ro.build.version.sdk =30\n") << 0 << none;
    QTest::newRow("no number") << QByteArray("ro.build.version.sdk=abc\n") << 0 << none;
    QTest::newRow("hexadecimal") << QByteArray("ro.build.version.sdk=0x1c\n") << 0 << none;
    QTest::newRow("too large") << QByteArray("ro.build.version.sdk=2147483648\n") << 0 << none;
    QTest::newRow("no equals sign") << QByteArray("ro.build.version.sdk\n") << 0 << none;
    QTest::newRow("empty value") << QByteArray("ro.build.version.sdk=\n") << 0 << none;
    QTest::newRow("told by case") << QByteArray("RO.build.version.sdk=30\n") << 0 << none;
    QTest::newRow("comment") << QByteArray("#ro.build.version.sdk=30\n") << 0 << none;
    QTest::newRow("longer key") << QByteArray("ro.build.version.sdk.x=30\n") << 0 << none;
    QTest::newRow("later line wins")
        << QByteArray("ro.build.version.sdk=28\nro.build.version.sdk=29\n") << 29 << none;
    QTest::newRow("later line without a number wins")
        << QByteArray("ro.build.version.sdk=28\nro.build.version.sdk=x\n") << 0 << none;
    QTest::newRow("value cut at a second equals sign")
        << QByteArray("ro.build.version.release=9=10\n") << 0 << QStringLiteral("9");
    QTest::newRow("value in UTF-8")
        << QByteArray("ro.build.version.release=9 \xC3\xA9\n") << 0 << QStringLiteral("9 \u00E9");
    QTest::newRow("bytes that are no text")
        << QByteArray("\xFF\xFE\0\x01=\n=\n==\nro.build.version.sdk=27\n", 35) << 27 << none;
}

void BuildPropertiesTest::readsOneLine()
{
    QFETCH(QByteArray, content);
    QFETCH(int, sdkVersion);
    QFETCH(QString, release);

    const BuildProperties properties = parseBuildProperties(content);

    QCOMPARE(properties.sdkVersion, sdkVersion);
    QCOMPARE(properties.release, release);
    QVERIFY(properties.securityPatch.isEmpty());
}

void BuildPropertiesTest::keepsWhatTheContentDoesNotName()
{
    BuildProperties known;
    known.sdkVersion = 28;
    known.release = QStringLiteral("9");
    known.securityPatch = QStringLiteral("2020-01-01");

    QCOMPARE(parseBuildProperties("ro.build.id=PQ3A\n", known), known);
}

void BuildPropertiesTest::replacesWhatTheContentNames()
{
    BuildProperties known;
    known.sdkVersion = 28;
    known.release = QStringLiteral("9");
    known.securityPatch = QStringLiteral("2020-01-01");

    const BuildProperties properties = parseBuildProperties("ro.build.version.sdk=29\n"
                                                            "ro.build.version.release=10\n",
                                                            known);

    QCOMPARE(properties.sdkVersion, 29);
    QCOMPARE(properties.release, QStringLiteral("10"));
    QCOMPARE(properties.securityPatch, QStringLiteral("2020-01-01"));
}

QTEST_GUILESS_MAIN(BuildPropertiesTest)
#include "tst_buildproperties.moc"
