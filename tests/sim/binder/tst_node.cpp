#include "binder/client.h"
#include "binder/context.h"
#include "binder/node.h"
#include "binder/transaction.h"
#include "support/testcase.h"

#include <QtTest>

#include <linux/android/binder.h>
#include <sstream>

using namespace SimBinder;

class TestNode : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void theFirstHolderIsAnnouncedWithTheNextWork();
    void aSecondHolderIsNot();
    void withoutASenderAFirstReferenceCannotCome();
    void aHolderWhoComesAndGoesUnreadIsNotAnnounced();
    void theLastHoldersLeavingIsAnnouncedWhenIdle();
    void anUnansweredAnnouncementHoldsTheNode();
    void anAnswerIsDueOnce();
    void aContextManagersNodeIsNeverAnnounced();
    void oneWayCallsTakeTurns();
    void aDeadNodeAnnouncesNothing();

private:
    // Another file's reference, counted once, as it comes with a message of the owner's.
    void holdBySending();
    void letGo();
    std::shared_ptr<Node> readAnnouncement();
    void readAndAnswer();

    std::ostringstream m_output;
    std::unique_ptr<MisuseLog> m_misuse;
    std::unique_ptr<Context> m_context;
    std::unique_ptr<Client> m_owner;
    std::unique_ptr<Client> m_holder;
    std::shared_ptr<Node> m_node;
    Reference m_reference;
};

void TestNode::init()
{
    TestCase::init();
    m_misuse = std::make_unique<MisuseLog>(m_output);
    m_context = std::make_unique<Context>(*m_misuse);
    m_owner = std::make_unique<Client>(*m_context, 1, 0);
    m_owner->setLooper(true);
    flat_binder_object object = {};
    object.binder = 5;
    object.cookie = 6;
    m_node = m_owner->addNode(object);
    m_holder = std::make_unique<Client>(*m_context, 2, 0);
    m_reference.holder = m_holder.get();
}

void TestNode::cleanup()
{
    m_owner.reset();
    m_holder.reset();
    m_node.reset();
    TestCase::cleanup();
}

void TestNode::holdBySending()
{
    m_node->addReference(&m_reference);
    m_node->hold(Strength::Strong, Holder::Reference, m_owner.get());
}

void TestNode::letGo()
{
    m_node->letGo(Strength::Strong, Holder::Reference);
    m_node->removeReference(&m_reference);
}

// The node that the next work announces, or null.
std::shared_ptr<Node> TestNode::readAnnouncement()
{
    const std::optional<Work> work = m_owner->takeWork(m_owner->isIdle());
    const auto *announcement = work ? std::get_if<AnnouncementWork>(&*work) : nullptr;
    return announcement == nullptr ? nullptr : announcement->node;
}

void TestNode::readAndAnswer()
{
    QCOMPARE(readAnnouncement(), m_node);
    const Node::Announcement announcement = m_node->announce();
    QVERIFY(announcement.incRefs && announcement.acquire);
    QVERIFY(m_node->answerAnnouncement(Strength::Weak));
    QVERIFY(m_node->answerAnnouncement(Strength::Strong));
}

void TestNode::theFirstHolderIsAnnouncedWithTheNextWork()
{
    holdBySending();

    QVERIFY(!m_owner->hasWork());
    QCOMPARE(readAnnouncement(), m_node);
    const Node::Announcement announcement = m_node->announce();
    QVERIFY(announcement.incRefs);
    QVERIFY(announcement.acquire);
    QVERIFY(!announcement.release);
    QVERIFY(!announcement.decRefs);
}

void TestNode::aSecondHolderIsNot()
{
    holdBySending();
    readAndAnswer();

    holdBySending();

    QCOMPARE(readAnnouncement(), nullptr);
}

void TestNode::withoutASenderAFirstReferenceCannotCome()
{
    QVERIFY(!m_node->hold(Strength::Strong, Holder::Reference));
    QVERIFY(!m_node->hold(Strength::Weak, Holder::Reference));
    holdBySending();
    QVERIFY(m_node->hold(Strength::Strong, Holder::Reference));
}

void TestNode::aHolderWhoComesAndGoesUnreadIsNotAnnounced()
{
    holdBySending();

    letGo();

    QCOMPARE(readAnnouncement(), nullptr);
    QCOMPARE(m_owner->findNode(5), nullptr);
}

void TestNode::theLastHoldersLeavingIsAnnouncedWhenIdle()
{
    holdBySending();
    readAndAnswer();

    letGo();

    QVERIFY(m_owner->hasWork());
    QCOMPARE(readAnnouncement(), m_node);
    const Node::Announcement announcement = m_node->announce();
    QVERIFY(announcement.release);
    QVERIFY(announcement.decRefs);
    QVERIFY(!announcement.incRefs && !announcement.acquire);
    QCOMPARE(m_owner->findNode(5), nullptr);
}

void TestNode::anUnansweredAnnouncementHoldsTheNode()
{
    holdBySending();
    readAnnouncement();
    m_node->announce();

    letGo();
    QVERIFY(!m_owner->hasWork());
    QVERIFY(m_node->answerAnnouncement(Strength::Weak));
    QVERIFY(m_node->answerAnnouncement(Strength::Strong));

    QVERIFY(m_owner->hasWork());
    QCOMPARE(readAnnouncement(), m_node);
    QVERIFY(m_node->announce().release);
}

void TestNode::anAnswerIsDueOnce()
{
    QVERIFY(!m_node->answerAnnouncement(Strength::Weak));
    holdBySending();
    readAndAnswer();
    QVERIFY(!m_node->answerAnnouncement(Strength::Weak));
    QVERIFY(!m_node->answerAnnouncement(Strength::Strong));
}

void TestNode::aContextManagersNodeIsNeverAnnounced()
{
    const auto node = Node::forContextManager(m_owner.get(), 0, 0, 0);
    m_owner->addNode(node);

    QVERIFY(node->hold(Strength::Strong, Holder::Reference));
    node->letGo(Strength::Strong, Holder::Reference);

    QVERIFY(!m_owner->hasWork());
    QCOMPARE(readAnnouncement(), nullptr);
    QCOMPARE(m_owner->findNode(0), node);
}

void TestNode::oneWayCallsTakeTurns()
{
    const auto first = std::make_shared<Transaction>();
    const auto second = std::make_shared<Transaction>();
    const auto third = std::make_shared<Transaction>();

    QVERIFY(m_node->admitOneWay(first));
    QVERIFY(!m_node->admitOneWay(second));
    QVERIFY(!m_node->admitOneWay(third));
    QCOMPARE(m_node->takeNextOneWay(), second);
    QCOMPARE(m_node->takeNextOneWay(), third);
    QCOMPARE(m_node->takeNextOneWay(), nullptr);
    QVERIFY(m_node->admitOneWay(first));
}

void TestNode::aDeadNodeAnnouncesNothing()
{
    holdBySending();
    readAndAnswer();
    QCOMPARE(m_node->die().size(), std::size_t(1));

    QCOMPARE(m_node->owner(), nullptr);
    letGo();
    QVERIFY(!m_node->announce().incRefs);
}

QTEST_GUILESS_MAIN(TestNode)
#include "tst_node.moc"
