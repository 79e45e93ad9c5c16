#include "binder/clipdata.h"
#include "binder/intent.h"
#include "support/testcase.h"

#include <QtTest>

namespace {

template <typename Record>
QString printed(const Record &record)
{
    QString text;
    QDebug(&text) << record;
    return text;
}

Intent withAction(const QString &action)
{
    Intent intent;
    intent.action = action;
    return intent;
}

// What is printed of an intent with nothing but its action set, behind the action.
QString unset()
{
    return QStringLiteral("  data: QUrl(\"\")  type: \"\"  id: \"\" , flags: 0 , package: \"\"  ( "
                          "\"\" / \"\" )  , bounds: QRect(0,0 0x0) , cat: () , userhint: -2 , "
                          "extras: QMap() ");
}

} // namespace

class IntentPrintingTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void printsAnUnsetIntent();
    void printsAllFieldsInOrder();
    void printsASelectorBehindTheIntent();
    void printsClipDataOnItsOwnLines();
    void printsClipDataBeforeTheSelector();
    void printsTheIntentOfAnItem();
    void leavesTheStreamAsItWas();
};

void IntentPrintingTest::printsAnUnsetIntent()
{
    QCOMPARE(printed(Intent()), QStringLiteral("Intent: action: \"\"") + unset());
}

void IntentPrintingTest::printsAllFieldsInOrder()
{
    Intent intent;
    intent.action = QStringLiteral("a");
    intent.data = QUrl(QStringLiteral("a:b"));
    intent.type = QStringLiteral("t/x");
    intent.identifier = QStringLiteral("i");
    intent.flags = 5;
    intent.package = QStringLiteral("p");
    intent.componentPackage = QStringLiteral("c");
    intent.componentClass = QStringLiteral("C");
    intent.sourceBounds = QRect(1, 2, 10, 20);
    intent.categories = QStringList({QStringLiteral("x"), QStringLiteral("y")});
    intent.contentUserHint = 7;
    intent.extras = {{QStringLiteral("k"), QStringLiteral("v")}};

    QCOMPARE(printed(intent),
             QStringLiteral("Intent: action: \"a\"  data: QUrl(\"a:b\")  type: \"t/x\"  id: \"i\" "
                            ", flags: 5 , package: \"p\"  ( \"c\" / \"C\" )  , bounds: "
                            "QRect(1,2 10x20) , cat: (\"x\", \"y\") , userhint: 7 , extras: "
                            "QMap((\"k\", QVariant(QString, \"v\"))) "));
}

void IntentPrintingTest::printsASelectorBehindTheIntent()
{
    Intent intent = withAction(QStringLiteral("a"));
    intent.selector = withAction(QStringLiteral("s"));

    QCOMPARE(printed(intent), QStringLiteral("Intent: action: \"a\"") + unset() +
                                  QStringLiteral("Selector:  Intent: action: \"s\"") + unset());
}

void IntentPrintingTest::printsClipDataOnItsOwnLines()
{
    ClipData clip;
    clip.label = QStringLiteral("l");
    clip.types = QStringList(QStringLiteral("m"));
    clip.date = 5;
    clip.icon = QByteArrayLiteral("\x01\x02\x03");
    clip.extras = {{QStringLiteral("e"), true}};
    ClipDataItem text;
    text.text = QStringLiteral("T");
    text.htmlText = QStringLiteral("H");
    ClipDataItem link;
    link.uri = QUrl(QStringLiteral("a:b"));
    clip.items = {text, link};

    QCOMPARE(printed(clip),
             QStringLiteral("\n  Clipdata: label: \"l\" , types: (\"m\") , date: 5 , icon size: 3 "
                            ". extras: QMap((\"e\", QVariant(bool, true))) "
                            "\n    ClipDataItem: \"T\" \"H\" QUrl(\"\") "
                            "\n    ClipDataItem: \"\" \"\" QUrl(\"a:b\") "));
}

void IntentPrintingTest::printsClipDataBeforeTheSelector()
{
    Intent intent = withAction(QStringLiteral("a"));
    intent.clipData = ClipData();
    intent.selector = withAction(QStringLiteral("s"));

    QCOMPARE(printed(intent),
             QStringLiteral("Intent: action: \"a\"") + unset() +
                 QStringLiteral("\n  Clipdata: label: \"\" , types: () , date: 0 , icon size: 0 "
                                ". extras: QMap() ") +
                 QStringLiteral("Selector:  Intent: action: \"s\"") + unset());
}

void IntentPrintingTest::printsTheIntentOfAnItem()
{
    ClipDataItem item;
    item.text = QStringLiteral("T");
    item.intent = withAction(QStringLiteral("n"));

    QCOMPARE(printed(item),
             QStringLiteral("\n    ClipDataItem: \"T\" \"\" QUrl(\"\") ClipDataItem intent:  "
                            "Intent: action: \"n\"") +
                 unset());
}

void IntentPrintingTest::leavesTheStreamAsItWas()
{
    QString text;
    QDebug(&text) << "before" << Intent() << "after" << 1;

    QCOMPARE(text,
             QStringLiteral("before Intent: action: \"\"") + unset() + QStringLiteral("after 1 "));
}

QTEST_GUILESS_MAIN(IntentPrintingTest)
#include "tst_intentprinting.moc"
