#include "binder/clipdata.h"
#include "binder/sampleintents.h"
#include "support/testcase.h"

#include <QtTest>

#include <functional>

using SampleIntents::fullIntent;
using SampleIntents::withAction;

using Change = std::function<void(Intent &)>;
Q_DECLARE_METATYPE(Change)

class IntentTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void meansTheCurrentUserAtFirst();
    void ownsWhatItHolds();
    void becomesAPartOfItself();
    void tellsIntentsApart_data();
    void tellsIntentsApart();
};

void IntentTest::meansTheCurrentUserAtFirst()
{
    QCOMPARE(Intent().contentUserHint, -2);
}

void IntentTest::ownsWhatItHolds()
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
}

void IntentTest::becomesAPartOfItself()
{
    Intent intent = fullIntent();
    const Intent selector = *intent.selector;
    intent = *intent.selector;
    QVERIFY(intent == selector);

    intent = fullIntent();
    intent = *intent.clipData->items.at(0).intent;
    QVERIFY(intent == withAction(QStringLiteral("n")));
}

void IntentTest::tellsIntentsApart_data()
{
    QTest::addColumn<Change>("change");

    const auto row = [](const char *name, const Change &change) { QTest::newRow(name) << change; };
    const QString other = QStringLiteral("other");
    row("action", [=](Intent &intent) { intent.action = other; });
    row("data", [=](Intent &intent) { intent.data = QUrl(other); });
    row("type", [=](Intent &intent) { intent.type = other; });
    row("identifier", [=](Intent &intent) { intent.identifier = other; });
    row("flags", [](Intent &intent) { intent.flags = 1; });
    row("package", [=](Intent &intent) { intent.package = other; });
    row("component package", [=](Intent &intent) { intent.componentPackage = other; });
    row("component class", [=](Intent &intent) { intent.componentClass = other; });
    row("bounds", [](Intent &intent) { intent.sourceBounds = QRect(1, 2, 10, 21); });
    row("categories", [](Intent &intent) { intent.categories.removeLast(); });
    row("no selector", [](Intent &intent) { intent.selector = {}; });
    row("a selector's selector",
        [=](Intent &intent) { intent.selector->selector->action = other; });
    row("no clip data", [](Intent &intent) { intent.clipData = {}; });
    row("label", [=](Intent &intent) { intent.clipData->label = other; });
    row("types", [=](Intent &intent) { intent.clipData->types.append(other); });
    row("clip extras", [=](Intent &intent) { intent.clipData->extras.insert(other, 1); });
    row("date", [](Intent &intent) { intent.clipData->date = 6; });
    row("icon", [](Intent &intent) { intent.clipData->icon.chop(1); });
    row("items", [](Intent &intent) { intent.clipData->items.removeLast(); });
    row("text", [=](Intent &intent) { intent.clipData->items[0].text = other; });
    row("html text", [=](Intent &intent) { intent.clipData->items[0].htmlText = other; });
    row("item intent", [=](Intent &intent) { intent.clipData->items[0].intent->action = other; });
    row("no item intent", [](Intent &intent) { intent.clipData->items[0].intent = {}; });
    row("uri", [=](Intent &intent) { intent.clipData->items[1].uri = QUrl(other); });
    row("extras", [=](Intent &intent) { intent.extras.insert(other, 1); });
    row("user hint", [](Intent &intent) { intent.contentUserHint = 0; });
}

void IntentTest::tellsIntentsApart()
{
    QFETCH(Change, change);
    Intent changed = fullIntent();
    QVERIFY(changed == fullIntent());

    change(changed);

    QVERIFY(!(changed == fullIntent()));
    QVERIFY(!(fullIntent() == changed));
}

QTEST_GUILESS_MAIN(IntentTest)
#include "tst_intent.moc"
