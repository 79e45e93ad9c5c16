#include "binder/intentcodec.h"
#include "binder/messages.h"
#include "support/testcase.h"

#include <QtTest>

using Messages::bytes;
using Messages::Received;
using Messages::written;

namespace {

const QString ParcelCategory = QStringLiteral("com.corvo.bramd.parcel");
const QString TooDeep = QStringLiteral("Intent nested too deep, leaving out the rest");

int sdk()
{
    return qEnvironmentVariableIntValue("TEST_SDK_LEVEL");
}

/// Bytes that are there only at levels at which intents have an identifier.
QByteArray identifier(const char *hex)
{
    return sdk() >= 29 ? bytes(hex) : QByteArray();
}

/// What follows an intent's type while nothing but the identifier and the action is set.
QByteArray unsetBehindIdentifier()
{
    return bytes("00000000"   // flags
                 "ffffffff"   // package
                 "ffffffff"   // component
                 "00000000"   // bounds
                 "00000000"   // categories
                 "00000000"   // selector
                 "00000000"   // clip data
                 "feffffff"   // user hint
                 "ffffffff"); // extras
}

QByteArray unsetIntent()
{
    return bytes("ffffffff 00000000 ffffffff") + identifier("ffffffff") + unsetBehindIdentifier();
}

QByteArray intentWithAction(const char *action)
{
    return bytes(action) + bytes("00000000 ffffffff") + identifier("ffffffff") +
           unsetBehindIdentifier();
}

Intent withAction(const QString &action)
{
    Intent intent;
    intent.action = action;
    return intent;
}

Intent chain(int intents)
{
    Intent outermost;
    for (int i = 1; i < intents; ++i) {
        Intent holder;
        holder.selector = std::move(outermost);
        outermost = std::move(holder);
    }
    return outermost;
}

int chainLength(const Intent &intent)
{
    int length = 1;
    for (const Intent *at = &intent; at->selector; at = &*at->selector)
        ++length;
    return length;
}

/// A selector within a selector, clip data with two items, and extras.
Intent fullIntent()
{
    Intent intent;
    intent.action = QStringLiteral("a");
    intent.data = QUrl(QStringLiteral("a:b"));
    intent.type = QStringLiteral("t/x");
    intent.identifier = QStringLiteral("i");
    intent.flags = 0x10000001;
    intent.package = QStringLiteral("p");
    intent.componentPackage = QStringLiteral("c");
    intent.componentClass = QStringLiteral("C");
    intent.sourceBounds = QRect(1, 2, 10, 20);
    intent.categories = QStringList({QStringLiteral("x"), QStringLiteral("y")});
    Intent selector = withAction(QStringLiteral("s"));
    selector.selector = withAction(QStringLiteral("d"));
    intent.selector = selector;
    ClipData clip;
    clip.label = QStringLiteral("l");
    clip.types = QStringList(QStringLiteral("m"));
    clip.date = 5;
    clip.icon = QByteArrayLiteral("\x01\x02\x03\x04\x05");
    ClipDataItem text;
    text.text = QStringLiteral("T");
    text.htmlText = QStringLiteral("H");
    text.intent = withAction(QStringLiteral("n"));
    ClipDataItem link;
    link.uri = QUrl(QStringLiteral("a:b"));
    clip.items = {text, link};
    intent.clipData = clip;
    intent.contentUserHint = 7;
    intent.extras = {{QStringLiteral("k"), QStringLiteral("v")}};
    return intent;
}

QByteArray fullBytes()
{
    return bytes("01000000 61000000"                            // action "a"
                 "01000000 03000000 61003a0062000000"           // data "a:b"
                 "03000000 74002f0078000000") +                 // type "t/x"
           identifier("01000000 69000000") +                    // "i"
           bytes("01000010"                                     // flags
                 "01000000 70000000"                            // package "p"
                 "01000000 63000000 01000000 43000000"          // component "c", "C"
                 "01000000 01000000 02000000 0a000000 15000000" // bounds, edges inclusive
                 "02000000 01000000 78000000 01000000 79000000" // categories
                 "01000000"                                     // selector "s"
                 "01000000 73000000 00000000 ffffffff") +
           identifier("ffffffff") +
           bytes("00000000 ffffffff ffffffff 00000000 00000000"
                 "01000000") + // and its selector "d"
           intentWithAction("01000000 64000000") +
           bytes("00000000 feffffff ffffffff" // the rest of the selector "s"
                 "01000000"                   // clip data
                 "01000000 6c000000"          // label "l"
                 "01000000 01000000 6d000000" // types "m"
                 "04000000 424e444c 00000000" // extras, empty but there
                 "05000000 00000000"          // date
                 "05000000 01020304 05000000" // icon
                 "02000000"                   // items
                 "01000000 54000000"          // "T"
                 "01000000 48000000"          // "H"
                 "01000000") +
           intentWithAction("01000000 6e000000") +
           bytes("00000000"                           // no uri
                 "ffffffff ffffffff 00000000"         // no text, html text, intent
                 "01000000 03000000 61003a0062000000" // uri "a:b"
                 "07000000"                           // user hint
                 "18000000 424e444c 01000000 01000000 6b000000"
                 "00000000 01000000 76000000"); // extras {k: "v"}
}

QByteArray encoded(const Intent &intent)
{
    return written([&](BinderParcel &parcel) { writeIntent(parcel, intent); });
}

} // namespace

class IntentCodecTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void writesAnUnsetIntent();
    void writesAFullIntent();
    void writesEveryKindOfExtra();
    void tellsEmptyStringsFromUnsetOnes();
    void writesNoClassWithoutAComponentPackage_data();
    void writesNoClassWithoutAComponentPackage();
    void writesNoBoundsForAnInvalidRectangle_data();
    void writesNoBoundsForAnInvalidRectangle();
    void writesTheSmallestRectangle();
    void writesUnsetClipData();
    void readsAnUnsetIntent();
    void readsAFullIntentWithoutItems();
    void readsEveryFormOfUri();
    void readsNoBoundsUnlessTheWordIsOne();
    void readsNoSelectorUnlessTheWordIsOne();
    void readsNoClipDataUnlessTheWordIsOne();
    void readsAnItemIntentUnlessTheWordIsMinusOne_data();
    void readsAnItemIntentUnlessTheWordIsMinusOne();
    void takesItsOwnAbsentItemIntentForOneThatFollows();
    void readsNoItemsForCountsBelowOne();
    void readsWhatItWrote();
    void writesUpToTheDepthLimit();
    void leavesOutWhatIsNestedDeeper();
    void countsTheIntentsOfItemsAsDepth();
    void readsUpToTheDepthLimit();
    void readsNoDeeper();
    void survivesEndlessNesting_data();
    void survivesEndlessNesting();
    void survivesItemCountsThatTheMessageCannotHold();
    void survivesTruncation();
    void ownsWhatItHolds();
    void tellsIntentsApart();
};

void IntentCodecTest::writesAnUnsetIntent()
{
    // Spelled out once more, so that the helpers above are held to it.
    const QByteArray expected =
        sdk() < 29 ? bytes("ffffffff 00000000 ffffffff 00000000 ffffffff ffffffff 00000000 "
                           "00000000 00000000 00000000 feffffff ffffffff")
                   : bytes("ffffffff 00000000 ffffffff ffffffff 00000000 ffffffff ffffffff "
                           "00000000 00000000 00000000 00000000 feffffff ffffffff");
    QCOMPARE(encoded(Intent()), expected);
    QCOMPARE(unsetIntent(), expected);
}

void IntentCodecTest::writesAFullIntent()
{
    QCOMPARE(encoded(fullIntent()), fullBytes());
}

void IntentCodecTest::writesEveryKindOfExtra()
{
    const QUrl url(QStringLiteral("a:b"));
    Intent intent;
    intent.extras = {{QStringLiteral("a"), QVariant()},
                     {QStringLiteral("b"), QStringLiteral("v")},
                     {QStringLiteral("c"), -2},
                     {QStringLiteral("d"), url},
                     {QStringLiteral("e"), Q_INT64_C(3)},
                     {QStringLiteral("f"), 1.5},
                     {QStringLiteral("g"), true},
                     {QStringLiteral("h"), QStringList(QStringLiteral("w"))},
                     {QStringLiteral("i"), QVariantList({url})}};

    const QByteArray uri = bytes("0f000000 61006e0064007200 6f00690064002e00 6e00650074002e00 "
                                 "5500720069000000"
                                 "01000000 03000000 61003a0062000000");
    const QByteArray pairs = bytes("09000000"
                                   "01000000 61000000 ffffffff"
                                   "01000000 62000000 00000000 01000000 76000000"
                                   "01000000 63000000 01000000 feffffff"
                                   "01000000 64000000 04000000") +
                             uri +
                             bytes("01000000 65000000 06000000 03000000 00000000"
                                   "01000000 66000000 08000000 00000000 0000f83f"
                                   "01000000 67000000 09000000 01000000"
                                   "01000000 68000000 0e000000 01000000 01000000 77000000"
                                   "01000000 69000000 10000000 01000000") +
                             uri;
    QCOMPARE(pairs.size(), 0x108);
    QByteArray expected = unsetIntent();
    expected.chop(4);
    QCOMPARE(encoded(intent), expected + bytes("08010000 424e444c") + pairs);
}

