#include "binder/umbrabinderconnection.h"
#include "binder/umbrabindertransaction.h"
#include "fakes/fakebinder.h"
#include "fakes/runtimehost.h"
#include "platform/binder/localobject.h"
#include "platform/binder/message.h"
#include "platform/binder/servicemanager.h"
#include "support/testcase.h"

#include <QPointer>
#include <QtTest>

namespace {

const QString Category = QStringLiteral("com.corvo.bramd.binder");

constexpr bool OneWay = true;
constexpr bool TwoWay = false;

/// A connected service.
struct Thing
{
    FakeBinder binder;
    std::shared_ptr<FakeObject> object = binder.addService("thing");
    std::unique_ptr<UmbraBinderConnection> connection =
        std::make_unique<UmbraBinderConnection>("thing", "test.IThing", true);
};

FakeParcel token()
{
    return FakeParcel().token(QStringLiteral("test.IThing"), {0x00400000});
}

} // namespace

class UmbraBinderTransactionTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void sendsTheRequestAndReadsTheReply();
    void sendsOneWay();
    void runsOnlyOnce();
    void runsOnlyOnceOneWay();
    void runsOnlyOnceEvenIfItFailed();
    void hasNoReplyBeforeItRan();
    void reportsTheStatusSentInPlaceOfAReply();
    void reportsADeadService();
    void reportsAFailedOneWayCall();
    void failsWithoutSendingOnceTheConnectionIsGone();
    void failsWhenTheServiceDiedMeanwhile();
    void isNotMadeWithoutAClient();
    void isAChildOfTheConnection();
    void logsItsDestruction();
    void survivesTheEndOfTheConnectionInsideItsCall();

private:
    RuntimeHost m_host;
};

void UmbraBinderTransactionTest::initTestCase()
{
    QVERIFY(m_host.start());
}

void UmbraBinderTransactionTest::init()
{
    TestCase::init();
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
}

void UmbraBinderTransactionTest::sendsTheRequestAndReadsTheReply()
{
    Thing thing;
    thing.object->setReply(5,
                           FakeReply::data(FakeParcel().int32(42).string16(QStringLiteral("a"))));
    UmbraBinderTransaction *transaction = thing.connection->createTransaction(5, TwoWay);

    transaction->request().writeInt32(1);
    transaction->request().writeString(QStringLiteral("b"));
    QCOMPARE(transaction->execute(), 0);

    QCOMPARE(transaction->reply().readInt32(), 42);
    QCOMPARE(transaction->reply().readString(), QStringLiteral("a"));
    const auto sent = thing.object->takeTransactions();
    QCOMPARE(sent.size(), std::size_t(1));
    QCOMPARE(sent.front().code, 5U);
    QVERIFY(!sent.front().isOneWay());
    QCOMPARE(sent.front().data, token().int32(1).string16(QStringLiteral("b")).data());
}

void UmbraBinderTransactionTest::sendsOneWay()
{
    Thing thing;
    UmbraBinderTransaction *transaction = thing.connection->createTransaction(6, OneWay);

    transaction->request().writeInt32(1);
    QCOMPARE(transaction->execute(), 0);

    const auto sent = thing.object->takeTransactions();
    QCOMPARE(sent.size(), std::size_t(1));
    QCOMPARE(sent.front().code, 6U);
    QVERIFY(sent.front().isOneWay());
    QCOMPARE(sent.front().data, token().int32(1).data());
    QCOMPARE(transaction->reply().readInt32(), -1);
}

void UmbraBinderTransactionTest::runsOnlyOnce()
{
    Thing thing;
    thing.object->setReply(5, FakeReply::data(FakeParcel().int32(42)));
    UmbraBinderTransaction *transaction = thing.connection->createTransaction(5, TwoWay);
    QCOMPARE(transaction->execute(), 0);

    QCOMPARE(transaction->execute(), -1);

    QCOMPARE(thing.object->transactions().size(), std::size_t(1));
    QCOMPARE(transaction->reply().readInt32(), 42);
}

void UmbraBinderTransactionTest::runsOnlyOnceOneWay()
{
    Thing thing;
    UmbraBinderTransaction *transaction = thing.connection->createTransaction(5, OneWay);
    QCOMPARE(transaction->execute(), 0);

    QCOMPARE(transaction->execute(), -1);

    QCOMPARE(thing.object->transactions().size(), std::size_t(1));
}

void UmbraBinderTransactionTest::runsOnlyOnceEvenIfItFailed()
{
    Thing thing;
    thing.object->setReply(5, FakeReply::statusCode(-22));
    UmbraBinderTransaction *transaction = thing.connection->createTransaction(5, TwoWay);
    QCOMPARE(transaction->execute(), -22);

    QCOMPARE(transaction->execute(), -1);

    QCOMPARE(thing.object->transactions().size(), std::size_t(1));
}

