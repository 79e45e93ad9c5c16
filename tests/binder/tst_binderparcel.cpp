#include "binder/binderparcel.h"
#include "binder/messages.h"
#include "support/testcase.h"

#include <QtTest>

using Messages::bytes;
using Messages::Received;
using Messages::written;

namespace {

const QString ParcelCategory = QStringLiteral("com.corvo.bramd.parcel");

QString unitsOf(std::initializer_list<ushort> units)
{
    return QString::fromUtf16(units.begin(), static_cast<int>(units.size()));
}

} // namespace

class BinderParcelTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void writesNumbers();
    void writesStrings_data();
    void writesStrings();
    void readsStringsBack_data();
    void readsStringsBack();
    void tellsNullFromEmptyStrings();
    void writesStringLists();
    void readsStringLists();
    void readsStringListsThatFillTheMessage();
    void stopsAtAListItemThatCannotBeRead();
    void complainsAFewTimesAboutOneMessage();
    void readsNoStringsForCountsBelowOne_data();
    void readsNoStringsForCountsBelowOne();
    void refusesStringCountsThatTheMessageCannotHold_data();
    void refusesStringCountsThatTheMessageCannotHold();
    void writesByteArrays_data();
    void writesByteArrays();
    void readsByteArraysAndLogsTheirSize();
    void writesTheNullObject();
    void readsTheNullObjectAsNone();
    void readsWhatItWrote();
    void readsAnyNonZeroWordAsTrue();
    void readsDefaultsWithoutAReader();
    void readsDefaultsAtTheEndWithoutAMessage();
    void skipsWritesWithoutAWriter();
    void reportsAFailedInt32();
    void readsDefaultsFromShortItems();
    void refusesLengthsThatTheMessageCannotHold_data();
    void refusesLengthsThatTheMessageCannotHold();
    void readsOnWhereTheReaderItWasGivenStands();
};

void BinderParcelTest::writesNumbers()
{
    QCOMPARE(written([](BinderParcel &parcel) { parcel.writeInt32(-2); }), bytes("feffffff"));
    QCOMPARE(written([](BinderParcel &parcel) { parcel.writeInt64(0x0102030405060708); }),
             bytes("08070605 04030201"));
    QCOMPARE(written([](BinderParcel &parcel) { parcel.writeBool(true); }), bytes("01000000"));
    QCOMPARE(written([](BinderParcel &parcel) { parcel.writeBool(false); }), bytes("00000000"));
    QCOMPARE(written([](BinderParcel &parcel) { parcel.writeDouble(1.5); }),
             bytes("00000000 0000f83f"));
}

void BinderParcelTest::writesStrings_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("content");

    QTest::newRow("null is length -1 alone") << QString() << bytes("ffffffff");
    QTest::newRow("empty has a terminator") << QStringLiteral("") << bytes("00000000 00000000");
    QTest::newRow("odd length fills the word with its terminator")
        << QStringLiteral("a") << bytes("01000000 61000000");
    QTest::newRow("even length is padded")
        << QStringLiteral("ab") << bytes("02000000 61006200 00000000");
    QTest::newRow("not ASCII") << unitsOf({0xe4, 0x20ac}) << bytes("02000000 e400ac20 00000000");
    QTest::newRow("a surrogate pair counts as two")
        << unitsOf({0xd83d, 0xde00}) << bytes("02000000 3dd800de 00000000");
    QTest::newRow("a lone surrogate is kept") << unitsOf({0xd83d}) << bytes("01000000 3dd80000");
    QTest::newRow("a zero unit is kept")
        << unitsOf({0x61, 0, 0x62}) << bytes("03000000 61000000 62000000");
}

void BinderParcelTest::writesStrings()
{
    QFETCH(QString, text);
    QTEST(written([&](BinderParcel &parcel) { parcel.writeString(text); }), "content");
}

void BinderParcelTest::readsStringsBack_data()
{
    writesStrings_data();
}

