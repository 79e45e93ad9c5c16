#include "platform/binder/incomingdata.h"
#include "platform/binder/localobject.h"
#include "platform/binder/outgoingdata.h"
#include "platform/binder/reader.h"
#include "platform/binder/remoteobject.h"
#include "platform/binder/writer.h"
#include "support/testcase.h"

#include <QtTest>

#include <functional>
#include <limits>

using namespace Binder;

namespace {

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

QByteArray written(const std::function<void(Writer)> &write)
{
    OutgoingData data;
    write(Writer(&data));
    return data.bytes();
}

QString string16(Reader *reader, bool *read)
{
    const char16_t *units = nullptr;
    int length = -7;
    *read = reader->readString16(&units, &length);
    return units == nullptr ? QString() : QString::fromUtf16(units, length);
}

using Write = std::function<void(Writer)>;

} // namespace

Q_DECLARE_METATYPE(Write)

class TestMessage : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void itemsAreWrittenAsAndroidDoes_data();
    void itemsAreWrittenAsAndroidDoes();
    void readingUndoesWriting();
    void ownObjectsAreListedAndNullObjectsAreNot();
    void aWordCanBeReplacedWithinTheMessage();
    void whatCanNeverBeDeliveredIsNotAppended();

    void anyNonZeroWordIsTrue();
    void nullItemsAreTold();
    void failedReadsConsumeNothing_data();
    void failedReadsConsumeNothing();
    void plainReadsDoNotCrossObjects();
    void unlistedObjectsAreNoObjects();
    void nullObjectsNeedNoListing();
    void objectPositionsAreChecked_data();
    void objectPositionsAreChecked();
    void scatterGatherObjectsAreNotReadAsItems();
};

void TestMessage::itemsAreWrittenAsAndroidDoes_data()
{
    QTest::addColumn<Write>("write");
    QTest::addColumn<QByteArray>("bytes");

    const auto row = [](const char *name, const Write &write, const char *digits) {
        QTest::newRow(name) << write << hex(digits);
    };
    row(
        "int32", [](Writer w) { w.appendInt32(0x01020304); }, "04 03 02 01");
    row(
        "negative int32", [](Writer w) { w.appendInt32(-2); }, "fe ff ff ff");
    row(
        "int64 is not aligned to eight",
        [](Writer w) {
            w.appendInt32(1);
            w.appendInt64(0x0102030405060708);
        },
        "01 00 00 00  08 07 06 05 04 03 02 01");
    row(
        "true", [](Writer w) { w.appendBool(true); }, "01 00 00 00");
    row(
        "false", [](Writer w) { w.appendBool(false); }, "00 00 00 00");
    row(
        "double", [](Writer w) { w.appendDouble(1.5); }, "00 00 00 00 00 00 f8 3f");
    row(
        "null string", [](Writer w) { w.appendString16(nullptr); }, "ff ff ff ff");
    row(
        "null UTF-16 string", [](Writer w) { w.appendString16(nullptr, 3); }, "ff ff ff ff");
    row(
        "empty string", [](Writer w) { w.appendString16(""); }, "00 00 00 00 00 00 00 00");
    row(
        "empty UTF-16 string", [](Writer w) { w.appendString16(u"x", 0); },
        "00 00 00 00 00 00 00 00");
    row(
        "even length", [](Writer w) { w.appendString16("ab"); },
        "02 00 00 00  61 00 62 00 00 00 00 00");
    row(
        "odd length", [](Writer w) { w.appendString16("abc"); },
        "03 00 00 00  61 00 62 00 63 00 00 00");
    row(
        "UTF-8 beyond the first plane is two units",
        [](Writer w) { w.appendString16("\xf0\x9f\x98\x80"); },
        "02 00 00 00  3d d8 00 de 00 00 00 00");
    row(
        "UTF-16 goes as it is, a zero unit too", [](Writer w) { w.appendString16(u"a\0b", 3); },
        "03 00 00 00  61 00 00 00 62 00 00 00");
    row(
        "byte array", [](Writer w) { w.appendByteArray(QByteArray::fromHex("0102030405")); },
        "05 00 00 00  01 02 03 04 05 00 00 00");
    row(
        "full last word", [](Writer w) { w.appendByteArray(QByteArray::fromHex("01020304")); },
        "04 00 00 00  01 02 03 04");
    row(
        "empty byte array", [](Writer w) { w.appendByteArray(QByteArrayLiteral("")); },
        "00 00 00 00");
    row(
        "null byte array", [](Writer w) { w.appendByteArray(QByteArray()); }, "00 00 00 00");
    row(
        "null object", [](Writer w) { w.appendLocalObject(nullptr); },
        "85 2a 62 73  13 01 00 00  0000000000000000  0000000000000000");
}

void TestMessage::itemsAreWrittenAsAndroidDoes()
{
    QFETCH(Write, write);
    QFETCH(QByteArray, bytes);

    QCOMPARE(written(write), bytes);
}

