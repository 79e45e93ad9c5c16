#include "binder/binderparcel.h"
#include "binder/messages.h"
#include "support/testcase.h"

#include <QtTest>

using Messages::bytes;
using Messages::Received;
using Messages::written;

namespace {

const QString ParcelCategory = QStringLiteral("com.corvo.bramd.parcel");

// The string16 "android.net.Uri", and the Uri "a:b".
const char ClassName[] = "0f000000 61006e0064007200 6f00690064002e00 6e00650074002e00 "
                         "5500720069000000";
const char Uri[] = "01000000 03000000 61003a0062000000";

} // namespace

class BinderParcelBundleTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void writesValues_data();
    void writesValues();
    void readsValues_data();
    void readsValues();
    void writesNothingForUnsupportedTypes_data();
    void writesNothingForUnsupportedTypes();
    void skipsElementsThatAreNoUriButCountsThem();
    void writesAnEmptyBundle();
    void writesPairsInKeyOrder();
    void countsItsLengthFromBehindTheMagic();
    void leavesTheKeyOfAnUnsupportedValue();
    void readsAnEmptyBundle();
    void readsTheNullBundle();
    void readsPairsAndLogsThem();
    void keepsTheLaterOfEqualKeys();
    void stopsAtAUri();
    void stopsAtUnsupportedTags_data();
    void stopsAtUnsupportedTags();
    void refusesOtherMagicNumbers_data();
    void refusesOtherMagicNumbers();
    void warnsBeyondTheStatedLengthAndGoesOn();
    void goesOnBeyondTheEndOfTheMessage();
    void readsNoMillionPairsBeyondTheEnd();
    void readsNoMillionItemsOfAMillionLists();
    void complainsAFewTimesAboutOneList();
    void acceptsALengthBeyondTheMessage();
    void refusesCountsThatTheMessageCannotHold();
    void readsNoPairsForCountsBelowOne();
    void readsMaps();
    void refusesMapCountsThatTheMessageCannotHold();
    void readsWhatItWrote();
};

void BinderParcelBundleTest::writesValues_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QByteArray>("content");

    const QUrl url(QStringLiteral("a:b"));
    QTest::newRow("invalid") << QVariant() << bytes("ffffffff");
    QTest::newRow("null string") << QVariant(QString()) << bytes("ffffffff");
    QTest::newRow("null integer") << QVariant(QVariant::Int) << bytes("ffffffff");
    QTest::newRow("null of an unsupported type")
        << QVariant(QVariant::ByteArray) << bytes("ffffffff");
    QTest::newRow("string") << QVariant(QStringLiteral("a")) << bytes("00000000 01000000 61000000");
    QTest::newRow("empty string") << QVariant(QStringLiteral(""))
                                  << bytes("00000000 00000000 00000000");
    QTest::newRow("int") << QVariant(-2) << bytes("01000000 feffffff");
    QTest::newRow("uint keeps its bits") << QVariant(0xfffffffeU) << bytes("01000000 feffffff");
    QTest::newRow("Uri") << QVariant(url) << bytes("04000000") + bytes(ClassName) + bytes(Uri);
    QTest::newRow("empty Uri") << QVariant(QUrl())
                               << bytes("04000000") + bytes(ClassName) + bytes("00000000");
    QTest::newRow("qlonglong") << QVariant(Q_INT64_C(-2)) << bytes("06000000 feffffff ffffffff");
    QTest::newRow("qulonglong keeps its bits")
        << QVariant(Q_UINT64_C(0xfffffffffffffffe)) << bytes("06000000 feffffff ffffffff");
    QTest::newRow("double") << QVariant(1.5) << bytes("08000000 00000000 0000f83f");
    QTest::newRow("true") << QVariant(true) << bytes("09000000 01000000");
    QTest::newRow("false") << QVariant(false) << bytes("09000000 00000000");
    QTest::newRow("string list") << QVariant(
                                        QStringList({QStringLiteral("a"), QStringLiteral("b")}))
                                 << bytes("0e000000 02000000 01000000 61000000 01000000 62000000");
    QTest::newRow("Uri list") << QVariant(QVariantList({url, url}))
                              << bytes("10000000 02000000") + bytes(ClassName) + bytes(Uri) +
                                     bytes(ClassName) + bytes(Uri);
    QTest::newRow("empty list") << QVariant(QVariantList()) << bytes("10000000 00000000");
}

void BinderParcelBundleTest::writesValues()
{
    QFETCH(QVariant, value);
    QTEST(written([&](BinderParcel &parcel) { parcel.writeValue(value); }), "content");
}

