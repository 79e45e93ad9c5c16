#include "daemon/intentqueue.h"
#include "support/testcase.h"

#include <QtTest>

#include <functional>

namespace {

Intent intent(const QString &action)
{
    Intent result;
    result.action = action;
    return result;
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
    void what_waits_is_started_in_order_and_once();
    void nothing_is_started_before_the_queue_is_worked_through();
    void an_empty_queue_starts_nothing();
    void equal_intents_are_started_each();
    void the_whole_intent_is_handed_over();
    void what_is_added_meanwhile_comes_after_what_waits();
    void a_nested_pass_starts_nothing();
    void the_queue_works_again_after_a_nested_pass();
    void what_nobody_takes_waits_on_with_those_behind_it();
};

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

QTEST_GUILESS_MAIN(TestIntentQueue)
#include "test_intentqueue.moc"