void TestMessage::readingUndoesWriting()
{
    const QByteArray bytes = written([](Writer w) {
        w.appendInt32(std::numeric_limits<qint32>::min());
        w.appendInt64(std::numeric_limits<qint64>::min());
        w.appendDouble(-0.25);
        w.appendBool(true);
        w.appendString16("käse");
        w.appendString16(nullptr);
        w.appendByteArray(QByteArrayLiteral("icon"));
        w.appendLocalObject(nullptr);
    });
    const IncomingData data(bytes);
    Reader reader(&data);

    qint32 word = 0;
    QVERIFY(reader.readInt32(&word));
    QCOMPARE(word, std::numeric_limits<qint32>::min());
    qint64 number = 0;
    QVERIFY(reader.readInt64(&number));
    QCOMPARE(number, std::numeric_limits<qint64>::min());
    double real = 0;
    QVERIFY(reader.readDouble(&real));
    QCOMPARE(real, -0.25);
    bool truth = false;
    QVERIFY(reader.readBool(&truth));
    QVERIFY(truth);
    bool read = false;
    QCOMPARE(string16(&reader, &read), QStringLiteral("käse"));
    QVERIFY(read);
    QVERIFY(string16(&reader, &read).isNull());
    QVERIFY(read);
    const char *content = nullptr;
    int size = 0;
    QVERIFY(reader.readByteArray(&content, &size));
    QCOMPARE(QByteArray(content, size), QByteArrayLiteral("icon"));
    std::shared_ptr<RemoteObject> object;
    QVERIFY(reader.readNullableObject(&object));
    QVERIFY(object == nullptr);
    QVERIFY(reader.atEnd());
    QCOMPARE(reader.bytesRemaining(), std::size_t(0));
}

void TestMessage::ownObjectsAreListedAndNullObjectsAreNot()
{
    OutgoingData data;
    Writer writer(&data);
    writer.appendInt32(1);
    data.appendObject(0);
    data.appendObject(1);

    QCOMPARE(data.objects(), std::vector<quint64>({28}));
    QCOMPARE(data.bytes().mid(28),
             hex("85 2a 62 73  13 01 00 00  0100000000000000  0100000000000000"));
    QCOMPARE(writer.bytesWritten(), std::size_t(52));
}

void TestMessage::aWordCanBeReplacedWithinTheMessage()
{
    OutgoingData data;
    Writer writer(&data);
    writer.appendInt32(1);
    const std::size_t position = writer.bytesWritten();
    writer.appendInt32(2);

    writer.overwriteInt32(position, 9);
    writer.overwriteInt32(position + 1, 8);
    writer.overwriteInt32(std::numeric_limits<std::size_t>::max() - 1, 8);

    QCOMPARE(data.bytes(), hex("01 00 00 00  09 00 00 00"));
}

void TestMessage::whatCanNeverBeDeliveredIsNotAppended()
{
    OutgoingData data;
    Writer writer(&data);
    const QByteArray half(static_cast<int>(OutgoingData::MaxSize / 2), 'x');
    writer.appendByteArray(half);
    QVERIFY(data.isComplete());
    const std::size_t size = data.size();

    writer.appendByteArray(half);
    writer.appendInt32(1);

    QVERIFY(!data.isComplete());
    QCOMPARE(data.size(), size);
}

void TestMessage::anyNonZeroWordIsTrue()
{
    const IncomingData data(hex("00 01 00 00"));
    bool value = false;
    QVERIFY(Reader(&data).readBool(&value));
    QVERIFY(value);
}

void TestMessage::nullItemsAreTold()
{
    const IncomingData data(hex("ff ff ff ff"));
    const char16_t *units = u"";
    int length = 7;
    QVERIFY(Reader(&data).readString16(&units, &length));
    QVERIFY(units == nullptr);
    QCOMPARE(length, 0);
    const char *bytes = "";
    int size = 7;
    QVERIFY(Reader(&data).readByteArray(&bytes, &size));
    QVERIFY(bytes == nullptr);
    QCOMPARE(size, 0);
}

void TestMessage::failedReadsConsumeNothing_data()
{
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("empty") << QByteArray();
    QTest::newRow("half a word") << hex("02 00");
    QTest::newRow("length without content") << hex("01 00 00 00");
    QTest::newRow("content one word short") << hex("05 00 00 00  01 02 03 04");
    QTest::newRow("huge length") << hex("ff ff ff 7f  01 02 03 04");
    QTest::newRow("length whose size wraps in 32 bits") << hex("ff ff ff 3f  01 02 03 04");
    QTest::newRow("negative length") << hex("fe ff ff ff  01 02 03 04");
    QTest::newRow("most negative length") << hex("00 00 00 80  01 02 03 04");
}