void BinderParcelBundleTest::readsValues_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QVariant>("value");

    QTest::newRow("null") << bytes("ffffffff") << QVariant();
    QTest::newRow("string") << bytes("00000000 01000000 61000000") << QVariant(QStringLiteral("a"));
    QTest::newRow("integer") << bytes("01000000 feffffff") << QVariant(-2);
    QTest::newRow("long") << bytes("06000000 feffffff ffffffff") << QVariant(Q_INT64_C(-2));
    QTest::newRow("double") << bytes("08000000 00000000 0000f83f") << QVariant(1.5);
    QTest::newRow("boolean") << bytes("09000000 05000000") << QVariant(true);
    QTest::newRow("string array") << bytes("0e000000 01000000 01000000 61000000")
                                  << QVariant(QStringList(QStringLiteral("a")));
}

void BinderParcelBundleTest::readsValues()
{
    QFETCH(QByteArray, content);
    QFETCH(QVariant, value);
    Received message(content + bytes("2a000000"));

    const QVariant read = message.parcel.readValue();

    QCOMPARE(read, value);
    QCOMPARE(read.userType(), value.userType());
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelBundleTest::writesNothingForUnsupportedTypes_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("line");

    QTest::newRow("nested map") << QVariant(QVariantMap({{QStringLiteral("a"), 1}}))
                                << QStringLiteral("Unsupported write bundle type! QVariantMap");
    QTest::newRow("byte array") << QVariant(QByteArray("a"))
                                << QStringLiteral("Unsupported write bundle type! QByteArray");
    QTest::newRow("float") << QVariant(1.5F)
                           << QStringLiteral("Unsupported write bundle type! float");
}

void BinderParcelBundleTest::writesNothingForUnsupportedTypes()
{
    QFETCH(QVariant, value);
    QFETCH(QString, line);

    QCOMPARE(written([&](BinderParcel &parcel) { parcel.writeValue(value); }), QByteArray());
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory), QStringList(line));
}

void BinderParcelBundleTest::skipsElementsThatAreNoUriButCountsThem()
{
    const QUrl url(QStringLiteral("a:b"));
    const QVariantList list = {url, QStringLiteral("text"), url};

    QCOMPARE(written([&](BinderParcel &parcel) { parcel.writeValue(list); }),
             bytes("10000000 03000000") + bytes(ClassName) + bytes(Uri) + bytes(ClassName) +
                 bytes(Uri));
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory),
             QStringList(QStringLiteral("Unsupported parcelable type! QVariantList")));
}

void BinderParcelBundleTest::writesAnEmptyBundle()
{
    QCOMPARE(written([](BinderParcel &parcel) { parcel.writeBundle({}); }),
             bytes("04000000 424e444c 00000000"));
}

void BinderParcelBundleTest::writesPairsInKeyOrder()
{
    const QVariantMap map = {{QStringLiteral("b"), true}, {QStringLiteral("a"), 7}};

    QCOMPARE(written([&](BinderParcel &parcel) { parcel.writeBundle(map); }),
             bytes("24000000 424e444c 02000000"
                   "01000000 61000000 01000000 07000000"
                   "01000000 62000000 09000000 01000000"));
}

void BinderParcelBundleTest::countsItsLengthFromBehindTheMagic()
{
    QCOMPARE(written([](BinderParcel &parcel) {
                 parcel.writeInt32(42);
                 parcel.writeBundle({{QStringLiteral("k"), QStringLiteral("v")}});
                 parcel.writeInt32(43);
             }),
             bytes("2a000000"
                   "18000000 424e444c 01000000 01000000 6b000000 00000000 01000000 76000000"
                   "2b000000"));
}

void BinderParcelBundleTest::leavesTheKeyOfAnUnsupportedValue()
{
    const QVariantMap map = {{QStringLiteral("a"), QByteArray("x")}};

    QCOMPARE(written([&](BinderParcel &parcel) { parcel.writeBundle(map); }),
             bytes("0c000000 424e444c 01000000 01000000 61000000"));
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory),
             QStringList(QStringLiteral("Unsupported write bundle type! QByteArray")));
}

