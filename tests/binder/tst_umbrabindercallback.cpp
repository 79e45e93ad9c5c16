#include "binder/binderparcel.h"
#include "binder/umbrabindercallback.h"
#include "binder/umbrabinderconnection.h"
#include "binder/umbrabindertransaction.h"
#include "fakes/fakebinder.h"
#include "fakes/runtimehost.h"
#include "support/testcase.h"

#include <QPointer>
#include <QtTest>

namespace {

constexpr char Descriptor[] = "test.ICallback";

class Doubler : public UmbraBinderCallbackHandler
{
public:
    bool processRequest(quint32 code, BinderParcel *request, BinderParcel *reply) override
    {
        codes.append(code);
        reply->writeInt32(2 * request->readInt32());
        return code == 1;
    }

    QVector<quint32> codes;
};

FakeParcel token()
{
    return FakeParcel().token(QLatin1String(Descriptor), {0});
}

} // namespace

class UmbraBinderCallbackTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void isCalledThroughTheReferenceInARequest();
    void refusesWithStatusOne();
    void servesOneWayCallsWithoutAnAnswer();
    void isNotMadeWithoutAClient();
    void isDroppedWithTheConnection();

private:
    RuntimeHost m_host;
};

void UmbraBinderCallbackTest::initTestCase()
{
    QVERIFY(m_host.start());
}

void UmbraBinderCallbackTest::init()
{
    TestCase::init();
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
}

void UmbraBinderCallbackTest::isCalledThroughTheReferenceInARequest()
{
    FakeBinder binder;
    const auto thing = binder.addService("thing");
    UmbraBinderConnection connection("thing", "test.IThing", true);
    Doubler doubler;
    UmbraBinderCallback *callback = connection.createCallback(Descriptor, &doubler);
    QCOMPARE(callback->parent(), &connection);
    UmbraBinderTransaction *transaction = connection.createTransaction(5, false);
    transaction->request().writeLocalObject(callback->localObject());
    QCOMPARE(transaction->execute(), 0);

    const quint64 object = thing->takeTransactions().front().sentObjects().front();
    const auto answer = binder.call(object, 1, token().int32(21));

    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(answer->status, 0);
    QCOMPARE(answer->data, FakeParcel().int32(42).data());
}

void UmbraBinderCallbackTest::refusesWithStatusOne()
{
    FakeBinder binder;
    const auto thing = binder.addService("thing");
    UmbraBinderConnection connection("thing", "test.IThing", true);
    Doubler doubler;
    UmbraBinderCallback *callback = connection.createCallback(Descriptor, &doubler);
    UmbraBinderTransaction *transaction = connection.createTransaction(5, false);
    transaction->request().writeLocalObject(callback->localObject());
    QCOMPARE(transaction->execute(), 0);

    const auto answer = binder.call(callback->localObject()->id(), 2, token().int32(21));

    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(answer->status, 1);
}

void UmbraBinderCallbackTest::servesOneWayCallsWithoutAnAnswer()
{
    FakeBinder binder;
    const auto thing = binder.addService("thing");
    UmbraBinderConnection connection("thing", "test.IThing", true);
    Doubler doubler;
    UmbraBinderCallback *callback = connection.createCallback(Descriptor, &doubler);
    UmbraBinderTransaction *transaction = connection.createTransaction(5, false);
    transaction->request().writeLocalObject(callback->localObject());
    QCOMPARE(transaction->execute(), 0);

    const auto answer =
        binder.call(callback->localObject()->id(), 1, token().int32(21), Binder::FlagOneWay);

    QTRY_COMPARE(doubler.codes, QVector<quint32>({1}));
    QTRY_VERIFY(binder.isIdle());
    QCOMPARE(answer->count, 0);
}

void UmbraBinderCallbackTest::isNotMadeWithoutAClient()
{
    FakeBinder binder;
    UmbraBinderConnection connection("thing", "test.IThing", true);
    Doubler doubler;

    QVERIFY(connection.createCallback(Descriptor, &doubler) == nullptr);
}

void UmbraBinderCallbackTest::isDroppedWithTheConnection()
{
    FakeBinder binder;
    const auto thing = binder.addService("thing");
    UmbraBinderConnection connection("thing", "test.IThing", true);
    Doubler doubler;
    QPointer<UmbraBinderCallback> callback = connection.createCallback(Descriptor, &doubler);
    QVERIFY(callback->localObject() != nullptr);

    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));

    QVERIFY(!callback.isNull());
    QVERIFY(callback->localObject() == nullptr);
    QVERIFY(!binder.isOpen());
}

QTEST_GUILESS_MAIN(UmbraBinderCallbackTest)
#include "tst_umbrabindercallback.moc"
