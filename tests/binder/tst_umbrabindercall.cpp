#include "binder/umbrabindercall.h"
#include "binder/umbrabinderconnection.h"
#include "fakes/fakebinder.h"
#include "fakes/runtimehost.h"
#include "platform/binder/localobject.h"
#include "platform/binder/servicemanager.h"
#include "support/testcase.h"

#include <QtTest>

class UmbraBinderCallTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void sendsItsFieldsAndReturnsTheReply();
    void returnsTheStatusSentInPlaceOfAReply();
    void isNotPossibleWithoutAConnection();
    void survivesTheEndOfTheConnection();

private:
    RuntimeHost m_host;
    FakeBinder m_binder;
    std::shared_ptr<FakeObject> m_object;
    std::unique_ptr<UmbraBinderConnection> m_connection;
};

void UmbraBinderCallTest::initTestCase()
{
    QVERIFY(m_host.start());
}

void UmbraBinderCallTest::init()
{
    TestCase::init();
    m_object = m_binder.addService("thing");
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    m_connection = std::make_unique<UmbraBinderConnection>("thing", "test.IThing", true);
}

void UmbraBinderCallTest::sendsItsFieldsAndReturnsTheReply()
{
    m_object->setReply(5, FakeReply::data(FakeParcel().int32(42)));

    UmbraBinderCall call(*m_connection);
    QVERIFY(call.isPossible());
    call.fields().writeInt32(1);
    Binder::Status status = -1;
    const auto reply = call.send(5, &status);

    QCOMPARE(status, Binder::StatusOk);
    QVERIFY(reply != nullptr);
    QCOMPARE(BinderParcel(*reply).readInt32(), 42);
    const auto sent = m_object->takeTransactions();
    QCOMPARE(sent.size(), std::size_t(1));
    QCOMPARE(sent.front().code, 5U);
    QVERIFY(!sent.front().isOneWay());
    QCOMPARE(sent.front().data,
             FakeParcel().token(QStringLiteral("test.IThing"), {0x00400000}).int32(1).data());
}

void UmbraBinderCallTest::returnsTheStatusSentInPlaceOfAReply()
{
    m_object->setReply(5, FakeReply::statusCode(-74));

    UmbraBinderCall call(*m_connection);
    Binder::Status status = Binder::StatusOk;

    QVERIFY(call.send(5, &status) == nullptr);
    QCOMPARE(status, -74);
}

void UmbraBinderCallTest::isNotPossibleWithoutAConnection()
{
    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));

    UmbraBinderCall call(*m_connection);
    QVERIFY(!call.isPossible());
    call.fields().writeInt32(1);
    Binder::Status status = Binder::StatusOk;

    QVERIFY(call.send(5, &status) == nullptr);
    QCOMPARE(status, Binder::StatusDeadObject);
    QVERIFY(call.send(5) == nullptr);
    QCOMPARE(m_object->transactions().size(), std::size_t(0));
}

void UmbraBinderCallTest::survivesTheEndOfTheConnection()
{
    const auto manager = Binder::ServiceManager::open("/dev/marshhopper");
    const auto called = manager->createLocalObject(
        "test.ICaller", [&](Binder::IncomingRequest &, quint32, quint32, Binder::Status *) {
            m_connection.reset();
            return std::unique_ptr<Binder::OutgoingReply>();
        });
    m_object->setHandler([](const FakeTransaction &transaction) {
        return FakeReply::afterCall(
            transaction.sentObjects().front(), 1,
            FakeParcel().token(QStringLiteral("test.ICaller"), {0}),
            [](const FakeAnswer &) { return FakeReply::data(FakeParcel().int32(42)); });
    });

    UmbraBinderCall call(*m_connection);
    call.fields().writeLocalObject(called.get());
    Binder::Status status = -1;
    const auto reply = call.send(5, &status);

    QVERIFY(m_connection == nullptr);
    QCOMPARE(status, Binder::StatusOk);
    QCOMPARE(BinderParcel(*reply).readInt32(), 42);
}

QTEST_GUILESS_MAIN(UmbraBinderCallTest)
#include "tst_umbrabindercall.moc"
