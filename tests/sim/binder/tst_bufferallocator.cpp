#include "binder/bufferallocator.h"
#include "support/testcase.h"

#include <QtTest>

using SimBinder::BufferAllocator;
using Offset = std::optional<std::uint64_t>;

class TestBufferAllocator : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void piecesFollowEachOther();
    void dataAndOffsetsAreRoundedUpEach();
    void anEmptyPieceTakesRoom();
    void theSmallestPieceThatFitsIsTaken();
    void neighboursJoin();
    void thereIsNoRoomBeyondTheEnd_data();
    void thereIsNoRoomBeyondTheEnd();
    void oneWayPiecesTakeHalf();
    void oneWayPiecesCostTheirRecordToo();
    void givingBackWhatIsNotTakenChangesNothing();
    void anEmptyMappingHasNoRoom();
};

void TestBufferAllocator::piecesFollowEachOther()
{
    BufferAllocator space(4096);
    QCOMPARE(space.take(16, 0, false), Offset(0));
    QCOMPARE(space.take(16, 0, false), Offset(16));
    QCOMPARE(space.take(16, 0, false), Offset(32));
}

void TestBufferAllocator::dataAndOffsetsAreRoundedUpEach()
{
    BufferAllocator space(4096);
    QCOMPARE(space.take(1, 9, false), Offset(0));
    QCOMPARE(space.take(8, 0, false), Offset(8 + 16));
}

void TestBufferAllocator::anEmptyPieceTakesRoom()
{
    BufferAllocator space(16);
    QCOMPARE(space.take(0, 0, false), Offset(0));
    QCOMPARE(space.take(0, 0, false), Offset(8));
    QCOMPARE(space.take(0, 0, false), Offset());
}

void TestBufferAllocator::theSmallestPieceThatFitsIsTaken()
{
    BufferAllocator space(4096);
    space.take(64, 0, false);
    space.take(8, 0, false);
    space.take(24, 0, false);
    space.take(8, 0, false);
    space.giveBack(0);
    space.giveBack(72);

    QCOMPARE(space.take(16, 0, false), Offset(72));
    QCOMPARE(space.take(64, 0, false), Offset(0));
}

void TestBufferAllocator::neighboursJoin()
{
    BufferAllocator space(32);
    for (int i = 0; i < 4; ++i)
        space.take(8, 0, false);
    QCOMPARE(space.take(8, 0, false), Offset());

    for (const std::uint64_t offset : {8U, 24U, 0U, 16U})
        space.giveBack(offset);

    QCOMPARE(space.take(32, 0, false), Offset(0));
}

void TestBufferAllocator::thereIsNoRoomBeyondTheEnd_data()
{
    QTest::addColumn<quint64>("data");
    QTest::addColumn<quint64>("offsets");
    QTest::addColumn<bool>("fits");
    QTest::newRow("all of it") << quint64(4096) << quint64(0) << true;
    QTest::newRow("one byte more") << quint64(4097) << quint64(0) << false;
    QTest::newRow("with offsets") << quint64(4088) << quint64(8) << true;
    QTest::newRow("offsets too many") << quint64(4089) << quint64(8) << false;
    QTest::newRow("a sum that overflows") << ~quint64(0) - 7 << quint64(16) << false;
    QTest::newRow("offsets that overflow") << quint64(16) << ~quint64(0) << false;
}

void TestBufferAllocator::thereIsNoRoomBeyondTheEnd()
{
    QFETCH(quint64, data);
    QFETCH(quint64, offsets);
    QFETCH(bool, fits);
    BufferAllocator space(4096);
    QCOMPARE(space.take(data, offsets, false).has_value(), fits);
}

void TestBufferAllocator::oneWayPiecesTakeHalf()
{
    BufferAllocator space(8192);
    QVERIFY(!space.take(4096, 0, true));
    const Offset first = space.take(3000, 0, true);
    QVERIFY(first);
    QVERIFY(!space.take(3000, 0, true));
    QVERIFY(space.take(3000, 0, false));

    space.giveBack(*first);

    QVERIFY(space.take(3000, 0, true));
}

void TestBufferAllocator::oneWayPiecesCostTheirRecordToo()
{
    BufferAllocator space(8192);
    space.take(8, 0, true);
    QCOMPARE(space.freeOneWaySpace(), std::uint64_t(4096 - 8 - 104));
    space.giveBack(0);
    QCOMPARE(space.freeOneWaySpace(), std::uint64_t(4096));
    // So many empty ones fit, and not one more.
    int count = 0;
    while (space.take(0, 0, true))
        ++count;
    QCOMPARE(count, 4096 / (8 + 104));
}

void TestBufferAllocator::givingBackWhatIsNotTakenChangesNothing()
{
    BufferAllocator space(32);
    space.take(16, 0, false);

    space.giveBack(8);
    space.giveBack(16);

    QCOMPARE(space.take(16, 0, false), Offset(16));
    QCOMPARE(space.take(8, 0, false), Offset());
}

void TestBufferAllocator::anEmptyMappingHasNoRoom()
{
    BufferAllocator space(0);
    QCOMPARE(space.take(0, 0, false), Offset());
}

QTEST_GUILESS_MAIN(TestBufferAllocator)
#include "tst_bufferallocator.moc"
