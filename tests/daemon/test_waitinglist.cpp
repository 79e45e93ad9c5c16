#include "binder/intent.h"
#include "daemon/intentqueue.h"
#include "daemon/packagerequests.h"
#include "daemon/waitinglist.h"
#include "support/testcase.h"

#include <QtTest>

#include <functional>

Q_DECLARE_METATYPE(Intent)

namespace {

const QString Full = QStringLiteral("Too many requests wait for the runtime, dropping new ones");
constexpr int Megabyte = 1024 * 1024;

/// Of requests that have a megabyte of text and a little more.
constexpr int MegabytesAccepted = WaitingLimit::MaxBytes / Megabyte - 1;

QString megabyte()
{
    return QString(Megabyte / int{sizeof(QChar)}, QLatin1Char('a'));
}

/// How many of a kind a list takes.
template <typename List, typename Request>
int accepted(List &list, const Request &request)
{
    int count = 0;
    while (list.add(request))
        ++count;
    return count;
}

} // namespace

/// What waits for a runtime that does not come.
class TestWaitingList : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void hands_out_in_order();
    void takes_back_what_it_has_handed_out();
    void takes_a_limited_number();
    void has_room_again();
    void takes_a_limited_size_data();
    void takes_a_limited_size();
    void takes_no_single_request_beyond_the_size_data();
    void takes_no_single_request_beyond_the_size();
    void takes_a_small_request_where_a_large_one_finds_no_room();
    void counts_the_room_that_a_text_keeps();
    void package_requests_are_limited();
    void intents_are_limited();
};

void TestWaitingList::hands_out_in_order()
{
    WaitingList<QString> list;
    QVERIFY(list.isEmpty());
    list.add(QStringLiteral("a"));
    list.add(QStringLiteral("b"));

    QCOMPARE(list.takeFirst(), QStringLiteral("a"));
    QCOMPARE(list.size(), 1);
    QCOMPARE(list.takeFirst(), QStringLiteral("b"));
    QVERIFY(list.isEmpty());
}

void TestWaitingList::takes_back_what_it_has_handed_out()
{
    WaitingList<QString> list;
    accepted(list, megabyte());
    QCOMPARE(takeLog(QtWarningMsg), QStringList(Full));
    const QString first = list.takeFirst();
    QVERIFY(list.add(QStringLiteral("last")));
    while (list.add(QStringLiteral("a"))) {
    }

    list.putBack(first);

    QVERIFY(!list.hasRoomFor(1));
    QCOMPARE(list.takeFirst(), first);
    while (!list.isEmpty())
        list.takeFirst();
    QCOMPARE(accepted(list, megabyte()), MegabytesAccepted);
    QCOMPARE(takeLog(QtWarningMsg), QStringList(Full));
}

void TestWaitingList::takes_a_limited_number()
{
    WaitingList<QString> list;
    QCOMPARE(accepted(list, QStringLiteral("a")), WaitingLimit::MaxRequests);
    QVERIFY(!list.hasRoomFor(1));
    QVERIFY(!list.add(QStringLiteral("b")));

    QCOMPARE(takeLog(QtWarningMsg), QStringList(Full));
}

void TestWaitingList::has_room_again()
{
    WaitingList<QString> list;
    const int most = accepted(list, megabyte());
    list.takeFirst();
    QVERIFY(list.hasRoomFor(Megabyte));
    QCOMPARE(accepted(list, megabyte()), 1);
    QCOMPARE(takeLog(QtWarningMsg), QStringList(Full)); // is still full for whoever reads the log

    while (!list.isEmpty())
        list.takeFirst();
    QCOMPARE(accepted(list, megabyte()), most);
    QCOMPARE(takeLog(QtWarningMsg), QStringList(Full));
}

void TestWaitingList::takes_a_limited_size_data()
{
    QTest::addColumn<Intent>("intent");

    const auto row = [](const char *name, const std::function<void(Intent &)> &fill) {
        Intent intent;
        fill(intent);
        QTest::newRow(name) << intent;
    };
    const auto extra = [&row](const char *name, const QVariant &value) {
        row(name, [&value](Intent &intent) { intent.extras.insert(QStringLiteral("k"), value); });
    };
    const auto dataUrl = QUrl(QStringLiteral("data:") + megabyte());
    const QVariantMap inner{{QStringLiteral("k"), megabyte()}};
    row("action", [](Intent &intent) { intent.action = megabyte(); });
    row("data", [&dataUrl](Intent &intent) { intent.data = dataUrl; });
    row("type", [](Intent &intent) { intent.type = megabyte(); });
    row("package", [](Intent &intent) { intent.package = megabyte(); });
    row("component's package", [](Intent &intent) { intent.componentPackage = megabyte(); });
    row("component's class", [](Intent &intent) { intent.componentClass = megabyte(); });
    row("category", [](Intent &intent) { intent.categories = QStringList(megabyte()); });
    row("name of an extra", [](Intent &intent) { intent.extras.insert(megabyte(), 1); });
    extra("text", megabyte());
    extra("texts", QStringList({QString(), megabyte()}));
    extra("URLs", QVariantList({QUrl(), dataUrl}));
    extra("bytes", QByteArray(Megabyte, 'a'));
    extra("map", inner);
    extra("numbers", QVariantList(QVector<QVariant>(Megabyte / 64, 7).toList()));
}