void BinderParcelBundleTest::readsAnEmptyBundle()
{
    Received message(bytes("04000000 424e444c 00000000 2a000000"));

    QCOMPARE(message.parcel.readBundle(), QVariantMap());
    QCOMPARE(takeLog(QtDebugMsg, ParcelCategory), QStringList(QStringLiteral("Bundle size:  0")));
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelBundleTest::readsTheNullBundle()
{
    Received message(bytes("ffffffff 2a000000"));

    QCOMPARE(message.parcel.readBundle(), QVariantMap());
    QCOMPARE(takeLog(QtDebugMsg, ParcelCategory), QStringList(QStringLiteral("Null bundle")));
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelBundleTest::readsPairsAndLogsThem()
{
    Received message(bytes("24000000 424e444c 02000000"
                           "01000000 6b000000 00000000 01000000 76000000"
                           "01000000 6e000000 ffffffff"
                           "2a000000"));

    const QVariantMap expected = {{QStringLiteral("k"), QStringLiteral("v")},
                                  {QStringLiteral("n"), QVariant()}};
    QCOMPARE(message.parcel.readBundle(), expected);
    QCOMPARE(takeLog(QtDebugMsg, ParcelCategory),
             QStringList({QStringLiteral("Bundle size:  2"),
                          QStringLiteral("Key:  \"k\" Value:  QVariant(QString, \"v\")"),
                          QStringLiteral("Key:  \"n\" Value:  QVariant(Invalid)")}));
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelBundleTest::keepsTheLaterOfEqualKeys()
{
    Received message(bytes("24000000 424e444c 02000000"
                           "01000000 6b000000 01000000 01000000"
                           "01000000 6b000000 01000000 02000000"));

    const QVariantMap expected = {{QStringLiteral("k"), 2}};
    QCOMPARE(message.parcel.readBundle(), expected);
}

void BinderParcelBundleTest::stopsAtAUri()
{
    Received message(written([](BinderParcel &parcel) {
        parcel.writeBundle({{QStringLiteral("u"), QUrl(QStringLiteral("a:b"))}});
    }));

    const QVariantMap expected = {{QStringLiteral("u"), QVariant()}};
    QCOMPARE(message.parcel.readBundle(), expected);
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory),
             QStringList(QStringLiteral("Unsupported read bundle type! 4")));
    QCOMPARE(message.parcel.readString(), QStringLiteral("android.net.Uri"));
}

void BinderParcelBundleTest::stopsAtUnsupportedTags_data()
{
    QTest::addColumn<int>("tag");

    for (const int tag : {-2, 2, 3, 4, 5, 7, 10, 11, 12, 13, 15, 16, 17})
        QTest::addRow("%d", tag) << tag;
}

void BinderParcelBundleTest::stopsAtUnsupportedTags()
{
    QFETCH(int, tag);
    Received message(written([tag](BinderParcel &parcel) {
        parcel.writeInt32(tag);
        parcel.writeInt32(42);
    }));

    QVERIFY(!message.parcel.readValue().isValid());
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory),
             QStringList(QStringLiteral("Unsupported read bundle type! %1").arg(tag)));
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelBundleTest::refusesOtherMagicNumbers_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QString>("line");

    QTest::newRow("native form") << bytes("04000000 424e444e")
                                 << QStringLiteral("\"Bad bundle magic number 0x1313099330\"");
    QTest::newRow("big-endian") << bytes("04000000 4c444e42")
                                << QStringLiteral("\"Bad bundle magic number 0x1112425548\"");
    QTest::newRow("negative") << bytes("04000000 feffffff")
                              << QStringLiteral("\"Bad bundle magic number 0x-2\"");
    QTest::newRow("length 0, where Android leaves the magic out")
        << bytes("00000000 07000000") << QStringLiteral("\"Bad bundle magic number 0x7\"");
}

void BinderParcelBundleTest::refusesOtherMagicNumbers()
{
    QFETCH(QByteArray, head);
    QFETCH(QString, line);
    Received message(head + bytes("2a000000"));

    QCOMPARE(message.parcel.readBundle(), QVariantMap());
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory), QStringList(line));
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelBundleTest::warnsBeyondTheStatedLengthAndGoesOn()
{
    Received message(bytes("14000000 424e444c 02000000"
                           "01000000 61000000 01000000 01000000"
                           "01000000 62000000 01000000 02000000"));

    const QVariantMap expected = {{QStringLiteral("a"), 1}, {QStringLiteral("b"), 2}};
    QCOMPARE(message.parcel.readBundle(), expected);
    QCOMPARE(takeLog(QtWarningMsg, ParcelCategory), QStringList(QStringLiteral("Bundle too big")));
}

void BinderParcelBundleTest::goesOnBeyondTheEndOfTheMessage()
{
    Received message(bytes("14000000 424e444c 03000000 01000000 61000000 01000000 01000000"));

    const QVariantMap expected = {{QStringLiteral("a"), 1}, {QString(), QVariant()}};
    QCOMPARE(message.parcel.readBundle(), expected);
    QCOMPARE(takeLog(QtWarningMsg, ParcelCategory),
             QStringList({QStringLiteral("Bundle too big"), QStringLiteral("Bundle too big")}));
}

