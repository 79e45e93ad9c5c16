#include "platform/binder/outgoingdata.h"
#include "platform/binder/phone.h"
#include "platform/binder/sdklevel.h"
#include "support/testcase.h"

#include <QtTest>

#include <fcntl.h>
#include <unistd.h>

using namespace Binder;

Q_DECLARE_METATYPE(FakeReply)

class TestClient : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void clientsNeedAnObjectAndADescriptor();
    void requestsBeginWithTheToken();
    void repliesAreRead();
    void emptyRepliesAreReplies();
    void failuresGiveAStatusAndNoReply_data();
    void failuresGiveAStatusAndNoReply();
    void objectsInRepliesCanBeCalled();
    void ownObjectsComeHomeAsNull();
    void remoteObjectsAreOnePerHandle();
    void oneWayCallsDoNotWait();
    void oneWayCallsTellWhyTheyWereNotTaken();
    void callsBackAreServedInsideACall();
    void callsBackIntoCallsBackAreServed();
    void endlessCallsBackAreRefused();
    void oneWayCallsFromACallBackKnowTheirOwnCompletion();
    void theClientMayBeDeletedByACallBack();
    void tooLargeRequestsAreRefused();
    void unexpectedFileDescriptorsAreClosed();
    void theDriversQuirksAreHarmless_data();
    void theDriversQuirksAreHarmless();
    void callsDoNotWaitWhileCommandsAreHeldUp();
    void callsReadOnlyWhatIsThere();
    void aLostDeviceFailsEveryCall();
    void repliesMayOutliveEverything();
};

void TestClient::clientsNeedAnObjectAndADescriptor()
{
    Phone phone;
    QVERIFY(Client::create(nullptr, Phone::Descriptor) == nullptr);
    QVERIFY(Client::create(phone.manager->getService("thing"), "") == nullptr);
    QVERIFY(Client::create(phone.manager->getService("thing"), nullptr) == nullptr);
    phone.binder.contextManager()->takeTransactions();
}

void TestClient::requestsBeginWithTheToken()
{
    Phone phone;
    for (const int level : {0, 27, 28, 29, 30}) {
        setSdkLevelSource([level] { return level; });
        const auto request = phone.client->createRequest();
        setSdkLevelSource(nullptr);
        request->writer().appendInt32(7);
        QVERIFY(phone.client->transact(5, *request) != nullptr);

        const std::vector<FakeTransaction> sent = phone.thing->takeTransactions();
        QCOMPARE(sent.size(), std::size_t(1));
        QCOMPARE(sent.front().code, 5u);
        QCOMPARE(sent.front().flags, 0u);
        const std::vector<qint32> words =
            level < 29 ? std::vector<qint32>{0x00400000}
                       : std::vector<qint32>{std::numeric_limits<qint32>::min(), -1};
        QCOMPARE(sent.front().data,
                 FakeParcel().token(QStringLiteral("test.IThing"), words).int32(7).data());
    }
}

void TestClient::repliesAreRead()
{
    Phone phone;
    phone.thing->setReply(5, FakeReply::data(FakeParcel().int32(9).string16(QStringLiteral("ab"))));

    Status status = StatusRefused;
    const auto reply = phone.client->transact(5, *phone.client->createRequest(), &status);

    QVERIFY(reply != nullptr);
    QCOMPARE(status, StatusOk);
    qint32 word = 0;
    QVERIFY(reply->readInt32(&word));
    QCOMPARE(word, 9);
    Reader reader = reply->reader();
    QVERIFY(reader.readInt32(&word));
    const char16_t *units = nullptr;
    int length = 0;
    QVERIFY(reader.readString16(&units, &length));
    QCOMPARE(QString::fromUtf16(units, length), QStringLiteral("ab"));
    QVERIFY(reader.atEnd());
}

void TestClient::emptyRepliesAreReplies()
{
    Phone phone;
    const auto reply = phone.client->transact(5, *phone.client->createRequest());

    QVERIFY(reply != nullptr);
    qint32 word = 42;
    QVERIFY(!reply->readInt32(&word));
    QCOMPARE(word, 42);
    QVERIFY(reply->reader().atEnd());
}