void BinderParcelTest::readsStringsBack()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, text);

    Received message(content + bytes("2a000000"));

    const QString read = message.parcel.readString();
    QCOMPARE(read, text);
    QCOMPARE(read.isNull(), text.isNull());
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelTest::tellsNullFromEmptyStrings()
{
    Received message(bytes("ffffffff 00000000 00000000"));

    QVERIFY(message.parcel.readString().isNull());

    const QString empty = message.parcel.readString();
    QVERIFY(empty.isEmpty());
    QVERIFY(!empty.isNull());
}

void BinderParcelTest::writesStringLists()
{
    QCOMPARE(written([](BinderParcel &parcel) { parcel.writeStringList({}); }), bytes("00000000"));
    QCOMPARE(written([](BinderParcel &parcel) {
                 parcel.writeStringList({QStringLiteral("a"), QString(), QStringLiteral("b")});
             }),
             bytes("03000000 01000000 61000000 ffffffff 01000000 62000000"));
}

void BinderParcelTest::readsStringLists()
{
    Received message(bytes("03000000 01000000 61000000 ffffffff 01000000 62000000 2a000000"));

    const QStringList texts = message.parcel.readStringList();

    QCOMPARE(texts, QStringList({QStringLiteral("a"), QString(), QStringLiteral("b")}));
    QVERIFY(texts.at(1).isNull());
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelTest::readsStringListsThatFillTheMessage()
{
    Received message(bytes("02000000 ffffffff ffffffff"));

    QCOMPARE(message.parcel.readStringList(), QStringList({QString(), QString()}));
    QCOMPARE(message.parcel.bytesRemaining(), std::size_t(0));
}

void BinderParcelTest::stopsAtAListItemThatCannotBeRead()
{
    Received message(bytes("03000000 00000000 00000000 feffffff 2a000000"));

    QCOMPARE(message.parcel.readStringList(), QStringList({QStringLiteral(""), QString()}));
    QCOMPARE(message.parcel.readInt32(), -2);
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelTest::complainsAFewTimesAboutOneMessage()
{
    QByteArray content;
    for (int i = 0; i < 1000; ++i)
        content += bytes("ffffff7f");
    Received message(content);

    for (int i = 0; i < 1000; ++i)
        message.parcel.readStringList();

    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory).size(), BinderParcel::MaxComplaints);
    QCOMPARE(takeLog(QtWarningMsg, ParcelCategory),
             QStringList(QStringLiteral("More is wrong with this message, which is not logged")));
}

void BinderParcelTest::readsNoStringsForCountsBelowOne_data()
{
    QTest::addColumn<QByteArray>("count");

    QTest::newRow("0") << bytes("00000000");
    QTest::newRow("-1, the null list") << bytes("ffffffff");
    QTest::newRow("the lowest number") << bytes("00000080");
}

void BinderParcelTest::readsNoStringsForCountsBelowOne()
{
    QFETCH(QByteArray, count);
    Received message(count + bytes("01000000 61000000"));

    QCOMPARE(message.parcel.readStringList(), QStringList());
    QCOMPARE(message.parcel.readString(), QStringLiteral("a"));
}

void BinderParcelTest::refusesStringCountsThatTheMessageCannotHold_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("line");

    QTest::newRow("one too many") << bytes("03000000 ffffffff ffffffff")
                                  << QStringLiteral("Count is larger than the message: 3");
    QTest::newRow("the highest number")
        << bytes("ffffff7f ffffffff ffffffff")
        << QStringLiteral("Count is larger than the message: 2147483647");
    QTest::newRow("nothing follows")
        << bytes("01000000") << QStringLiteral("Count is larger than the message: 1");
}

void BinderParcelTest::refusesStringCountsThatTheMessageCannotHold()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, line);
    Received message(content);

    QCOMPARE(message.parcel.readStringList(), QStringList());
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory), QStringList(line));
}

