#include "binder/sampleintents.h"
#include "support/testcase.h"

#include <QtTest>

using Messages::bytes;
using Messages::Received;
using Messages::written;
using SampleIntents::encoded;
using SampleIntents::unsetIntentBytes;

namespace {

const QString ParcelCategory = QStringLiteral("com.corvo.bramd.parcel");
const QString TooDeep = QStringLiteral("Intent nested too deep, leaving out the rest");

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

/// All of an intent that holds a selector, up to that one.
QByteArray beforeSelector()
{
    return unsetIntentBytes().chopped(16) + bytes("01000000");
}

/// And what follows it.
QByteArray behindSelector()
{
    return bytes("00000000 feffffff ffffffff");
}

} // namespace

class IntentNestingTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void writesUpToTheDepthLimit();
    void leavesOutWhatIsNestedDeeper();
    void countsTheIntentsOfItemsAsDepth();
    void readsUpToTheDepthLimit();
    void readsNoDeeper();
    void survivesEndlessNesting_data();
    void survivesEndlessNesting();
};

void IntentNestingTest::writesUpToTheDepthLimit()
{
    QCOMPARE(encoded(chain(MaxIntentDepth)),
             beforeSelector().repeated(63) + unsetIntentBytes() + behindSelector().repeated(63));
}

void IntentNestingTest::leavesOutWhatIsNestedDeeper()
{
    QCOMPARE(encoded(chain(MaxIntentDepth + 1)), encoded(chain(MaxIntentDepth)));
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory), QStringList(TooDeep));
    QCOMPARE(encoded(chain(1000)), encoded(chain(MaxIntentDepth)));
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory), QStringList(TooDeep));
}

void IntentNestingTest::countsTheIntentsOfItemsAsDepth()
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

void IntentNestingTest::readsUpToTheDepthLimit()
{
    Received message(encoded(chain(MaxIntentDepth)) + bytes("2a000000"));

    QCOMPARE(chainLength(readIntent(message.parcel)), MaxIntentDepth);
    QCOMPARE(message.parcel.readInt32(), 42);
}

void IntentNestingTest::readsNoDeeper()
{
    Received message(beforeSelector().repeated(64) + unsetIntentBytes() +
                     behindSelector().repeated(64));

    QCOMPARE(chainLength(readIntent(message.parcel)), MaxIntentDepth);
    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory), QStringList(TooDeep));
    // where anything else lies in it cannot be told any more
    QCOMPARE(message.parcel.bytesRemaining(), std::size_t(0));
}

void IntentNestingTest::survivesEndlessNesting_data()
{
    QTest::addColumn<QByteArray>("level");

    QTest::newRow("selectors") << beforeSelector();
    QTest::newRow("items") << unsetIntentBytes().chopped(16) +
                                  bytes("00000000 01000000"
                                        "ffffffff 00000000 ffffffff 00000000 00000000 ffffffff"
                                        "ffffff7f ffffffff ffffffff 01000000");
}

void IntentNestingTest::survivesEndlessNesting()
{
    QFETCH(QByteArray, level);
    Received message(level.repeated(1000000 / level.size()));

    readIntent(message.parcel);

    QCOMPARE(takeLog(QtCriticalMsg, ParcelCategory), QStringList(TooDeep));
}

QTEST_GUILESS_MAIN(IntentNestingTest)
#include "tst_intentnesting.moc"
