#include "binder/sampleintents.h"
#include "support/testcase.h"

#include <QtTest>

using Messages::bytes;
using Messages::Received;
using Messages::written;
using SampleIntents::encoded;
using SampleIntents::fullBytes;
using SampleIntents::fullIntent;
using SampleIntents::identifier;
using SampleIntents::intentBytes;
using SampleIntents::unsetIntentBytes;
using SampleIntents::withAction;

namespace {

/// What readers make of the full intent: at levels without identifiers it has none.
Intent readableIntent()
{
    Intent intent = fullIntent();
    if (SampleIntents::sdk() < 29)
        intent.identifier = QString();
    return intent;
}

} // namespace

class IntentReadingTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void readsAnUnsetIntent();
    void readsAFullIntentWithoutItems();
    void readsEveryFormOfUri_data();
    void readsEveryFormOfUri();
    void readsNoBoundsUnlessTheWordIsOne();
    void readsNoSelectorUnlessTheWordIsOne();
    void readsNoClipDataUnlessTheWordIsOne();
    void readsAnItemIntentUnlessTheWordIsMinusOne_data();
    void readsAnItemIntentUnlessTheWordIsMinusOne();
    void takesItsOwnAbsentItemIntentForOneThatFollows();
    void readsNoItemsForCountsBelowOne_data();
    void readsNoItemsForCountsBelowOne();
    void readsWhatItWrote();
    void readsNoMoreItemsThanTheMessageHolds();
    void readsNoItemsWhereNothingCanBeRead_data();
    void readsNoItemsWhereNothingCanBeRead();
    void readsDefaultsWithoutAMessage();
    void survivesACutAtEveryByte();
};