void BinderParcelBundleTest::readsNoMillionPairsBeyondTheEnd()
{
    // One pair and then strings, which are no values: 400,000 pairs are promised, 100,000 read.
    QByteArray content = bytes("14000000 424e444c 801a0600 01000000 61000000 01000000 01000000");
    content += bytes("ffffffff 04000000 ffffffff ffffffff").repeated(100000);
    Received message(content);

    const QVariantMap expected = {{QStringLiteral("a"), 1}, {QString(), QVariant()}};
    QCOMPARE(message.parcel.readBundle(), expected);
    QVERIFY(takeLog(QtDebugMsg, ParcelCategory).size() < 201000);
    const int complaints = takeLog(QtWarningMsg, ParcelCategory).size() +
                           takeLog(QtCriticalMsg, ParcelCategory).size();
    QCOMPARE(complaints, BinderParcel::MaxComplaints + 1);
}

void BinderParcelBundleTest::readsNoMillionItemsOfAMillionLists()
{
    // Each list promises all that is left of the message, and has an item that cannot be read.
    QByteArray content = bytes("00000000 424e444c 400d0300");
    for (int pair = 0; pair < 200000; ++pair) {
        const int left = (200000 - pair) * 4 - 4;
        content += bytes("ffffffff 0e000000") +
                   QByteArray(reinterpret_cast<const char *>(&left), sizeof left) +
                   bytes("feffffff");
    }
    Received message(content);

    const QVariantMap values = message.parcel.readBundle();
    QCOMPARE(values.size(), 1);
    takeLog(QtWarningMsg, ParcelCategory);
    takeLog(QtCriticalMsg, ParcelCategory);
}

void BinderParcelBundleTest::complainsAFewTimesAboutOneList()
{
    QVariantList list;
    for (int i = 0; i < 1000; ++i)
        list.append(i);

    QCOMPARE(written([&](BinderParcel &parcel) { parcel.writeValue(list); }),
             bytes("10000000 e8030000"));
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory).size(), BinderParcel::MaxComplaints);
    QCOMPARE(takeLog(QtWarningMsg, ParcelCategory).size(), 1);
}

void BinderParcelBundleTest::acceptsALengthBeyondTheMessage()
{
    Received message(bytes("ffffff7f 424e444c 01000000 01000000 61000000 01000000 01000000"));

    const QVariantMap expected = {{QStringLiteral("a"), 1}};
    QCOMPARE(message.parcel.readBundle(), expected);
}

void BinderParcelBundleTest::refusesCountsThatTheMessageCannotHold()
{
    Received message(bytes("0c000000 424e444c ffffff7f 01000000 61000000"));

    QCOMPARE(message.parcel.readBundle(), QVariantMap());
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory),
             QStringList(QStringLiteral("Count is larger than the message: 2147483647")));
}

void BinderParcelBundleTest::readsNoPairsForCountsBelowOne()
{
    Received message(bytes("04000000 424e444c feffffff 2a000000"));

    QCOMPARE(message.parcel.readBundle(), QVariantMap());
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelBundleTest::readsMaps()
{
    Received message(bytes("01000000 01000000 6b000000 01000000 07000000"
                           "00000000 ffffffff 2a000000"));

    const QVariantMap expected = {{QStringLiteral("k"), 7}};
    QCOMPARE(message.parcel.readMap(), expected);
    QCOMPARE(takeLog(QtDebugMsg, ParcelCategory),
             QStringList(QStringLiteral("Key:  \"k\" Value:  QVariant(int, 7)")));
    QCOMPARE(message.parcel.readMap(), QVariantMap());
    QCOMPARE(message.parcel.readMap(), QVariantMap());
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelBundleTest::refusesMapCountsThatTheMessageCannotHold()
{
    Received message(bytes("03000000 01000000 6b000000"));

    QCOMPARE(message.parcel.readMap(), QVariantMap());
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory),
             QStringList(QStringLiteral("Count is larger than the message: 3")));
}

void BinderParcelBundleTest::readsWhatItWrote()
{
    const QVariantMap map = {
        {QStringLiteral("text"), QStringLiteral("v")},
        {QStringLiteral("int"), 1},
        {QStringLiteral("long"), Q_INT64_C(1)},
        {QStringLiteral("double"), 0.5},
        {QStringLiteral("bool"), true},
        {QStringLiteral("null"), QVariant()},
        {QStringLiteral("list"), QStringList({QStringLiteral("a"), QStringLiteral("")})},
    };

    Received message(written([&](BinderParcel &parcel) {
        parcel.writeBundle(map);
        parcel.writeInt32(42);
    }));

    QCOMPARE(message.parcel.readBundle(), map);
    QCOMPARE(message.parcel.readInt32(), 42);
}

QTEST_GUILESS_MAIN(BinderParcelBundleTest)
#include "tst_binderparcelbundle.moc"
