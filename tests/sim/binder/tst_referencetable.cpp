#include "binder/node.h"
#include "binder/referencetable.h"
#include "support/testcase.h"

#include <QtTest>

using namespace SimBinder;

class TestReferenceTable : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void handlesBeginAt1();
    void theContextManagersHandleIs0();
    void aSecondContextManagersHandleIsTheLowestFree();
    void theLowestFreeHandleIsTaken();
    void referencesAreFoundByHandleAndByNode();
    void whatIsRemovedIsNotFound();
};

namespace {

std::shared_ptr<Node> makeNode()
{
    return std::make_shared<Node>(nullptr, 1, 2, 0);
}

} // namespace

void TestReferenceTable::handlesBeginAt1()
{
    ReferenceTable table(nullptr);
    QCOMPARE(table.add(makeNode(), false)->handle, std::uint32_t(1));
    QCOMPARE(table.add(makeNode(), false)->handle, std::uint32_t(2));
    QCOMPARE(table.size(), std::size_t(2));
}

void TestReferenceTable::theContextManagersHandleIs0()
{
    ReferenceTable table(nullptr);
    table.add(makeNode(), false);
    QCOMPARE(table.add(makeNode(), true)->handle, std::uint32_t(0));
    QCOMPARE(table.add(makeNode(), false)->handle, std::uint32_t(2));
}

void TestReferenceTable::aSecondContextManagersHandleIsTheLowestFree()
{
    ReferenceTable table(nullptr);
    table.add(makeNode(), true);
    table.add(makeNode(), false);
    QCOMPARE(table.add(makeNode(), true)->handle, std::uint32_t(2));
}

void TestReferenceTable::theLowestFreeHandleIsTaken()
{
    ReferenceTable table(nullptr);
    for (int i = 0; i < 5; ++i)
        table.add(makeNode(), false);
    table.remove(4);
    table.remove(2);
    QCOMPARE(table.add(makeNode(), false)->handle, std::uint32_t(2));
    QCOMPARE(table.add(makeNode(), false)->handle, std::uint32_t(4));
    QCOMPARE(table.add(makeNode(), false)->handle, std::uint32_t(6));
}

void TestReferenceTable::referencesAreFoundByHandleAndByNode()
{
    ReferenceTable table(nullptr);
    const auto node = makeNode();
    Reference *added = table.add(node, false);
    QCOMPARE(table.find(1), added);
    QCOMPARE(table.find(node.get()), added);
    QCOMPARE(table.first(), added);
    QCOMPARE(added->node, node);
    QCOMPARE(table.find(2), nullptr);
    QCOMPARE(table.find(makeNode().get()), nullptr);
}

void TestReferenceTable::whatIsRemovedIsNotFound()
{
    ReferenceTable table(nullptr);
    const auto node = makeNode();
    table.add(node, false);

    table.remove(1);
    table.remove(1);

    QCOMPARE(table.find(1), nullptr);
    QCOMPARE(table.find(node.get()), nullptr);
    QCOMPARE(table.first(), nullptr);
}

QTEST_GUILESS_MAIN(TestReferenceTable)
#include "tst_referencetable.moc"
