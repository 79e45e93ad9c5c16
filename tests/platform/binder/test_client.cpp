#include "fakes/fakebinder.h"
#include "platform/binder/client.h"
#include "platform/binder/localobject.h"
#include "platform/binder/remoteobject.h"
#include "platform/binder/servicemanager.h"
#include "platform/binder/servicename.h"
#include "support/testcase.h"

#include <QtTest>

using namespace Binder;

namespace {

constexpr char Device[] = "/dev/marshhopper";
constexpr char Descriptor[] = "test.IThing";

} // namespace

class TestClient : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void requestsBeginWithTheToken();
    void repliesAreRead();
    void callsBackAreServedInsideACall();
};

void TestClient::requestsBeginWithTheToken()
{
    FakeBinder binder;
    const auto thing = binder.addService("thing");
    const auto manager = ServiceManager::open(Device);
    const auto client = Client::create(manager->getService("thing"), Descriptor);

    const auto request = client->createRequest();
    request->writer().appendInt32(7);
    QVERIFY(client->transact(5, *request) != nullptr);

    QCOMPARE(thing->transactions().size(), std::size_t(1));
    QCOMPARE(thing->transactions().front().code, 5u);
    QCOMPARE(thing->transactions().front().flags, 0u);
    QCOMPARE(thing->transactions().front().data,
             FakeParcel().token(QStringLiteral("test.IThing"), {0x00400000}).int32(7).data());
}

void TestClient::repliesAreRead()
{
    FakeBinder binder;
    const auto thing = binder.addService("thing");
    thing->setReply(5, FakeReply::data(FakeParcel().int32(0).string16(QStringLiteral("ab"))));
    const auto manager = ServiceManager::open(Device);
    const auto client = Client::create(manager->getService("thing"), Descriptor);

    Status status = StatusRefused;
    const auto reply = client->transact(5, *client->createRequest(), &status);

    QVERIFY(reply != nullptr);
    QCOMPARE(status, StatusOk);
    qint32 exception = -1;
    QVERIFY(reply->readInt32(&exception));
    QCOMPARE(exception, 0);
}

void TestClient::callsBackAreServedInsideACall()
{
    FakeBinder binder;
    const auto thing = binder.addService("thing");
    const auto manager = ServiceManager::open(Device);
    const auto client = Client::create(manager->getService("thing"), Descriptor);
    int served = 0;
    std::unique_ptr<LocalObject> observer;
    observer = manager->createLocalObject(
        "test.IObserver", [&](IncomingRequest &request, quint32 code, quint32, Status *) {
            ++served;
            qint32 value = 0;
            Reader reader = request.reader();
            const bool read = reader.readInt32(&value);
            auto reply = observer->createReply();
            reply->writer().appendInt32(
                code == 2 && read && request.interfaceToken() == "test.IObserver" ? value + 1 : -1);
            return reply;
        });
    thing->setHandler([&](const FakeTransaction &transaction) {
        const quint64 object = transaction.sentObjects().front();
        return FakeReply::afterCall(
            object, 2, FakeParcel().token(QStringLiteral("test.IObserver")).int32(41),
            [](const FakeAnswer &answer) { return FakeReply::data(FakeParcel(answer.data)); });
    });

    const auto request = client->createRequest();
    request->writer().appendLocalObject(observer.get());
    const auto reply = client->transact(5, *request);

    QCOMPARE(served, 1);
    QVERIFY(reply != nullptr);
    qint32 value = 0;
    QVERIFY(reply->readInt32(&value));
    QCOMPARE(value, 42);
}

QTEST_GUILESS_MAIN(TestClient)
#include "test_client.moc"