void TestClient::failuresGiveAStatusAndNoReply_data()
{
    QTest::addColumn<FakeReply>("answer");
    QTest::addColumn<Status>("expected");

    QTest::newRow("unknown code") << FakeReply::statusCode(-74) << StatusUnknownTransaction;
    QTest::newRow("positive status") << FakeReply::statusCode(1) << StatusRefused;
    QTest::newRow("died while serving") << FakeReply::dead() << StatusDeadObject;
    QTest::newRow("refused by the driver") << FakeReply::failed() << StatusFailedTransaction;
    QTest::newRow("frozen") << FakeReply::frozen() << StatusFailedTransaction;
}

void TestClient::failuresGiveAStatusAndNoReply()
{
    QFETCH(FakeReply, answer);
    QFETCH(Status, expected);
    Phone phone;
    phone.thing->setReply(5, answer);

    Status status = StatusOk;
    QVERIFY(phone.client->transact(5, *phone.client->createRequest(), &status) == nullptr);
    QCOMPARE(status, expected);
    QCOMPARE(isOneRefusal(takeLog(QtWarningMsg), 5), status == StatusFailedTransaction);

    // and the next call is not disturbed
    QVERIFY(phone.client->transact(6, *phone.client->createRequest(), &status) != nullptr);
    QCOMPARE(status, StatusOk);
    QCOMPARE(phone.client->transactOneWay(7, *phone.client->createRequest()), StatusOk);
}

void TestClient::objectsInRepliesCanBeCalled()
{
    Phone phone;
    const auto inner = std::make_shared<FakeObject>();
    phone.thing->setReply(5, FakeReply::data(FakeParcel().int32(0).object(inner).nullObject()));

    std::shared_ptr<RemoteObject> object;
    {
        const auto reply = phone.client->transact(5, *phone.client->createRequest());
        Reader reader = reply->reader();
        qint32 word = 0;
        QVERIFY(reader.readInt32(&word));
        QVERIFY(reader.readNullableObject(&object));
        QVERIFY(object != nullptr);
        std::shared_ptr<RemoteObject> null = object;
        QVERIFY(reader.readNullableObject(&null));
        QVERIFY(null == nullptr);
    }
    const auto client = Client::create(std::move(object), "test.IInner");
    QVERIFY(client->transact(1, *client->createRequest()) != nullptr);
    QCOMPARE(inner->transactions().size(), std::size_t(1));
}

void TestClient::ownObjectsComeHomeAsNull()
{
    Phone phone;
    const auto own = phone.manager->createLocalObject(
        "test.IOwn", [](IncomingRequest &, quint32, quint32, Status *) { return nullptr; });
    phone.thing->setHandler([](const FakeTransaction &transaction) {
        return FakeReply::data(FakeParcel().ownObject(transaction.sentObjects().front()));
    });
    const auto request = phone.client->createRequest();
    request->writer().appendLocalObject(own.get());

    const auto reply = phone.client->transact(5, *request);
    std::shared_ptr<RemoteObject> object = phone.manager->getService("thing");
    Reader reader = reply->reader();
    QVERIFY(reader.readNullableObject(&object));
    QVERIFY(object == nullptr);
}

void TestClient::remoteObjectsAreOnePerHandle()
{
    Phone phone;
    phone.binder.setService("alias", phone.thing);
    const auto other = phone.binder.addService("other");

    const auto thing = phone.manager->getService("thing");
    QCOMPARE(phone.manager->getService("alias").get(), thing.get());
    QVERIFY(phone.manager->getService("other") != thing);
}

void TestClient::oneWayCallsDoNotWait()
{
    Phone phone;
    phone.thing->setReply(5, FakeReply::data(FakeParcel().int32(1)));

    QCOMPARE(phone.client->transactOneWay(5, *phone.client->createRequest()), StatusOk);
    QCOMPARE(phone.thing->transactions().size(), std::size_t(1));
    QCOMPARE(phone.thing->transactions().front().flags, FlagOneWay);
}