void UmbraBinderTransactionTest::hasNoReplyBeforeItRan()
{
    Thing thing;
    UmbraBinderTransaction *transaction = thing.connection->createTransaction(5, TwoWay);

    QCOMPARE(transaction->reply().readInt32(), -1);
    QVERIFY(transaction->reply().readString().isNull());
}

void UmbraBinderTransactionTest::reportsTheStatusSentInPlaceOfAReply()
{
    Thing thing;
    thing.object->setReply(5, FakeReply::statusCode(-74));
    UmbraBinderTransaction *transaction = thing.connection->createTransaction(5, TwoWay);
    takeLog(QtDebugMsg);

    QCOMPARE(transaction->execute(), -74);

    QCOMPARE(takeLog(QtDebugMsg, Category), QStringList(QStringLiteral("No reply available")));
    QCOMPARE(transaction->reply().readInt32(), -1);
}

void UmbraBinderTransactionTest::reportsADeadService()
{
    Thing thing;
    thing.object->setReply(5, FakeReply::dead());
    UmbraBinderTransaction *transaction = thing.connection->createTransaction(5, TwoWay);
    takeLog(QtDebugMsg);

    QCOMPARE(transaction->execute(), -32);

    QCOMPARE(takeLog(QtDebugMsg, Category), QStringList(QStringLiteral("No reply available")));
}

void UmbraBinderTransactionTest::reportsAFailedOneWayCall()
{
    Thing thing;
    thing.object->setReply(5, FakeReply::failed());
    UmbraBinderTransaction *transaction = thing.connection->createTransaction(5, OneWay);
    takeLog(QtDebugMsg);

    QCOMPARE(transaction->execute(), -2147483646);

    QCOMPARE(takeLog(QtDebugMsg, Category), QStringList()); // no reply was due
    QCOMPARE(takeLog(QtWarningMsg).size(), 1);              // of the driver's refusal
}

void UmbraBinderTransactionTest::failsWithoutSendingOnceTheConnectionIsGone()
{
    Thing thing;
    UmbraBinderTransaction *transaction = thing.connection->createTransaction(5, TwoWay);

    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));

    transaction->request().writeInt32(1);
    QCOMPARE(transaction->execute(), -1);
    QCOMPARE(thing.object->transactions().size(), std::size_t(0));
}

void UmbraBinderTransactionTest::failsWhenTheServiceDiedMeanwhile()
{
    Thing thing;
    UmbraBinderTransaction *transaction = thing.connection->createTransaction(5, TwoWay);
    QSignalSpy changed(thing.connection.get(), &UmbraBinderConnection::connectionChanged);

    const auto heir = thing.binder.addService("thing");
    thing.binder.kill(thing.object);
    QTRY_COMPARE(changed.count(), 2); // down and up again
    QCOMPARE(takeLog(QtWarningMsg, Category).size(), 1);

    QCOMPARE(transaction->execute(), -1);
    QCOMPARE(heir->transactions().size(), std::size_t(0));
}

void UmbraBinderTransactionTest::isNotMadeWithoutAClient()
{
    QVERIFY(m_host.setUnitState(QStringLiteral("inactive")));
    Thing thing;

    QVERIFY(thing.connection->createTransaction(5, TwoWay) == nullptr);
}

void UmbraBinderTransactionTest::isAChildOfTheConnection()
{
    Thing thing;
    QPointer<UmbraBinderTransaction> transaction = thing.connection->createTransaction(5, TwoWay);
    QCOMPARE(transaction->parent(), thing.connection.get());

    thing.connection.reset();

    QVERIFY(transaction.isNull());
}

void UmbraBinderTransactionTest::logsItsDestruction()
{
    Thing thing;
    UmbraBinderTransaction *transaction = thing.connection->createTransaction(5, TwoWay);
    takeLog(QtDebugMsg);

    delete transaction;

    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList(QStringLiteral("Destroying transaction 5")));
}

void UmbraBinderTransactionTest::survivesTheEndOfTheConnectionInsideItsCall()
{
    Thing thing;
    const auto manager = Binder::ServiceManager::open("/dev/marshhopper");
    const auto called = manager->createLocalObject(
        "test.ICaller", [&](Binder::IncomingRequest &, quint32, quint32, Binder::Status *) {
            thing.connection.reset(); // and the transaction with it
            return std::unique_ptr<Binder::OutgoingReply>();
        });
    thing.object->setHandler([](const FakeTransaction &transaction) {
        return FakeReply::afterCall(
            transaction.sentObjects().front(), 1,
            FakeParcel().token(QStringLiteral("test.ICaller"), {0}),
            [](const FakeAnswer &) { return FakeReply::data(FakeParcel().int32(42)); });
    });
    QPointer<UmbraBinderTransaction> transaction = thing.connection->createTransaction(5, TwoWay);
    transaction->request().writeLocalObject(called.get());

    QCOMPARE(transaction->execute(), 0);

    QVERIFY(transaction.isNull());
}

QTEST_GUILESS_MAIN(UmbraBinderTransactionTest)
#include "tst_umbrabindertransaction.moc"
