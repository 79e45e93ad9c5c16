#include "daemon/intentqueue.h"
#include "daemon/overthebus.h"
#include "daemon/spelledout.h"
#include "support/testcase.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <QtTest>

#include <fcntl.h>
#include <functional>
#include <unistd.h>

namespace {

Intent intent(const QString &action)
{
    Intent result;
    result.action = action;
    return result;
}

/// What becomes of an extra on its way through the queue.
QVariant queued(const QVariant &extra)
{
    const QString key = QStringLiteral("k");
    Intent sent;
    sent.extras.insert(key, extra);
    QVariant started;
    IntentQueue queue;
    queue.add(sent);
    queue.workThrough([&started, &key](const Intent &one) {
        started = one.extras.value(key);
        return true;
    });
    return started;
}

/// Keeps which intents are started, and answers a start with more work.
struct Starts
{
    bool operator()(const Intent &started)
    {
        actions.append(started.action);
        if (meanwhile)
            meanwhile(started.action);
        actions.append(started.action + QStringLiteral(" done"));
        return true;
    }

    QStringList actions;
    std::function<void(const QString &action)> meanwhile;
};

} // namespace

class TestIntentQueue : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void what_waits_is_started_in_order_and_once();
    void nothing_is_started_before_the_queue_is_worked_through();
    void an_empty_queue_starts_nothing();
    void equal_intents_are_started_each();
    void the_whole_intent_is_handed_over();
    void what_is_added_meanwhile_comes_after_what_waits();
    void a_nested_pass_starts_nothing();
    void the_queue_works_again_after_a_nested_pass();
    void what_nobody_takes_waits_on_with_those_behind_it();
    void extras_are_kept_data();
    void extras_are_kept();
    void extras_that_cannot_be_sent_keep_their_type_only_data();
    void extras_that_cannot_be_sent_keep_their_type_only();
    void a_message_of_the_bus_does_not_wait();
    void a_file_descriptor_does_not_wait();
    void what_a_nested_extra_holds_takes_no_room();

private:
    OverTheBus m_bus;
};

void TestIntentQueue::initTestCase()
{
    QVERIFY(m_bus.start());
}

void TestIntentQueue::what_waits_is_started_in_order_and_once()
{
    IntentQueue queue;
    Starts starts;
    queue.add(intent(QStringLiteral("A")));
    queue.add(intent(QStringLiteral("B")));
    queue.add(intent(QStringLiteral("C")));

    queue.workThrough(std::ref(starts));
    queue.workThrough(std::ref(starts));

    QCOMPARE(starts.actions, QStringList({QStringLiteral("A"), QStringLiteral("A done"),
                                          QStringLiteral("B"), QStringLiteral("B done"),
                                          QStringLiteral("C"), QStringLiteral("C done")}));
}

void TestIntentQueue::nothing_is_started_before_the_queue_is_worked_through()
{
    IntentQueue queue;
    Starts starts;
    queue.workThrough(std::ref(starts));
    queue.add(intent(QStringLiteral("A")));
    queue.add(intent(QStringLiteral("B")));
    QCOMPARE(starts.actions, QStringList());

    queue.workThrough(std::ref(starts));

    QCOMPARE(starts.actions, QStringList({QStringLiteral("A"), QStringLiteral("A done"),
                                          QStringLiteral("B"), QStringLiteral("B done")}));
}

void TestIntentQueue::an_empty_queue_starts_nothing()
{
    IntentQueue queue;
    Starts starts;

    queue.workThrough(std::ref(starts));

    QCOMPARE(starts.actions, QStringList());
}

void TestIntentQueue::equal_intents_are_started_each()
{
    IntentQueue queue;
    Starts starts;
    queue.add(intent(QStringLiteral("A")));
    queue.add(intent(QStringLiteral("A")));

    queue.workThrough(std::ref(starts));

    QCOMPARE(starts.actions.filter(QStringLiteral("done")).size(), 2);
}

