#include "platform/binder/client.h"
#include "platform/binder/incomingdata.h"
#include "platform/binder/interfacetoken.h"
#include "platform/binder/message.h"
#include "platform/binder/outgoingdata.h"
#include "platform/binder/sdklevel.h"
#include "support/testcase.h"

#include <QtTest>

using namespace Binder;

namespace {

const QByteArray Descriptor = QByteArrayLiteral("android.content.pm.IPackageManager");

const QByteArray OneWord = QByteArrayLiteral("00004000");
const QByteArray TwoWords = QByteArrayLiteral("00000080ffffffff");
const QByteArray DescriptorHex =
    QByteArrayLiteral("22000000"
                      "61006e00640072006f00690064002e0063006f006e00740065006e007400"
                      "2e0070006d002e0049005000610063006b006100670065004d0061006e0061006700"
                      "650072000000"
                      "0000");

QByteArray token(int level)
{
    OutgoingData data;
    InterfaceToken::write(Writer(&data), Descriptor, level);
    return data.bytes();
}

} // namespace

class TestInterfaceToken : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void theLayoutFollowsTheLevel_data();
    void theLayoutFollowsTheLevel();
    void bothLayoutsAreRead_data();
    void bothLayoutsAreRead();
    void otherDescriptorsAreTold();
    void shortRequestsHaveNoToken_data();
    void shortRequestsHaveNoToken();
    void theLevelIsAskedAnew();
};

void TestInterfaceToken::theLayoutFollowsTheLevel_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QByteArray>("words");

    QTest::newRow("unknown") << 0 << OneWord;
    QTest::newRow("27") << 27 << OneWord;
    QTest::newRow("28") << 28 << OneWord;
    QTest::newRow("29") << 29 << TwoWords;
    QTest::newRow("30") << 30 << TwoWords;
}

void TestInterfaceToken::theLayoutFollowsTheLevel()
{
    QFETCH(int, level);
    QFETCH(QByteArray, words);

    QCOMPARE(token(level).toHex(), words + DescriptorHex);
}

void TestInterfaceToken::bothLayoutsAreRead_data()
{
    QTest::addColumn<QByteArray>("words");
    QTest::addColumn<int>("payload");

    QTest::newRow("native, one word") << OneWord << 80;
    QTest::newRow("native, two words") << TwoWords << 84;
    QTest::newRow("no policy") << QByteArray("00000000") << 80;
    QTest::newRow("all policies") << QByteArray("ffffffff") << 80;
    QTest::newRow("a work source that looks like a length") << QByteArray("0000000002000000") << 84;
}

void TestInterfaceToken::bothLayoutsAreRead()
{
    QFETCH(QByteArray, words);
    QFETCH(int, payload);
    const IncomingData data(QByteArray::fromHex(words + DescriptorHex + "07000000"));

    const InterfaceToken::Found found = InterfaceToken::read(data, Descriptor);

    QCOMPARE(found.descriptor, Descriptor);
    QCOMPARE(found.payload, static_cast<std::size_t>(payload));
}

void TestInterfaceToken::otherDescriptorsAreTold()
{
    for (const int level : {28, 29}) {
        auto data = std::make_unique<IncomingData>(token(level) + QByteArray(4, '\x01'));
        const IncomingRequest request(std::move(data), QByteArrayLiteral("other.IThing"));

        QCOMPARE(request.interfaceToken(), Descriptor);
        qint32 word = 0;
        QVERIFY(request.reader().readInt32(&word));
        QCOMPARE(word, 0x01010101);
    }
}

void TestInterfaceToken::shortRequestsHaveNoToken_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("empty") << QByteArray();
    QTest::newRow("a word") << QByteArray::fromHex("00000000");
    QTest::newRow("null descriptor") << QByteArray::fromHex("00000000ffffffff");
    QTest::newRow("cut off") << token(28).chopped(4);
    QTest::newRow("huge length") << QByteArray::fromHex("00000000ffffff7f61006e00");
}

void TestInterfaceToken::shortRequestsHaveNoToken()
{
    QFETCH(QByteArray, bytes);
    const IncomingRequest request(std::make_unique<IncomingData>(bytes), Descriptor);

    QVERIFY(request.interfaceToken().isNull());
    QCOMPARE(request.reader().bytesRemaining(), static_cast<std::size_t>(bytes.size()));
}

void TestInterfaceToken::theLevelIsAskedAnew()
{
    QCOMPARE(sdkLevel(), 0);
    int level = 28;
    setSdkLevelSource([&level] { return level; });
    QCOMPARE(sdkLevel(), 28);
    level = 29;
    QCOMPARE(sdkLevel(), 29);
    setSdkLevelSource(nullptr);
    QCOMPARE(sdkLevel(), 0);
}

QTEST_GUILESS_MAIN(TestInterfaceToken)
#include "test_interfacetoken.moc"