void TestWaitingList::takes_a_limited_size()
{
    QFETCH(Intent, intent);
    WaitingList<Intent> list;

    QCOMPARE(accepted(list, intent), MegabytesAccepted);
    QCOMPARE(takeLog(QtWarningMsg), QStringList(Full));
}

void TestWaitingList::takes_no_single_request_beyond_the_size_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<bool>("isAccepted");

    QTest::newRow("just fits") << int{WaitingLimit::MaxBytes} - 1024 << true;
    QTest::newRow("as large as the limit") << int{WaitingLimit::MaxBytes} << false;
    QTest::newRow("40 MiB") << 40 * Megabyte << false;
}

void TestWaitingList::takes_no_single_request_beyond_the_size()
{
    QFETCH(int, bytes);
    QFETCH(bool, isAccepted);
    const QString name(bytes / int{sizeof(QChar)}, QLatin1Char('a'));
    WaitingList<QString> list;

    for (int attempt = 0; attempt < 2; ++attempt) {
        QCOMPARE(list.add(name), isAccepted);
        QCOMPARE(list.isEmpty(), !isAccepted);
        QCOMPARE(takeLog(QtWarningMsg), isAccepted ? QStringList() : QStringList(Full));
        if (isAccepted)
            list.takeFirst();
    }
}

void TestWaitingList::takes_a_small_request_where_a_large_one_finds_no_room()
{
    WaitingList<QString> list;
    accepted(list, megabyte());
    QCOMPARE(takeLog(QtWarningMsg), QStringList(Full));

    QVERIFY(list.add(QStringLiteral("a")));
    QVERIFY(!list.add(megabyte()));
}

void TestWaitingList::counts_the_room_that_a_text_keeps()
{
    // As a caller sends it: of three bytes a character, which are counted before they are read.
    const QString euros = QString::fromUtf8(QByteArray("\xe2\x82\xac").repeated(Megabyte / 6));
    QCOMPARE(euros.size(), Megabyte / 6);
    WaitingList<QString> list;

    QVERIFY(accepted(list, euros) <= MegabytesAccepted + 1);
    QCOMPARE(takeLog(QtWarningMsg), QStringList(Full));
}

void TestWaitingList::package_requests_are_limited()
{
    const QString next = QStringLiteral("/next.apk");
    const PackageMod small{QString(1000, QLatin1Char('a')), true, false};
    PackageRequests requests;
    QVERIFY(requests.hasRoomFor(next));
    QCOMPARE(accepted(requests, PackageMod{megabyte(), true, false}), MegabytesAccepted);
    QCOMPARE(takeLog(QtWarningMsg), QStringList(Full));

    while (requests.hasRoomFor(next))
        QVERIFY(requests.add(small));
    QVERIFY(takeLogLine(QtCriticalMsg,
                        QStringLiteral("Too many requests wait for the runtime, refusing: "
                                       "\"/next.apk\"")));
    // Shorter of room by no more than the last one took, it still has some for the path by which
    // the runtime will know the file.
    QVERIFY(requests.add({QString(3000, QLatin1Char('p')), true, false}));

    requests.release([](const PackageMod &) { return true; });
    QVERIFY(requests.hasRoomFor(next));
    QVERIFY(!requests.hasRoomFor(QString(20 * Megabyte, QLatin1Char('a'))));
    QCOMPARE(takeLog(QtCriticalMsg).size(), 1);
}

void TestWaitingList::intents_are_limited()
{
    IntentQueue queue;
    QCOMPARE(accepted(queue, Intent()), WaitingLimit::MaxRequests);
    QCOMPARE(takeLog(QtWarningMsg), QStringList(Full));

    queue.workThrough([](const Intent &) { return true; });
    QVERIFY(queue.add(Intent()));
}

QTEST_GUILESS_MAIN(TestWaitingList)
#include "test_waitinglist.moc"