void BinderParcelTest::writesByteArrays_data()
{
    QTest::addColumn<QByteArray>("array");
    QTest::addColumn<QByteArray>("content");

    QTest::newRow("null") << QByteArray() << bytes("00000000");
    QTest::newRow("empty") << QByteArray("") << bytes("00000000");
    QTest::newRow("padded") << bytes("0102030405") << bytes("05000000 01020304 05000000");
    QTest::newRow("needs no padding") << bytes("01020304") << bytes("04000000 01020304");
}

void BinderParcelTest::writesByteArrays()
{
    QFETCH(QByteArray, array);
    QTEST(written([&](BinderParcel &parcel) { parcel.writeByteArray(array); }), "content");
}

void BinderParcelTest::readsByteArraysAndLogsTheirSize()
{
    Received message(bytes("05000000 01020304 05000000 ffffffff 2a000000"));

    QCOMPARE(message.parcel.readByteArray(), bytes("0102030405"));
    QCOMPARE(message.parcel.readByteArray(), QByteArray());
    QCOMPARE(message.parcel.readInt32(), 42);
    QCOMPARE(takeLog(QtDebugMsg, ParcelCategory),
             QStringList({QStringLiteral("ByteArray size read:  5"),
                          QStringLiteral("ByteArray size read:  0")}));
}

void BinderParcelTest::writesTheNullObject()
{
    QCOMPARE(written([](BinderParcel &parcel) { parcel.writeLocalObject(nullptr); }),
             bytes("852a6273 13010000 0000000000000000 0000000000000000"));
}

void BinderParcelTest::readsTheNullObjectAsNone()
{
    Received message(bytes("852a6273 13010000 0000000000000000 0000000000000000 2a000000"));

    QVERIFY(message.parcel.readNullableObject() == nullptr);
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelTest::readsWhatItWrote()
{
    const QStringList texts = {QStringLiteral("x"), QStringLiteral("")};
    Received message(written([&](BinderParcel &parcel) {
        parcel.writeInt32(std::numeric_limits<int>::min());
        parcel.writeInt64(std::numeric_limits<qlonglong>::min());
        parcel.writeBool(true);
        parcel.writeDouble(-0.1);
        parcel.writeString(QStringLiteral("text"));
        parcel.writeStringList(texts);
        parcel.writeByteArray("abc");
        parcel.writeLocalObject(nullptr);
    }));

    QCOMPARE(message.parcel.readInt32(), std::numeric_limits<int>::min());
    QCOMPARE(message.parcel.readInt64(), std::numeric_limits<qlonglong>::min());
    QCOMPARE(message.parcel.readBool(), true);
    QCOMPARE(message.parcel.readDouble(), -0.1);
    QCOMPARE(message.parcel.readString(), QStringLiteral("text"));
    QCOMPARE(message.parcel.readStringList(), texts);
    QCOMPARE(message.parcel.readByteArray(), QByteArray("abc"));
    QVERIFY(message.parcel.readNullableObject() == nullptr);
    QVERIFY(message.reply.reader().bytesRemaining() > 0);
    QCOMPARE(message.parcel.readInt32(), -1); // at the end
}

void BinderParcelTest::readsAnyNonZeroWordAsTrue()
{
    Received message(bytes("02000000 ffffffff 00000000"));

    QCOMPARE(message.parcel.readBool(), true);
    QCOMPARE(message.parcel.readBool(), true);
    QCOMPARE(message.parcel.readBool(), false);
}

void BinderParcelTest::readsDefaultsWithoutAReader()
{
    BinderParcel parcel;

    QCOMPARE(parcel.readInt32(), -1);
    QCOMPARE(parcel.readInt64(), -1);
    QCOMPARE(parcel.readBool(), false);
    QCOMPARE(parcel.readDouble(), -1.0);
    QVERIFY(parcel.readString().isNull());
    QCOMPARE(parcel.readStringList(), QStringList());
    QCOMPARE(parcel.readByteArray(), QByteArray());
    QVERIFY(parcel.readNullableObject() == nullptr);
    QCOMPARE(parcel.readUri(), QUrl());
    QCOMPARE(parcel.readBundle(), QVariantMap());
    QCOMPARE(parcel.readMap(), QVariantMap());
    QVERIFY(!parcel.readValue().isValid());
    QCOMPARE(log().size(), 0);
}

void BinderParcelTest::readsDefaultsAtTheEndWithoutAMessage()
{
    Received message(bytes("2a000000"));
    QCOMPARE(message.parcel.readInt32(), 42);

    QCOMPARE(message.parcel.readInt32(), -1);
    QCOMPARE(message.parcel.readInt64(), -1);
    QCOMPARE(message.parcel.readBool(), false);
    QCOMPARE(message.parcel.readDouble(), -1.0);
    QVERIFY(message.parcel.readString().isNull());
    QCOMPARE(message.parcel.readStringList(), QStringList());
    QCOMPARE(message.parcel.readByteArray(), QByteArray());
    QVERIFY(message.parcel.readNullableObject() == nullptr);
    QCOMPARE(message.parcel.readUri(), QUrl());
    QCOMPARE(message.parcel.readBundle(), QVariantMap());
    QCOMPARE(message.parcel.readMap(), QVariantMap());
    QVERIFY(!message.parcel.readValue().isValid());
    QCOMPARE(log().size(), 0);
}

void BinderParcelTest::skipsWritesWithoutAWriter()
{
    Received message(bytes("2a000000"));

    message.parcel.writeInt32(1);
    message.parcel.writeInt64(1);
    message.parcel.writeBool(true);
    message.parcel.writeDouble(1);
    message.parcel.writeString(QStringLiteral("a"));
    message.parcel.writeStringList({QStringLiteral("a")});
    message.parcel.writeByteArray("a");
    message.parcel.writeLocalObject(nullptr);
    message.parcel.writeUri(QUrl(QStringLiteral("a:b")));
    message.parcel.writeBundle({{QStringLiteral("a"), 1}});
    message.parcel.writeValue(QVariant::fromValue(1.0F));

    QCOMPARE(log().size(), 0);
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelTest::reportsAFailedInt32()
{
    Received message(bytes("0102"));

    QCOMPARE(message.parcel.readInt32(), -1);
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory),
             QStringList(QStringLiteral("Couldn't read result")));
}