void IntentCodecTest::tellsEmptyStringsFromUnsetOnes()
{
    QCOMPARE(encoded(withAction(QStringLiteral(""))), intentWithAction("00000000 00000000"));
}

void IntentCodecTest::writesNoClassWithoutAComponentPackage_data()
{
    QTest::addColumn<QString>("package");
    QTest::addColumn<QByteArray>("component");

    QTest::newRow("unset") << QString() << bytes("ffffffff");
    QTest::newRow("empty") << QStringLiteral("") << bytes("00000000 00000000");
}

void IntentCodecTest::writesNoClassWithoutAComponentPackage()
{
    QFETCH(QString, package);
    QFETCH(QByteArray, component);
    Intent intent;
    intent.componentPackage = package;
    intent.componentClass = QStringLiteral("C");

    const QByteArray content = encoded(intent);

    QCOMPARE(content, bytes("ffffffff 00000000 ffffffff") + identifier("ffffffff") +
                          bytes("00000000 ffffffff") + component +
                          bytes("00000000 00000000 00000000 00000000 feffffff ffffffff"));
    Received message(content + bytes("2a000000"));
    const Intent read = readIntent(message.parcel);
    QCOMPARE(read.componentPackage.isNull(), package.isNull());
    QVERIFY(read.componentClass.isNull());
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentCodecTest::writesNoBoundsForAnInvalidRectangle_data()
{
    QTest::addColumn<QRect>("bounds");

    QTest::newRow("right of left") << QRect(QPoint(5, 5), QPoint(4, 9));
    QTest::newRow("bottom above top") << QRect(QPoint(5, 5), QPoint(9, 4));
}

void IntentCodecTest::writesNoBoundsForAnInvalidRectangle()
{
    QFETCH(QRect, bounds);
    Intent intent;
    intent.sourceBounds = bounds;

    QCOMPARE(encoded(intent), unsetIntent());
}

void IntentCodecTest::writesTheSmallestRectangle()
{
    Intent intent;
    intent.sourceBounds = QRect(QPoint(-3, 4), QPoint(-3, 4));

    QCOMPARE(encoded(intent), bytes("ffffffff 00000000 ffffffff") + identifier("ffffffff") +
                                  bytes("00000000 ffffffff ffffffff"
                                        "01000000 fdffffff 04000000 fdffffff 04000000"
                                        "00000000 00000000 00000000 feffffff ffffffff"));
}

void IntentCodecTest::writesUnsetClipData()
{
    const QByteArray content =
        written([](BinderParcel &parcel) { writeClipData(parcel, ClipData()); });

    const QByteArray head = bytes("ffffffff"                   // label
                                  "00000000"                   // types
                                  "04000000 424e444c 00000000" // extras
                                  "00000000 00000000");        // date
    QVERIFY(content.startsWith(head));
    // The icon: no bytes, either way of writing it; then no items.
    QCOMPARE(content.size(), head.size() + 8);
    QVERIFY(content.endsWith(bytes("00000000")));
    QCOMPARE(written([](BinderParcel &parcel) { writeClipDataItem(parcel, ClipDataItem()); }),
             bytes("ffffffff ffffffff 00000000 00000000"));
}

void IntentCodecTest::readsAnUnsetIntent()
{
    Received message(unsetIntent() + bytes("2a000000"));

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

void IntentCodecTest::readsAFullIntentWithoutItems()
{
    Intent expected = fullIntent();
    expected.clipData->items.clear();
    if (sdk() < 29)
        expected.identifier = QString();
    QByteArray content = fullBytes();
    // The two items follow the count, which follows the icon.
    const QByteArray icon = bytes("05000000 01020304 05000000");
    const int count = content.indexOf(icon) + icon.size();
    const int end = content.indexOf(bytes("07000000 18000000"));
    content.replace(count, end - count, bytes("00000000"));
    Received message(content + bytes("2a000000"));

    const Intent intent = readIntent(message.parcel);

    QVERIFY(intent == expected);
    QCOMPARE(intent.selector->selector->action, QStringLiteral("d"));
    QCOMPARE(intent.sourceBounds, QRect(1, 2, 10, 20));
    QCOMPARE(intent.extras, expected.extras);
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentCodecTest::readsEveryFormOfUri()
{
    Received message(bytes("ffffffff"
                           "02000000 01000000 61000000" // opaque, scheme "a"
                           "01000000 01000000 62000000" // encoded part "b"
                           "02000000 ffffffff"          // no fragment
                           "ffffffff") +
                     identifier("ffffffff") + unsetBehindIdentifier() + bytes("2a000000"));

    QCOMPARE(readIntent(message.parcel).data, QUrl(QStringLiteral("a:b")));
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentCodecTest::readsNoBoundsUnlessTheWordIsOne()
{
    Received message(bytes("ffffffff 00000000 ffffffff") + identifier("ffffffff") +
                     bytes("00000000 ffffffff ffffffff 02000000"
                           "00000000 00000000 00000000 feffffff ffffffff 2a000000"));

    QVERIFY(readIntent(message.parcel) == Intent());
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentCodecTest::readsNoSelectorUnlessTheWordIsOne()
{
    Received message(bytes("ffffffff 00000000 ffffffff") + identifier("ffffffff") +
                     bytes("00000000 ffffffff ffffffff 00000000 00000000"
                           "02000000 00000000 feffffff ffffffff 2a000000"));

    QVERIFY(readIntent(message.parcel) == Intent());
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentCodecTest::readsNoClipDataUnlessTheWordIsOne()
{
    Received message(bytes("ffffffff 00000000 ffffffff") + identifier("ffffffff") +
                     bytes("00000000 ffffffff ffffffff 00000000 00000000"
                           "00000000 ffffffff feffffff ffffffff 2a000000"));

    QVERIFY(readIntent(message.parcel) == Intent());
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentCodecTest::readsAnItemIntentUnlessTheWordIsMinusOne_data()
{
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<bool>("follows");

    QTest::newRow("minus one") << bytes("ffffffff") << false;
    QTest::newRow("zero") << bytes("00000000") << true;
    QTest::newRow("one") << bytes("01000000") << true;
    QTest::newRow("another") << bytes("feffffff") << true;
}

void IntentCodecTest::readsAnItemIntentUnlessTheWordIsMinusOne()
{
    QFETCH(QByteArray, word);
    QFETCH(bool, follows);
    Received message(bytes("01000000 54000000 ffffffff") + word +
                     (follows ? intentWithAction("01000000 6e000000") : QByteArray()) +
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

void IntentCodecTest::takesItsOwnAbsentItemIntentForOneThatFollows()
{
    ClipDataItem item;
    item.uri = QUrl(QStringLiteral("a:b"));
    Received message(written([&](BinderParcel &parcel) { writeClipDataItem(parcel, item); }));

    // The runtime's readers know better; ours reads only what the runtime writes.
    QVERIFY(readClipDataItem(message.parcel).intent);
}

void IntentCodecTest::readsNoItemsForCountsBelowOne()
{
    for (const char *count : {"00000000", "ffffffff", "00000080"}) {
        Received message(bytes("01000000 6c000000 00000000 04000000 424e444c 00000000"
                               "05000000 00000000 ffffffff") +
                         bytes(count) + bytes("2a000000"));

        const ClipData clip = readClipData(message.parcel);

        QCOMPARE(clip.label, QStringLiteral("l"));
        QCOMPARE(clip.date, Q_INT64_C(5));
        QVERIFY(clip.items.isEmpty());
        QCOMPARE(message.parcel.readInt32(), 42);
    }
}

void IntentCodecTest::readsWhatItWrote()
{
    Intent intent = fullIntent();
    intent.clipData->items[1].intent = withAction(QStringLiteral("second"));
    intent.clipData->extras = {{QStringLiteral("e"), true}};
    if (sdk() < 29)
        intent.identifier = QString();

    Received message(encoded(intent) + bytes("2a000000"));

    QVERIFY(readIntent(message.parcel) == intent);
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentCodecTest::writesUpToTheDepthLimit()
{
    QByteArray unset = unsetIntent();
    // All of an intent up to the word for its selector, that word, and what follows it.
    const QByteArray tail = bytes("00000000 feffffff ffffffff");
    const QByteArray head = unset.left(unset.size() - tail.size() - 4);

    QCOMPARE(encoded(chain(MaxIntentDepth)),
             (head + bytes("01000000")).repeated(63) + unset + tail.repeated(63));
}

void IntentCodecTest::leavesOutWhatIsNestedDeeper()
{
    QCOMPARE(encoded(chain(MaxIntentDepth + 1)), encoded(chain(MaxIntentDepth)));
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory), QStringList(TooDeep));
    QCOMPARE(encoded(chain(1000)), encoded(chain(MaxIntentDepth)));
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory), QStringList(TooDeep));
}

void IntentCodecTest::countsTheIntentsOfItemsAsDepth()
{
    Intent intent;
    for (int i = 0; i < MaxIntentDepth; ++i) {
        ClipDataItem item;
        item.intent = std::move(intent);
        ClipData clip;
        clip.items.append(item);
        intent = Intent();
        intent.clipData = std::move(clip);
    }

    const QByteArray content = encoded(intent);

    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory), QStringList(TooDeep));
    // The innermost intent that is still written holds clip data whose item has lost its intent.
    ClipData last;
    last.items.append(ClipDataItem());
    const QByteArray rest = written([&](BinderParcel &parcel) { writeClipData(parcel, last); });
    QCOMPARE(content.size(), encoded(*intent.clipData->items[0].intent).size() + rest.size());
}

void IntentCodecTest::readsUpToTheDepthLimit()
{
    Received message(encoded(chain(MaxIntentDepth)) + bytes("2a000000"));

    QCOMPARE(chainLength(readIntent(message.parcel)), MaxIntentDepth);
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentCodecTest::readsNoDeeper()
{
    const QByteArray head = unsetIntent().chopped(16) + bytes("01000000");
    const QByteArray tail = bytes("00000000 feffffff ffffffff");
    Received message(head.repeated(64) + unsetIntent() + tail.repeated(64));

    QCOMPARE(chainLength(readIntent(message.parcel)), MaxIntentDepth);
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory), QStringList(TooDeep));
    QVERIFY(message.parcel.atEnd()); // where anything else lies in it cannot be told any more
}

void IntentCodecTest::survivesEndlessNesting_data()
{
    QTest::addColumn<QByteArray>("level");

    const QByteArray head = unsetIntent().chopped(16);
    QTest::newRow("selectors") << head + bytes("01000000");
    QTest::newRow("items") << head + bytes("00000000 01000000"
                                           "ffffffff 00000000 ffffffff 00000000 00000000 ffffffff"
                                           "01000000 ffffffff ffffffff 01000000");
}

void IntentCodecTest::survivesEndlessNesting()
{
    QFETCH(QByteArray, level);
    Received message(level.repeated(100000 / level.size() * 10));

    readIntent(message.parcel);

    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory), QStringList(TooDeep));
}

void IntentCodecTest::survivesItemCountsThatTheMessageCannotHold()
{
    const QByteArray head = bytes("ffffffff 00000000 ffffffff 00000000 00000000 ffffffff");
    Received message(head + bytes("ffffff7f") + bytes("ffffffff ffffffff ffffffff 00000000"));

    const ClipData clip = readClipData(message.parcel);

    QCOMPARE(clip.items.size(), 1);
    QVERIFY(message.parcel.atEnd());
}

void IntentCodecTest::survivesTruncation()
{
    const QByteArray content = fullBytes();
    for (int size = 0; size < content.size(); size += 4) {
        Received message(content.left(size));
        readIntent(message.parcel);
        QVERIFY(message.parcel.atEnd());
        // What a cut message says about counts and bundles is tested where these are read.
        takeLog(QtCriticalMsg, ParcelCategory);
        takeLog(QtWarningMsg, ParcelCategory);
    }

    Received nothing((QByteArray()));
    const Intent intent = readIntent(nothing.parcel);
    QVERIFY(intent.action.isNull());
    QCOMPARE(intent.flags, -1);
    QVERIFY(!intent.selector);
    QVERIFY(!intent.clipData);
    QCOMPARE(intent.contentUserHint, -1);
}

void IntentCodecTest::ownsWhatItHolds()
{
    Intent original = fullIntent();
    Intent copy = original;

    copy.selector->action = QStringLiteral("changed");
    copy.clipData->items[0].text = QStringLiteral("changed");

    QVERIFY(original == fullIntent());
    original = copy;
    QVERIFY(original == copy);
    QCOMPARE(original.selector->action, QStringLiteral("changed"));
    const Intent moved = std::move(copy);
    QVERIFY(original == moved);
    Intent nested = fullIntent();
    nested = Intent(*nested.selector);
    QCOMPARE(nested.action, QStringLiteral("s"));
}

void IntentCodecTest::tellsIntentsApart()
{
    QVERIFY(fullIntent() == fullIntent());
    Intent other = fullIntent();
    other.selector->selector->action = QStringLiteral("e");
    QVERIFY(!(other == fullIntent()));
    other = fullIntent();
    other.clipData->items.removeLast();
    QVERIFY(!(other == fullIntent()));
    other = fullIntent();
    other.clipData = OwnedValue<ClipData>();
    QVERIFY(!(other == fullIntent()));
}

QTEST_GUILESS_MAIN(IntentCodecTest)
#include "tst_intentcodec.moc"
