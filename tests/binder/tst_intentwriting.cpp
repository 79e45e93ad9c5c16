#include "binder/sampleintents.h"
#include "support/testcase.h"

#include <QtTest>

using Messages::bytes;
using Messages::Received;
using Messages::written;
using SampleIntents::encoded;
using SampleIntents::extrasPairBytes;
using SampleIntents::fullBytes;
using SampleIntents::fullIntent;
using SampleIntents::identifier;
using SampleIntents::intentBytes;
using SampleIntents::unsetIntentBytes;

class IntentWritingTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void writesAnUnsetIntent();
    void writesAFullIntent();
    void writesExtrasThatAreNotReadBack();
    void tellsEmptyStringsFromUnsetOnes();
    void writesNoClassWithoutAComponentPackage_data();
    void writesNoClassWithoutAComponentPackage();
    void writesNoBoundsForAnInvalidRectangle_data();
    void writesNoBoundsForAnInvalidRectangle();
    void writesTheSmallestRectangle();
    void writesUnsetClipData();
};

void IntentWritingTest::writesAnUnsetIntent()
{
    // Spelled out once more, so that the helpers are held to it.
    const QByteArray expected =
        SampleIntents::sdk() < 29
            ? bytes("ffffffff 00000000 ffffffff 00000000 ffffffff ffffffff 00000000 "
                    "00000000 00000000 00000000 feffffff ffffffff")
            : bytes("ffffffff 00000000 ffffffff ffffffff 00000000 ffffffff ffffffff "
                    "00000000 00000000 00000000 00000000 feffffff ffffffff");
    QCOMPARE(encoded(Intent()), expected);
    QCOMPARE(unsetIntentBytes(), expected);
}

void IntentWritingTest::writesAFullIntent()
{
    QCOMPARE(encoded(fullIntent()), fullBytes());
}

void IntentWritingTest::writesExtrasThatAreNotReadBack()
{
    const QUrl url(QStringLiteral("a:b"));
    Intent intent;
    intent.extras = SampleIntents::extras();
    intent.extras.insert(QStringLiteral("h"), url);
    intent.extras.insert(QStringLiteral("i"), QVariantList({url}));
    intent.extras.insert(QStringLiteral("j"), 0xfffffffeU);
    intent.extras.insert(QStringLiteral("k"), Q_UINT64_C(0xfffffffffffffffe));

    const QByteArray uri = bytes("0f000000 61006e0064007200 6f00690064002e00 6e00650074002e00 "
                                 "5500720069000000"
                                 "01000000 03000000 61003a0062000000");
    const QByteArray pairs = bytes("0b000000") + extrasPairBytes() +
                             bytes("01000000 68000000 04000000") + uri +
                             bytes("01000000 69000000 10000000 01000000") + uri +
                             bytes("01000000 6a000000 01000000 feffffff"
                                   "01000000 6b000000 06000000 feffffff ffffffff");
    QCOMPARE(pairs.size(), 0x12c);
    QCOMPARE(encoded(intent), unsetIntentBytes().chopped(4) + bytes("2c010000 424e444c") + pairs);
}

void IntentWritingTest::tellsEmptyStringsFromUnsetOnes()
{
    const QString empty = QStringLiteral("");
    Intent intent;
    intent.action = empty;
    intent.type = empty;
    intent.identifier = empty;
    intent.package = empty;

    QCOMPARE(encoded(intent), bytes("00000000 00000000 00000000 00000000 00000000") +
                                  identifier("00000000 00000000") +
                                  bytes("00000000 00000000 00000000 ffffffff 00000000 00000000"
                                        "00000000 00000000 feffffff ffffffff"));
}

void IntentWritingTest::writesNoClassWithoutAComponentPackage_data()
{
    QTest::addColumn<QString>("package");
    QTest::addColumn<QByteArray>("component");

    QTest::newRow("unset") << QString() << bytes("ffffffff");
    QTest::newRow("empty") << QStringLiteral("") << bytes("00000000 00000000");
}

void IntentWritingTest::writesNoClassWithoutAComponentPackage()
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

void IntentWritingTest::writesNoBoundsForAnInvalidRectangle_data()
{
    QTest::addColumn<QRect>("bounds");

    QTest::newRow("right of left") << QRect(QPoint(5, 5), QPoint(4, 9));
    QTest::newRow("bottom above top") << QRect(QPoint(5, 5), QPoint(9, 4));
}

void IntentWritingTest::writesNoBoundsForAnInvalidRectangle()
{
    QFETCH(QRect, bounds);
    Intent intent;
    intent.sourceBounds = bounds;

    QCOMPARE(encoded(intent), unsetIntentBytes());
}

void IntentWritingTest::writesTheSmallestRectangle()
{
    Intent intent;
    intent.sourceBounds = QRect(QPoint(-3, 4), QPoint(-3, 4));

    QCOMPARE(encoded(intent), bytes("ffffffff 00000000 ffffffff") + identifier("ffffffff") +
                                  bytes("00000000 ffffffff ffffffff"
                                        "01000000 fdffffff 04000000 fdffffff 04000000"
                                        "00000000 00000000 00000000 feffffff ffffffff"));
}

void IntentWritingTest::writesUnsetClipData()
{
    QCOMPARE(written([](BinderParcel &parcel) { writeClipData(parcel, ClipData()); }),
             bytes("ffffffff"                   // label
                   "00000000"                   // types
                   "04000000 424e444c 00000000" // extras
                   "00000000 00000000"          // date
                   "00000000"                   // icon
                   "00000000"));                // items
    QCOMPARE(written([](BinderParcel &parcel) { writeClipDataItem(parcel, ClipDataItem()); }),
             bytes("ffffffff ffffffff 00000000 00000000"));
}

QTEST_GUILESS_MAIN(IntentWritingTest)
#include "tst_intentwriting.moc"