void TestIntentQueue::the_whole_intent_is_handed_over()
{
    Intent full = intent(QStringLiteral("A"));
    full.data = QUrl(QStringLiteral("https://example.org/"));
    full.package = QStringLiteral("org.example");
    full.extras.insert(QStringLiteral("key"), 5);
    full.selector = intent(QStringLiteral("B"));
    IntentQueue queue;
    QVector<Intent> started;
    queue.add(full);

    queue.workThrough([&started](const Intent &one) {
        started.append(one);
        return true;
    });

    QCOMPARE(started.size(), 1);
    QVERIFY(started.first() == full);
}

void TestIntentQueue::what_is_added_meanwhile_comes_after_what_waits()
{
    IntentQueue queue;
    Starts starts;
    starts.meanwhile = [&queue](const QString &action) {
        if (action == QLatin1String("A"))
            queue.add(intent(QStringLiteral("C")));
        if (action == QLatin1String("C"))
            queue.add(intent(QStringLiteral("D")));
    };
    queue.add(intent(QStringLiteral("A")));
    queue.add(intent(QStringLiteral("B")));

    queue.workThrough(std::ref(starts));

    QCOMPARE(starts.actions,
             QStringList({QStringLiteral("A"), QStringLiteral("A done"), QStringLiteral("B"),
                          QStringLiteral("B done"), QStringLiteral("C"), QStringLiteral("C done"),
                          QStringLiteral("D"), QStringLiteral("D done")}));
}

void TestIntentQueue::a_nested_pass_starts_nothing()
{
    IntentQueue queue;
    Starts starts;
    Starts nested;
    starts.meanwhile = [&](const QString &action) {
        if (action == QLatin1String("A"))
            queue.add(intent(QStringLiteral("C")));
        queue.workThrough(std::ref(nested));
    };
    queue.add(intent(QStringLiteral("A")));
    queue.add(intent(QStringLiteral("B")));

    queue.workThrough(std::ref(starts));

    QCOMPARE(nested.actions, QStringList());
    QCOMPARE(starts.actions, QStringList({QStringLiteral("A"), QStringLiteral("A done"),
                                          QStringLiteral("B"), QStringLiteral("B done"),
                                          QStringLiteral("C"), QStringLiteral("C done")}));
}

void TestIntentQueue::the_queue_works_again_after_a_nested_pass()
{
    IntentQueue queue;
    Starts starts;
    starts.meanwhile = [&](const QString &) { queue.workThrough(std::ref(starts)); };
    queue.add(intent(QStringLiteral("A")));
    queue.workThrough(std::ref(starts));
    queue.add(intent(QStringLiteral("B")));

    queue.workThrough(std::ref(starts));

    QCOMPARE(starts.actions, QStringList({QStringLiteral("A"), QStringLiteral("A done"),
                                          QStringLiteral("B"), QStringLiteral("B done")}));
}

void TestIntentQueue::what_nobody_takes_waits_on_with_those_behind_it()
{
    IntentQueue queue;
    queue.add(intent(QStringLiteral("A")));
    queue.add(intent(QStringLiteral("B")));
    queue.add(intent(QStringLiteral("C")));
    QStringList offered;

    queue.workThrough([&offered](const Intent &one) {
        offered.append(one.action);
        return one.action != QLatin1String("B");
    });
    QCOMPARE(offered, QStringList({QStringLiteral("A"), QStringLiteral("B")}));

    Starts starts;
    queue.workThrough(std::ref(starts));
    QCOMPARE(starts.actions, QStringList({QStringLiteral("B"), QStringLiteral("B done"),
                                          QStringLiteral("C"), QStringLiteral("C done")}));
}

void TestIntentQueue::extras_are_kept_data()
{
    QTest::addColumn<QVariant>("extra");

    QTest::newRow("text") << QVariant(QStringLiteral("x"));
    QTest::newRow("texts") << QVariant(QStringList({QStringLiteral("x"), QStringLiteral("y")}));
    QTest::newRow("bytes") << QVariant(QByteArray("xy"));
    QTest::newRow("boolean") << QVariant(true);
    QTest::newRow("number") << QVariant(-7);
    QTest::newRow("long number") << QVariant(qlonglong(-7));
    QTest::newRow("real number") << QVariant(-0.5);
}