void BinderParcelTest::readsDefaultsFromShortItems()
{
    Received message(bytes("01000000"));

    QCOMPARE(message.parcel.readInt64(), -1);
    QCOMPARE(message.parcel.readDouble(), -1.0);
    QVERIFY(message.parcel.readString().isNull());
    QVERIFY(message.parcel.readNullableObject() == nullptr);
    QCOMPARE(message.parcel.readInt32(), 1); // nothing was consumed
}

void BinderParcelTest::refusesLengthsThatTheMessageCannotHold_data()
{
    QTest::addColumn<QByteArray>("length");

    QTest::newRow("more than follows") << bytes("09000000");
    QTest::newRow("the highest number") << bytes("ffffff7f");
    QTest::newRow("negative, but not null") << bytes("feffffff");
    QTest::newRow("the lowest number") << bytes("00000080");
}

void BinderParcelTest::refusesLengthsThatTheMessageCannotHold()
{
    QFETCH(QByteArray, length);
    Received message(length + bytes("61006200 63000000"));

    QVERIFY(message.parcel.readString().isNull());
    QCOMPARE(message.parcel.readByteArray(), QByteArray());
    QCOMPARE(takeLog(QtDebugMsg), QStringList(QStringLiteral("ByteArray size read:  0")));
}

void BinderParcelTest::readsOnWhereTheReaderItWasGivenStands()
{
    const Binder::IncomingData data(bytes("01000000 02000000"));
    Binder::Reader reader(&data);
    qint32 first = 0;
    QVERIFY(reader.readInt32(&first));

    BinderParcel parcel(reader);

    QCOMPARE(parcel.readInt32(), 2);
}

QTEST_GUILESS_MAIN(BinderParcelTest)
#include "tst_binderparcel.moc"