void IntentReadingTest::readsAnUnsetIntent()
{
    Received message(unsetIntentBytes() + bytes("2a000000"));

    const Intent intent = readIntent(message.parcel);

    QVERIFY(intent == Intent());
    QVERIFY(intent.action.isNull());
    QVERIFY(intent.type.isNull());
    QVERIFY(intent.identifier.isNull());
    QVERIFY(intent.package.isNull());
    QVERIFY(intent.componentPackage.isNull());
    QVERIFY(!intent.sourceBounds.isValid());
    QCOMPARE(intent.contentUserHint, -2);
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentReadingTest::readsAFullIntentWithoutItems()
{
    Intent expected = readableIntent();
    expected.clipData->items.clear();
    Received message(SampleIntents::fullBytesBeforeItems() + bytes("00000000") +
                     SampleIntents::userHintBytes() + SampleIntents::extrasBytes() +
                     bytes("2a000000"));

    const Intent intent = readIntent(message.parcel);

    QVERIFY(intent == expected);
    QCOMPARE(intent.selector->selector->action, QStringLiteral("d"));
    QCOMPARE(intent.sourceBounds, QRect(1, 2, 10, 20));
    QCOMPARE(intent.extras, expected.extras);
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentReadingTest::readsEveryFormOfUri_data()
{
    QTest::addColumn<QByteArray>("form");
    QTest::addColumn<QUrl>("data");

    QTest::newRow("null") << bytes("00000000") << QUrl();
    QTest::newRow("string") << bytes("01000000 03000000 61003a0062000000")
                            << QUrl(QStringLiteral("a:b"));
    QTest::newRow("opaque") << bytes("02000000 01000000 61000000" // scheme "a"
                                     "01000000 01000000 62000000" // encoded part "b"
                                     "02000000 ffffffff")         // no fragment
                            << QUrl(QStringLiteral("a:b"));
    QTest::newRow("hierarchical") << bytes("03000000 01000000 61000000"         // scheme "a"
                                           "01000000 01000000 68000000"         // authority "h"
                                           "01000000 02000000 2f00700000000000" // path "/p"
                                           "01000000 01000000 71000000"         // query "q"
                                           "02000000 ffffffff")                 // no fragment
                                  << QUrl(QStringLiteral("a://h/p?q"));
}

void IntentReadingTest::readsEveryFormOfUri()
{
    QFETCH(QByteArray, form);
    QFETCH(QUrl, data);
    const QByteArray rest = unsetIntentBytes().mid(8); // behind action and data
    Received message(bytes("ffffffff") + form + rest + bytes("2a000000"));

    QCOMPARE(readIntent(message.parcel).data, data);
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentReadingTest::readsNoBoundsUnlessTheWordIsOne()
{
    Received message(bytes("ffffffff 00000000 ffffffff") + identifier("ffffffff") +
                     bytes("00000000 ffffffff ffffffff 02000000"
                           "00000000 00000000 00000000 feffffff ffffffff 2a000000"));

    QVERIFY(readIntent(message.parcel) == Intent());
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentReadingTest::readsNoSelectorUnlessTheWordIsOne()
{
    Received message(bytes("ffffffff 00000000 ffffffff") + identifier("ffffffff") +
                     bytes("00000000 ffffffff ffffffff 00000000 00000000"
                           "02000000 00000000 feffffff ffffffff 2a000000"));

    QVERIFY(readIntent(message.parcel) == Intent());
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentReadingTest::readsNoClipDataUnlessTheWordIsOne()
{
    Received message(bytes("ffffffff 00000000 ffffffff") + identifier("ffffffff") +
                     bytes("00000000 ffffffff ffffffff 00000000 00000000"
                           "00000000 ffffffff feffffff ffffffff 2a000000"));

    QVERIFY(readIntent(message.parcel) == Intent());
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentReadingTest::readsAnItemIntentUnlessTheWordIsMinusOne_data()
{
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<bool>("follows");

    QTest::newRow("minus one") << bytes("ffffffff") << false;
    QTest::newRow("zero") << bytes("00000000") << true;
    QTest::newRow("one") << bytes("01000000") << true;
    QTest::newRow("another") << bytes("feffffff") << true;
}

void IntentReadingTest::readsAnItemIntentUnlessTheWordIsMinusOne()
{
    QFETCH(QByteArray, word);
    QFETCH(bool, follows);
    Received message(bytes("01000000 54000000 ffffffff") + word +
                     (follows ? intentBytes("01000000 6e000000 00000000 ffffffff") : QByteArray()) +
                     bytes("01000000 03000000 61003a0062000000 2a000000"));

    const ClipDataItem item = readClipDataItem(message.parcel);

    QCOMPARE(item.text, QStringLiteral("T"));
    QVERIFY(item.htmlText.isNull());
    QCOMPARE(bool(item.intent), follows);
    if (follows)
        QCOMPARE(item.intent->action, QStringLiteral("n"));
    QCOMPARE(item.uri, QUrl(QStringLiteral("a:b")));
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentReadingTest::takesItsOwnAbsentItemIntentForOneThatFollows()
{
    ClipDataItem item;
    item.uri = QUrl(QStringLiteral("a:b"));
    Received message(written([&](BinderParcel &parcel) { writeClipDataItem(parcel, item); }));

    // The runtime's readers know better; ours reads only what the runtime writes.
    QVERIFY(readClipDataItem(message.parcel).intent);
}

void IntentReadingTest::readsNoItemsForCountsBelowOne_data()
{
    QTest::addColumn<QByteArray>("count");

    QTest::newRow("0") << bytes("00000000");
    QTest::newRow("-1") << bytes("ffffffff");
    QTest::newRow("the lowest number") << bytes("00000080");
}

void IntentReadingTest::readsNoItemsForCountsBelowOne()
{
    QFETCH(QByteArray, count);
    Received message(bytes("01000000 6c000000 00000000 04000000 424e444c 00000000"
                           "05000000 00000000 ffffffff") +
                     count + bytes("2a000000"));

    const ClipData clip = readClipData(message.parcel);

    QCOMPARE(clip.label, QStringLiteral("l"));
    QCOMPARE(clip.date, Q_INT64_C(5));
    QVERIFY(clip.items.isEmpty());
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentReadingTest::readsWhatItWrote()
{
    Intent intent = readableIntent();
    intent.clipData->items[1].intent = withAction(QStringLiteral("second"));
    intent.clipData->extras = {{QStringLiteral("e"), true}};

    Received message(encoded(intent) + bytes("2a000000"));

    QVERIFY(readIntent(message.parcel) == intent);
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentReadingTest::readsNoMoreItemsThanTheMessageHolds()
{
    const QByteArray head = bytes("ffffffff 00000000 ffffffff 00000000 00000000 ffffffff");
    Received message(head + bytes("ffffff7f") + bytes("ffffffff ffffffff ffffffff 00000000"));

    const ClipData clip = readClipData(message.parcel);

    QCOMPARE(clip.items.size(), 1);
    QCOMPARE(message.parcel.bytesRemaining(), std::size_t(0));
}

void IntentReadingTest::readsNoItemsWhereNothingCanBeRead_data()
{
    QTest::addColumn<QByteArray>("rest");
    QTest::addColumn<bool>("isObject");

    QTest::newRow("less than a word") << bytes("0000") << false;
    QTest::newRow("an object") << bytes("852a6273 13010000 0100000000000000 0100000000000000")
                               << true;
}

void IntentReadingTest::readsNoItemsWhereNothingCanBeRead()
{
    QFETCH(QByteArray, rest);
    QFETCH(bool, isObject);
    const QByteArray head = bytes("ffffffff 00000000 ffffffff 00000000 00000000 ffffffff ffffff7f");
    const Binder::IncomingReply reply(std::make_unique<Binder::IncomingData>(
        head + rest,
        isObject ? std::vector<quint64>{quint64(head.size())} : std::vector<quint64>()));
    BinderParcel parcel(reply);

    const ClipData clip = readClipData(parcel);

    QVERIFY(clip.items.isEmpty());
    const QString line = QStringLiteral("Couldn't read result");
    // One item was tried: the word for its intent and the one for its uri.
    QCOMPARE(takeLog(QtCriticalMsg), QStringList({line, line}));
}

void IntentReadingTest::readsDefaultsWithoutAMessage()
{
    BinderParcel nothing;

    const Intent intent = readIntent(nothing);

    QVERIFY(intent.action.isNull());
    QCOMPARE(intent.flags, -1);
    QVERIFY(!intent.selector);
    QVERIFY(!intent.clipData);
    QCOMPARE(intent.contentUserHint, -1);
}

void IntentReadingTest::survivesACutAtEveryByte()
{
    Intent whole = readableIntent();
    whole.clipData->items[1].intent = withAction(QStringLiteral("second"));
    const QByteArray content = encoded(whole);
    for (int size = 0; size < content.size(); ++size) {
        Received message(content.left(size));

        QVERIFY(!(readIntent(message.parcel) == whole));

        // What a cut message says about counts and bundles is tested where these are read.
        takeLog(QtCriticalMsg, QStringLiteral("com.corvo.bramd.parcel"));
        takeLog(QtWarningMsg, QStringLiteral("com.corvo.bramd.parcel"));
    }
}

QTEST_GUILESS_MAIN(IntentReadingTest)
#include "tst_intentreading.moc"