void TestClient::oneWayCallsTellWhyTheyWereNotTaken()
{
    Phone phone;
    phone.thing->setReply(5, FakeReply::failed());
    QCOMPARE(phone.client->transactOneWay(5, *phone.client->createRequest()),
             StatusFailedTransaction);
    QVERIFY(isOneRefusal(takeLog(QtWarningMsg), 5));
    phone.binder.kill(phone.thing);
    QCOMPARE(phone.client->transactOneWay(6, *phone.client->createRequest()), StatusDeadObject);
}

void TestClient::callsBackAreServedInsideACall()
{
    Phone phone;
    int served = 0;
    std::unique_ptr<LocalObject> observer;
    observer = phone.manager->createLocalObject(
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
    phone.thing->setHandler([](const FakeTransaction &transaction) {
        return FakeReply::afterCall(
            transaction.sentObjects().front(), 2,
            FakeParcel().token(QStringLiteral("test.IObserver")).int32(41),
            [](const FakeAnswer &answer) { return FakeReply::data(FakeParcel(answer.data)); });
    });

    const auto request = phone.client->createRequest();
    request->writer().appendLocalObject(observer.get());
    const auto reply = phone.client->transact(5, *request);

    QCOMPARE(served, 1);
    QVERIFY(reply != nullptr);
    qint32 value = 0;
    QVERIFY(reply->readInt32(&value));
    QCOMPARE(value, 42);
}

void TestClient::callsBackIntoCallsBackAreServed()
{
    Phone phone;
    std::unique_ptr<LocalObject> observer;
    observer = phone.manager->createLocalObject(
        "test.IObserver", [&](IncomingRequest &, quint32, quint32, Status *) {
            const auto inner = phone.client->transact(6, *phone.client->createRequest());
            qint32 value = 0;
            if (inner != nullptr)
                inner->readInt32(&value);
            auto reply = observer->createReply();
            reply->writer().appendInt32(value + 1);
            return reply;
        });
    phone.thing->setReply(6, FakeReply::data(FakeParcel().int32(6)));
    phone.thing->setHandler([](const FakeTransaction &transaction) {
        return FakeReply::afterCall(
            transaction.sentObjects().front(), 2, FakeParcel(),
            [](const FakeAnswer &answer) { return FakeReply::data(FakeParcel(answer.data)); });
    });

    const auto request = phone.client->createRequest();
    request->writer().appendLocalObject(observer.get());
    const auto reply = phone.client->transact(5, *request);
    qint32 value = 0;
    QVERIFY(reply != nullptr && reply->readInt32(&value));
    QCOMPARE(value, 7);
}

void TestClient::endlessCallsBackAreRefused()
{
    Phone phone;
    int served = 0;
    std::unique_ptr<LocalObject> observer;
    const auto callOut = [&] {
        const auto request = phone.client->createRequest();
        request->writer().appendLocalObject(observer.get());
        return phone.client->transact(5, *request);
    };
    observer = phone.manager->createLocalObject("test.IObserver",
                                                [&](IncomingRequest &, quint32, quint32, Status *) {
                                                    ++served;
                                                    callOut();
                                                    return observer->createReply();
                                                });
    int refused = 0;
    phone.thing->setHandler([&](const FakeTransaction &transaction) {
        return FakeReply::afterCall(transaction.sentObjects().front(), 2, FakeParcel(),
                                    [&](const FakeAnswer &answer) {
                                        refused += answer.status == StatusFailedTransaction ? 1 : 0;
                                        return FakeReply();
                                    });
    });

    QVERIFY(callOut() != nullptr);
    QCOMPARE(served, 16);
    QCOMPARE(refused, 1);
    QVERIFY(takeLogLine(QtWarningMsg,
                        QStringLiteral("Call 2 to \"test.IObserver\" is nested too deeply")));
}

void TestClient::oneWayCallsFromACallBackKnowTheirOwnCompletion()
{
    Phone phone;
    Status sent = StatusRefused;
    std::unique_ptr<LocalObject> observer;
    observer = phone.manager->createLocalObject(
        "test.IObserver", [&](IncomingRequest &, quint32, quint32, Status *) {
            sent = phone.client->transactOneWay(6, *phone.client->createRequest());
            return observer->createReply();
        });
    phone.thing->setReply(6, FakeReply::failed());
    phone.thing->setHandler([](const FakeTransaction &transaction) {
        const quint64 object = transaction.sentObjects().front();
        return FakeReply::afterCall(object, 2, FakeParcel(), [object](const FakeAnswer &) {
            // the completion of our first answer is still unread when this one is served
            return FakeReply::afterCall(object, 2, FakeParcel(),
                                        [](const FakeAnswer &) { return FakeReply(); });
        });
    });

    const auto request = phone.client->createRequest();
    request->writer().appendLocalObject(observer.get());
    QVERIFY(phone.client->transact(5, *request) != nullptr);
    QCOMPARE(sent, StatusFailedTransaction);
    QCOMPARE(takeLog(QtWarningMsg).size(), 2);
}

void TestClient::theClientMayBeDeletedByACallBack()
{
    Phone phone;
    std::unique_ptr<LocalObject> observer;
    observer = phone.manager->createLocalObject("test.IObserver",
                                                [&](IncomingRequest &, quint32, quint32, Status *) {
                                                    phone.client.reset();
                                                    phone.manager.reset();
                                                    observer.reset();
                                                    return nullptr;
                                                });
    phone.thing->setHandler([](const FakeTransaction &transaction) {
        return FakeReply::afterCall(
            transaction.sentObjects().front(), 2, FakeParcel(),
            [](const FakeAnswer &) { return FakeReply::data(FakeParcel().int32(3)); });
    });

    const auto request = phone.client->createRequest();
    request->writer().appendLocalObject(observer.get());
    auto reply = phone.client->transact(5, *request);
    qint32 value = 0;
    QVERIFY(reply != nullptr && reply->readInt32(&value));
    QCOMPARE(value, 3);
    QVERIFY(phone.binder.isOpen());
    reply.reset();
    QVERIFY(!phone.binder.isOpen());
}

void TestClient::tooLargeRequestsAreRefused()
{
    Phone phone;
    const auto request = phone.client->createRequest();
    request->writer().appendByteArray(QByteArray(static_cast<int>(OutgoingData::MaxSize), 'x'));

    Status status = StatusOk;
    QVERIFY(phone.client->transact(5, *request, &status) == nullptr);
    QCOMPARE(status, StatusFailedTransaction);
    QVERIFY(phone.thing->transactions().empty());
    QCOMPARE(takeLog(QtWarningMsg),
             QStringList{QStringLiteral("Request 5 is too large to be sent")});
}

void TestClient::unexpectedFileDescriptorsAreClosed()
{
    Phone phone;
    const int descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    phone.thing->setReply(5, FakeReply::data(FakeParcel().int32(0).fileDescriptor(descriptor)));

    auto reply = phone.client->transact(5, *phone.client->createRequest());
    QVERIFY(::fcntl(descriptor, F_GETFD) >= 0);
    reply.reset();
    QCOMPARE(::fcntl(descriptor, F_GETFD), -1);
}

void TestClient::theDriversQuirksAreHarmless_data()
{
    QTest::addColumn<bool>("shortWrites");
    QTest::addColumn<int>("interruptedReads");
    QTest::addColumn<int>("loneNoops");

    QTest::newRow("one command is taken of each write") << true << 0 << 0;
    QTest::newRow("reads are interrupted") << false << 3 << 0;
    QTest::newRow("reads give nothing") << false << 0 << 3;
    QTest::newRow("all of it") << true << 2 << 2;
}

void TestClient::theDriversQuirksAreHarmless()
{
    QFETCH(bool, shortWrites);
    QFETCH(int, interruptedReads);
    QFETCH(int, loneNoops);
    Phone phone;
    std::unique_ptr<LocalObject> observer;
    observer = phone.manager->createLocalObject("test.IObserver",
                                                [&](IncomingRequest &, quint32, quint32, Status *) {
                                                    auto reply = observer->createReply();
                                                    reply->writer().appendInt32(3);
                                                    return reply;
                                                });
    phone.thing->setHandler([&](const FakeTransaction &transaction) {
        phone.binder.quirks.interruptedReads = interruptedReads;
        phone.binder.quirks.loneNoops = loneNoops;
        return FakeReply::afterCall(
            transaction.sentObjects().front(), 2, FakeParcel(),
            [](const FakeAnswer &answer) { return FakeReply::data(FakeParcel(answer.data)); });
    });
    phone.binder.addService("other");
    auto other = phone.manager->getService("other");
    other->addDeathHandler([] {});

    phone.binder.quirks.shortWrites = shortWrites;
    phone.binder.quirks.interruptedReads = interruptedReads;
    phone.binder.quirks.loneNoops = loneNoops;
    other.reset(); // leaves commands that may not be taken at once
    for (int round = 0; round < 3; ++round) {
        const auto request = phone.client->createRequest();
        request->writer().appendLocalObject(observer.get());
        const auto reply = phone.client->transact(5, *request);
        qint32 value = 0;
        QVERIFY(reply != nullptr && reply->readInt32(&value));
        QCOMPARE(value, 3);
    }
    QCOMPARE(phone.thing->transactions().size(), std::size_t(3));
    phone.binder.quirks = {};
    QTRY_VERIFY(phone.binder.isIdle());
}

void TestClient::callsDoNotWaitWhileCommandsAreHeldUp()
{
    Phone phone;
    phone.binder.addService("first");
    phone.binder.addService("second");
    auto first = phone.manager->getService("first");
    auto second = phone.manager->getService("second");
    std::unique_ptr<LocalObject> observer;
    observer = phone.manager->createLocalObject("test.IObserver",
                                                [&](IncomingRequest &, quint32, quint32, Status *) {
                                                    first.reset();
                                                    second.reset();
                                                    return nullptr;
                                                });

    phone.binder.quirks.shortWrites = true;
    phone.binder.call(observer->id(), 1, FakeParcel(), FlagOneWay);
    QTRY_VERIFY(first == nullptr);
    QVERIFY(phone.client->transact(5, *phone.client->createRequest()) != nullptr);
    phone.binder.quirks = {};
}

void TestClient::callsReadOnlyWhatIsThere()
{
    Phone phone;
    const int before = phone.binder.emptyReads();
    QVERIFY(phone.client->transact(5, *phone.client->createRequest()) != nullptr);
    QCOMPARE(phone.client->transactOneWay(5, *phone.client->createRequest()), StatusOk);
    QCOMPARE(phone.binder.emptyReads(), before);
}

void TestClient::aLostDeviceFailsEveryCall()
{
    Phone phone;
    bool died = false;
    const auto object = phone.manager->getService("thing");
    object->addDeathHandler([&] { died = true; });
    phone.binder.addService("other");
    const auto other = phone.manager->getService("other");
    phone.binder.breakFile();

    Status status = StatusOk;
    QVERIFY(phone.client->transact(5, *phone.client->createRequest(), &status) == nullptr);
    QCOMPARE(status, StatusDeadObject);
    QCOMPARE(phone.client->transactOneWay(5, *phone.client->createRequest()), StatusDeadObject);
    QVERIFY(phone.manager->getService("thing") == nullptr);
    QTRY_VERIFY(died);
    QCOMPARE(takeLog(QtWarningMsg),
             QStringList{QStringLiteral("Lost binder device \"/dev/marshhopper\" \"Bad file "
                                        "descriptor\"")});
    bool toldLater = false;
    other->addDeathHandler([&] { toldLater = true; });
    QTRY_VERIFY(toldLater);

    // who opens the device again gets a new file
    const auto manager = ServiceManager::open(Phone::Device);
    QVERIFY(manager->getService("thing") != nullptr);
    QCOMPARE(phone.binder.timesOpened(), 2);
}

void TestClient::repliesMayOutliveEverything()
{
    Phone phone;
    phone.thing->setReply(5, FakeReply::data(FakeParcel().int32(3)));
    auto reply = phone.client->transact(5, *phone.client->createRequest());
    phone.client.reset();
    phone.manager.reset();

    qint32 value = 0;
    QVERIFY(reply->readInt32(&value));
    QCOMPARE(value, 3);
    reply.reset();
    QVERIFY(!phone.binder.isOpen());
}

QTEST_GUILESS_MAIN(TestClient)
#include "test_client.moc"
