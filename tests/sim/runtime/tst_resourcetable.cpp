#include "runtime/resourcetable.h"
#include "support/testcase.h"

#include <QtTest>

using namespace SimRuntime;

namespace {

// As printed by aapt, shortened.
const char Dump[] =
    R"(Package Groups (1)
Package Group 0 id=0x7f packageCount=1 name=org.example.t
  Package 0 id=0x7f name=org.example.t
    type 1 configCount=2 entryCount=3
      spec resource 0x7f020000 org.example.t:string/name: flags=0x00000004
      config (default):
        resource 0x7f020000 org.example.t:string/name: t=0x03 d=0x00000000 (s=0x0008 r=0x00)
)"
    "          (string16) \"It's \\\"q\\\" \\nnext\\\\\"\n"
    R"(        resource 0x7f020001 org.example.t:string/alias: t=0x01 d=0x7f020000 (s=0x0008 r=0x00)
          (reference) 0x7f020000
        resource 0x7f020002 org.example.t:string/loop: t=0x01 d=0x7f020002 (s=0x0008 r=0x00)
          (reference) 0x7f020002
        resource 0x7f010000 org.example.t:attr/alpha: <bag>
      config de:
        resource 0x7f020000 org.example.t:string/name: t=0x03 d=0x00000001 (s=0x0008 r=0x00)
          (string8) "Auf Deutsch"
        resource 0x7f020003 org.example.t:string/german: t=0x03 d=0x00000001 (s=0x0008 r=0x00)
          (string8) "Nur deutsch"
    type 2 configCount=1 entryCount=2
      config (default):
        resource 0x7f030000 org.example.t:bool/off: t=0x12 d=0x00000000 (s=0x0008 r=0x00)
          (color) #00000000
        resource 0x7f030001 org.example.t:bool/on: t=0x12 d=0xffffffff (s=0x0008 r=0x00)
          (color) #ffffffff
    type 3 configCount=4 entryCount=1
      config mdpi-v4:
        resource 0x7f040000 org.example.t:mipmap/icon: t=0x03 d=0x00000001 (s=0x0008 r=0x00)
          (string8) "res/mdpi.png"
      config xxhdpi-v4:
        resource 0x7f040000 org.example.t:mipmap/icon: t=0x03 d=0x00000003 (s=0x0008 r=0x00)
          (string8) "res/xxhdpi.png"
      config hdpi-v4:
        resource 0x7f040000 org.example.t:mipmap/icon: t=0x03 d=0x00000002 (s=0x0008 r=0x00)
          (string8) "res/hdpi.png"
      config anydpi-v26:
        resource 0x7f040000 org.example.t:mipmap/icon: t=0x03 d=0x00000004 (s=0x0008 r=0x00)
          (string8) "res/any.xml"
)";

} // namespace

class ResourceTableTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void findsTexts_data();
    void findsTexts();
    void findsTruthValues();
    void sortsFilesByDensity();
    void knowsDensities_data();
    void knowsDensities();
};

void ResourceTableTest::findsTexts_data()
{
    QTest::addColumn<quint32>("resource");
    QTest::addColumn<QString>("text");
    QTest::newRow("default language, escapes undone")
        << 0x7f020000U << QStringLiteral("It's \"q\" \nnext\\");
    QTest::newRow("through a reference") << 0x7f020001U << QStringLiteral("It's \"q\" \nnext\\");
    QTest::newRow("a reference to itself") << 0x7f020002U << QString();
    QTest::newRow("only in another language") << 0x7f020003U << QStringLiteral("Nur deutsch");
    QTest::newRow("a structure") << 0x7f010000U << QString();
    QTest::newRow("not there") << 0x7f029999U << QString();
}

void ResourceTableTest::findsTexts()
{
    QFETCH(quint32, resource);
    QFETCH(QString, text);

    QCOMPARE(ResourceTable::parse(Dump).text(resource), text);
}

void ResourceTableTest::findsTruthValues()
{
    const ResourceTable table = ResourceTable::parse(Dump);

    QCOMPARE(table.boolean(0x7f030000).value_or(true), false);
    QCOMPARE(table.boolean(0x7f030001).value_or(false), true);
    QVERIFY(!table.boolean(0x7f039999));
}

void ResourceTableTest::sortsFilesByDensity()
{
    QCOMPARE(ResourceTable::parse(Dump).filesByDensity(0x7f040000),
             (QStringList{QStringLiteral("res/xxhdpi.png"), QStringLiteral("res/hdpi.png"),
                          QStringLiteral("res/mdpi.png"), QStringLiteral("res/any.xml")}));
}

void ResourceTableTest::knowsDensities_data()
{
    QTest::addColumn<QByteArray>("configuration");
    QTest::addColumn<int>("density");
    QTest::newRow("default") << QByteArray("(default)") << 160;
    QTest::newRow("low") << QByteArray("ldpi") << 120;
    QTest::newRow("highest") << QByteArray("xxxhdpi-v4") << 640;
    QTest::newRow("with a language") << QByteArray("de-xhdpi") << 320;
    QTest::newRow("a number") << QByteArray("560dpi-v4") << 560;
    QTest::newRow("none") << QByteArray("nodpi") << 160;
    QTest::newRow("any") << QByteArray("anydpi-v26") << 160;
}

void ResourceTableTest::knowsDensities()
{
    QFETCH(QByteArray, configuration);
    QFETCH(int, density);

    QCOMPARE(densityOf(configuration), density);
}

QTEST_GUILESS_MAIN(ResourceTableTest)
#include "tst_resourcetable.moc"