void TestIntentQueue::extras_are_kept()
{
    QFETCH(QVariant, extra);

    QCOMPARE(spelledOut(queued(m_bus.carryValue(extra))), spelledOut(extra));
}

void TestIntentQueue::extras_that_cannot_be_sent_keep_their_type_only_data()
{
    QTest::addColumn<QVariant>("extra");
    QTest::addColumn<int>("type");

    const QVariantMap map{{QStringLiteral("a"), 1}};
    QTest::newRow("map") << QVariant(map) << qMetaTypeId<QDBusArgument>();
    QTest::newRow("list") << QVariant(QVariantList{map, 1}) << qMetaTypeId<QDBusArgument>();
    QTest::newRow("variant") << QVariant::fromValue(QDBusVariant(map))
                             << qMetaTypeId<QDBusVariant>();
    QTest::newRow("path") << QVariant::fromValue(QDBusObjectPath(QStringLiteral("/a")))
                          << qMetaTypeId<QDBusObjectPath>();
    QTest::newRow("file descriptor") << QVariant::fromValue(QDBusUnixFileDescriptor(0))
                                     << qMetaTypeId<QDBusUnixFileDescriptor>();
}

// The writer of extras tells of the type, and would take a null value for one that it can write.
void TestIntentQueue::extras_that_cannot_be_sent_keep_their_type_only()
{
    QFETCH(QVariant, extra);
    QFETCH(int, type);
    const QVariant carried = m_bus.carryValue(extra);
    QCOMPARE(carried.userType(), type);

    const QVariant kept = queued(carried);

    QCOMPARE(kept.userType(), type);
    QVERIFY(!kept.isNull());
    QVERIFY(kept.value<QDBusVariant>().variant().isNull());
    QCOMPARE(kept.value<QDBusObjectPath>().path(), QString());
    QVERIFY(!kept.value<QDBusUnixFileDescriptor>().isValid());
}

void TestIntentQueue::a_message_of_the_bus_does_not_wait()
{
    const QVariantMap map{{QStringLiteral("a"), 1}};
    const QVariant carried = m_bus.carryValue(QVariantMap{{QStringLiteral("m"), map}});
    QCOMPARE(carried.value<QDBusArgument>().currentType(), QDBusArgument::MapType);

    QCOMPARE(queued(carried).value<QDBusArgument>().currentType(), QDBusArgument::UnknownType);
}

void TestIntentQueue::a_file_descriptor_does_not_wait()
{
    const int number = ::dup(0);
    QVERIFY(number >= 0);
    QVariant extra = QVariant::fromValue(QDBusUnixFileDescriptor());
    {
        QDBusUnixFileDescriptor descriptor;
        descriptor.giveFileDescriptor(number);
        extra = QVariant::fromValue(descriptor);
    }
    Intent sent;
    sent.extras.insert(QStringLiteral("k"), extra);
    IntentQueue queue;

    queue.add(sent);
    sent = Intent();
    extra.clear();

    QVERIFY(!queue.isEmpty());
    QCOMPARE(::fcntl(number, F_GETFD), -1);
}

void TestIntentQueue::what_a_nested_extra_holds_takes_no_room()
{
    QVariant nested = QString(20 * 1024 * 1024, QLatin1Char('a'));
    for (int level = 0; level < 10; ++level)
        nested = QVariantMap{{QStringLiteral("k"), nested}};
    Intent sent;
    sent.extras.insert(QStringLiteral("k"), m_bus.carryValue(nested));
    QCOMPARE(sent.extras.first().userType(), qMetaTypeId<QDBusArgument>());
    IntentQueue queue;

    int accepted = 0;
    while (queue.add(sent))
        ++accepted;

    QCOMPARE(accepted, WaitingLimit::MaxRequests);
    QCOMPARE(takeLog(QtWarningMsg).size(), 1);
}

QTEST_GUILESS_MAIN(TestIntentQueue)
#include "test_intentqueue.moc"