void TestMessage::failedReadsConsumeNothing()
{
    QFETCH(QByteArray, bytes);
    const IncomingData data(bytes);
    Reader reader(&data);

    const char16_t *units = u"untouched";
    int length = 42;
    QVERIFY(!reader.readString16(&units, &length));
    QVERIFY(units != nullptr);
    QCOMPARE(length, 42);

    const char *content = "untouched";
    int size = 42;
    QVERIFY(!reader.readByteArray(&content, &size));
    QCOMPARE(content, "untouched");
    QCOMPARE(size, 42);

    std::shared_ptr<RemoteObject> object;
    QVERIFY(!reader.readNullableObject(&object));
    if (bytes.size() < 8) {
        qint64 number = 42;
        QVERIFY(!reader.readInt64(&number));
        QCOMPARE(number, qint64(42));
        double real = 42;
        QVERIFY(!reader.readDouble(&real));
        QCOMPARE(real, 42.0);
    }
    if (bytes.size() < 4) {
        qint32 word = 42;
        QVERIFY(!reader.readInt32(&word));
        QCOMPARE(word, 42);
        bool truth = true;
        QVERIFY(!reader.readBool(&truth));
        QVERIFY(truth);
    }
    QCOMPARE(reader.bytesRemaining(), static_cast<std::size_t>(bytes.size()));
}

void TestMessage::plainReadsDoNotCrossObjects()
{
    OutgoingData out;
    Writer writer(&out);
    writer.appendInt32(20); // as a length it would reach across the object
    out.appendObject(1);
    writer.appendInt32(7);
    const IncomingData data(out.bytes(), out.objects());

    const char *bytes = nullptr;
    int size = 0;
    QVERIFY(!Reader(&data).readByteArray(&bytes, &size));
    qint64 number = 0;
    QVERIFY(!Reader(&data).readInt64(&number));
    for (std::size_t position = 4; position < 28; position += 4) {
        qint32 word = 0;
        QVERIFY(!Reader(&data, position).readInt32(&word));
    }
    qint32 word = 0;
    QVERIFY(Reader(&data, 28).readInt32(&word));
    QCOMPARE(word, 7);
    QVERIFY(Reader(&data, 0).readInt32(&word));
}

void TestMessage::unlistedObjectsAreNoObjects()
{
    OutgoingData out;
    out.appendObject(1);
    const IncomingData data(out.bytes());
    Reader reader(&data);

    std::shared_ptr<RemoteObject> object;
    QVERIFY(!reader.readNullableObject(&object));
    QCOMPARE(reader.bytesRemaining(), std::size_t(24));
}

void TestMessage::nullObjectsNeedNoListing()
{
    OutgoingData out;
    out.appendObject(0);
    const IncomingData data(out.bytes());
    Reader reader(&data);

    std::shared_ptr<RemoteObject> object;
    QVERIFY(reader.readNullableObject(&object));
    QVERIFY(object == nullptr);
    QVERIFY(reader.atEnd());
}

void TestMessage::objectPositionsAreChecked_data()
{
    QTest::addColumn<QVector<quint64>>("claimed");
    QTest::addColumn<QVector<quint64>>("accepted");

    using Positions = QVector<quint64>;
    QTest::newRow("in order") << Positions{0, 24} << Positions{0, 24};
    QTest::newRow("unaligned") << Positions{2} << Positions{};
    QTest::newRow("overlapping") << Positions{0, 20, 24} << Positions{0, 24};
    QTest::newRow("twice") << Positions{24, 24} << Positions{24};
    QTest::newRow("backwards") << Positions{24, 0} << Positions{24};
    QTest::newRow("reaching beyond the end") << Positions{28} << Positions{};
    QTest::newRow("outside") << Positions{48, 4096} << Positions{};
    QTest::newRow("wrapping") << Positions{std::numeric_limits<quint64>::max() - 3} << Positions{};
}

void TestMessage::objectPositionsAreChecked()
{
    QFETCH(QVector<quint64>, claimed);
    QFETCH(QVector<quint64>, accepted);

    const IncomingData data(QByteArray(48, '\0'), {claimed.begin(), claimed.end()});

    QCOMPARE(data.objects(), std::vector<quint64>(accepted.begin(), accepted.end()));
}

void TestMessage::scatterGatherObjectsAreNotReadAsItems()
{
    QByteArray bytes = hex("85 2a 74 70"); // BINDER_TYPE_PTR, forty bytes long
    bytes.append(QByteArray(40, '\0'));
    const IncomingData data(bytes, {0});

    std::shared_ptr<RemoteObject> object;
    QVERIFY(!Reader(&data).readNullableObject(&object));
    qint32 word = 0;
    QVERIFY(!Reader(&data, 36).readInt32(&word));
    QVERIFY(Reader(&data, 40).readInt32(&word));
}

QTEST_GUILESS_MAIN(TestMessage)
#include "test_message.moc"
