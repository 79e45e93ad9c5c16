#include "runtime/interfacetoken.h"
#include "support/testcase.h"

#include <QtTest>

using namespace SimRuntime;

class InterfaceTokenTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void hasTheLayoutOfTheLevel_data();
    void hasTheLayoutOfTheLevel();
    void isNotReadInTheOtherLayout_data();
    void isNotReadInTheOtherLayout();
};

void InterfaceTokenTest::hasTheLayoutOfTheLevel_data()
{
    QTest::addColumn<int>("sdk");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("27") << 27 << QByteArrayLiteral("0000400001000000") + "61000000";
    QTest::newRow("28") << 28 << QByteArrayLiteral("0000400001000000") + "61000000";
    QTest::newRow("29") << 29 << QByteArrayLiteral("00000080ffffffff01000000") + "61000000";
    QTest::newRow("30") << 30 << QByteArrayLiteral("00000080ffffffff01000000") + "61000000";
}

void InterfaceTokenTest::hasTheLayoutOfTheLevel()
{
    QFETCH(int, sdk);
    QFETCH(QByteArray, bytes);

    ParcelWriter writer;
    writeInterfaceToken(&writer, QStringLiteral("a"), sdk);

    QCOMPARE(writer.parcel().data.toHex(), bytes);
    ParcelReader reader(writer.parcel());
    QCOMPARE(readInterfaceToken(&reader, sdk), QStringLiteral("a"));
    QCOMPARE(reader.remaining(), 0);
}

void InterfaceTokenTest::isNotReadInTheOtherLayout_data()
{
    QTest::addColumn<int>("written");
    QTest::addColumn<int>("read");
    QTest::newRow("one word read as two") << 28 << 29;
    QTest::newRow("two words read as one") << 29 << 28;
}

void InterfaceTokenTest::isNotReadInTheOtherLayout()
{
    QFETCH(int, written);
    QFETCH(int, read);

    ParcelWriter writer;
    writeInterfaceToken(&writer, QStringLiteral("android.os.IServiceManager"), written);

    ParcelReader reader(writer.parcel());
    QVERIFY(readInterfaceToken(&reader, read) != QStringLiteral("android.os.IServiceManager"));
}

QTEST_GUILESS_MAIN(InterfaceTokenTest)
#include "tst_interfacetoken.moc"
