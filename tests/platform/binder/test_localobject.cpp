#include "platform/binder/outgoingdata.h"
#include "platform/binder/phone.h"
#include "support/testcase.h"

#include <QtTest>

#include <fcntl.h>
#include <unistd.h>

using namespace Binder;

namespace {

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

FakeParcel request(const QString &descriptor = QStringLiteral("test.IOwn"))
{
    return FakeParcel().token(descriptor);
}

} // namespace

/// An object of this process whose reference the runtime's "thing" has been given.
struct OwnObject
{
    explicit OwnObject(Phone &phone, IncomingCall serve = nullptr)
        : object(phone.manager->createLocalObject(
              "test.IOwn", [this, serve](IncomingRequest &incoming, quint32 code, quint32 flags,
                                         Status *status) {
                  codes.push_back(code);
                  return serve ? serve(incoming, code, flags, status) : object->createReply();
              }))
    {
        const auto handOver = phone.client->createRequest();
        handOver->writer().appendLocalObject(object.get());
        phone.client->transact(1, *handOver);
    }

    quint64 id() const { return object->id(); }

    std::vector<quint32> codes;
    std::unique_ptr<LocalObject> object;
};

class TestLocalObject : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void callsAreServedFromTheEventLoop();
    void servingReadsOnlyWhatIsThere();
    void repliesCarryWhatWasWritten();
    void noReplyIsAnEmptyReply();
    void otherStatusesAreSentInPlaceOfTheReply_data();
    void otherStatusesAreSentInPlaceOfTheReply();
    void oneWayCallsAreNeverAnswered();
    void oneWayCallsKeepTheirOrder();
    void standardTransactionsAreAnswered_data();
    void standardTransactionsAreAnswered();
    void descriptorsOfADumpAreClosed();
    void callsWithAnotherTokenAreServed();
    void droppedObjectsAreDead();
    void theObjectMayBeDeletedWhileItServes();
    void everythingMayBeDeletedWhileAnObjectServes();
    void aFileThatIsAboutToBeClosedCanBeUsedAgain();
    void callsOutAreAllowedWhileServing();
    void tooLargeRepliesAreRefused();
    void callersMayDieBeforeTheyAreAnswered();
    void objectsInRequestsCanBeKept();
    void objectsCanBeHandedOverAgainAfterTheyWereDropped();
    void manyCallsAreServedInTurns();
    void confirmationsOfRepliesAreNotTakenForOthers();
};

void TestLocalObject::callsAreServedFromTheEventLoop()
{
    Phone phone;
    OwnObject own(phone);

    const auto answer = phone.binder.call(own.id(), 7, request());
    QVERIFY(own.codes.empty());
    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(own.codes, std::vector<quint32>{7});
}

void TestLocalObject::servingReadsOnlyWhatIsThere()
{
    Phone phone;
    OwnObject own(phone);
    const int before = phone.binder.emptyReads();

    const auto answers = {phone.binder.call(own.id(), 7, request()),
                          phone.binder.call(own.id(), 8, request())};
    for (const auto &answer : answers)
        QTRY_COMPARE(answer->count, 1);
    phone.binder.call(own.id(), 9, request(), FlagOneWay);
    QTRY_COMPARE(own.codes, (std::vector<quint32>{7, 8, 9}));
    QTRY_VERIFY(phone.binder.isIdle());
    QCOMPARE(phone.binder.emptyReads(), before);
}

void TestLocalObject::repliesCarryWhatWasWritten()
{
    Phone phone;
    OwnObject other(phone);
    OwnObject own(phone, [&](IncomingRequest &, quint32, quint32, Status *) {
        auto reply = other.object->createReply();
        reply->writer().appendInt32(5);
        reply->writer().appendLocalObject(other.object.get());
        return reply;
    });

    const auto answer = phone.binder.call(own.id(), 7, request());
    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(answer->data,
             FakeParcel().int32(5).data() + hex("85 2a 62 73  13 01 00 00") +
                 FakeParcel().int64(qint64(other.id())).int64(qint64(other.id())).data());
    QCOMPARE(answer->offsets, std::vector<quint64>{4});
}

void TestLocalObject::noReplyIsAnEmptyReply()
{
    Phone phone;
    OwnObject own(phone, [](IncomingRequest &, quint32, quint32, Status *) { return nullptr; });

    const auto answer = phone.binder.call(own.id(), 7, request());
    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(answer->status, StatusOk);
    QVERIFY(answer->data.isEmpty());
}

void TestLocalObject::otherStatusesAreSentInPlaceOfTheReply_data()
{
    QTest::addColumn<Status>("status");

    QTest::newRow("refused") << StatusRefused;
    QTest::newRow("unknown") << StatusUnknownTransaction;
}

void TestLocalObject::otherStatusesAreSentInPlaceOfTheReply()
{
    QFETCH(Status, status);
    Phone phone;
    OwnObject own(phone, [&](IncomingRequest &, quint32, quint32, Status *out) {
        *out = status;
        auto reply = own.object->createReply();
        reply->writer().appendInt32(99);
        return reply;
    });

    const auto answer = phone.binder.call(own.id(), 7, request());
    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(answer->status, status);
    QVERIFY(answer->data.isEmpty());
}

void TestLocalObject::oneWayCallsAreNeverAnswered()
{
    Phone phone;
    quint32 seen = 0;
    OwnObject own(phone, [&](IncomingRequest &, quint32, quint32 flags, Status *status) {
        seen = flags;
        *status = StatusRefused;
        return own.object->createReply();
    });

    const auto answer = phone.binder.call(own.id(), 7, request(), FlagOneWay);
    const auto ping = phone.binder.call(own.id(), 0x5f504e47, FakeParcel(), FlagOneWay);
    const auto gone = phone.binder.call(123456789, 7, request(), FlagOneWay);
    QTRY_VERIFY(phone.binder.isIdle());
    QCOMPARE(own.codes, std::vector<quint32>{7});
    QCOMPARE(seen, FlagOneWay);
    QCOMPARE(answer->count, 0);
    QCOMPARE(ping->count, 0);
    QCOMPARE(gone->count, 0);
}

void TestLocalObject::oneWayCallsKeepTheirOrder()
{
    Phone phone;
    OwnObject own(phone);
    std::vector<quint32> expected;
    for (quint32 code = 1; code <= 20; ++code) {
        phone.binder.call(own.id(), code, request(), FlagOneWay);
        expected.push_back(code);
    }
    QTRY_VERIFY(phone.binder.isIdle());
    QCOMPARE(own.codes, expected);
}

void TestLocalObject::standardTransactionsAreAnswered_data()
{
    QTest::addColumn<quint32>("code");
    QTest::addColumn<QByteArray>("reply");

    QTest::newRow("ping") << 0x5f504e47u << hex("00000000");
    QTest::newRow("interface") << 0x5f4e5446u
                               << FakeParcel().string16(QStringLiteral("test.IOwn")).data();
    QTest::newRow("dump") << 0x5f444d50u << QByteArray();
    QTest::newRow("shell command") << 0x5f434d44u << QByteArray();
    QTest::newRow("system properties") << 0x5f535052u << QByteArray();
}

void TestLocalObject::standardTransactionsAreAnswered()
{
    QFETCH(quint32, code);
    QFETCH(QByteArray, reply);
    Phone phone;
    OwnObject own(phone);

    const auto answer = phone.binder.call(own.id(), code, FakeParcel());
    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(answer->status, StatusOk);
    QCOMPARE(answer->data, reply);
    QVERIFY(own.codes.empty());
}

void TestLocalObject::descriptorsOfADumpAreClosed()
{
    Phone phone;
    OwnObject own(phone);
    const int descriptor = ::open("/dev/null", O_WRONLY | O_CLOEXEC);

    const auto answer =
        phone.binder.call(own.id(), 0x5f444d50, FakeParcel().fileDescriptor(descriptor).int32(0));
    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(::fcntl(descriptor, F_GETFD), -1);
}

void TestLocalObject::callsWithAnotherTokenAreServed()
{
    Phone phone;
    QByteArray token;
    OwnObject own(phone, [&](IncomingRequest &incoming, quint32, quint32, Status *) {
        token = incoming.interfaceToken();
        return nullptr;
    });

    const auto answer = phone.binder.call(own.id(), 7, request(QStringLiteral("other.IThing")));
    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(token, QByteArrayLiteral("other.IThing"));
}

void TestLocalObject::droppedObjectsAreDead()
{
    Phone phone;
    OwnObject own(phone);
    const quint64 id = own.id();
    own.object.reset();

    const auto answer = phone.binder.call(id, 7, request());
    const auto ping = phone.binder.call(id, 0x5f504e47, FakeParcel());
    QTRY_COMPARE(answer->count, 1);
    QTRY_COMPARE(ping->count, 1);
    QCOMPARE(answer->status, StatusDeadObject);
    QCOMPARE(ping->status, StatusDeadObject);
    QVERIFY(own.codes.empty());
}

void TestLocalObject::theObjectMayBeDeletedWhileItServes()
{
    Phone phone;
    OwnObject own(phone, [&](IncomingRequest &incoming, quint32, quint32, Status *) {
        auto reply = own.object->createReply();
        own.object.reset();
        reply->writer().appendInt32(static_cast<qint32>(incoming.reader().bytesRemaining()));
        return reply;
    });

    const auto answer = phone.binder.call(own.id(), 7, request().int32(0));
    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(answer->data, FakeParcel().int32(4).data());
}

void TestLocalObject::everythingMayBeDeletedWhileAnObjectServes()
{
    Phone phone;
    bool openAfterwards = false;
    OwnObject own(phone, [&](IncomingRequest &, quint32, quint32, Status *) {
        own.object.reset();
        phone.client.reset();
        phone.manager.reset();
        QMetaObject::invokeMethod(
            this, [&] { openAfterwards = phone.binder.isOpen(); }, Qt::QueuedConnection);
        return nullptr;
    });

    const auto answer = phone.binder.call(own.id(), 7, request());
    QTRY_COMPARE(answer->count, 1);
    QTRY_VERIFY(!phone.binder.isOpen());
    QVERIFY(openAfterwards); // not from within its own event
}

void TestLocalObject::aFileThatIsAboutToBeClosedCanBeUsedAgain()
{
    Phone phone;
    bool reopened = false;
    OwnObject own(phone, [&](IncomingRequest &, quint32, quint32, Status *) {
        own.object.reset();
        phone.client.reset();
        phone.manager.reset();
        QMetaObject::invokeMethod(
            this,
            [&] {
                phone.manager = ServiceManager::open(Phone::Device);
                reopened = true;
            },
            Qt::QueuedConnection);
        return nullptr;
    });
    phone.binder.call(own.id(), 7, request());
    QTRY_VERIFY(reopened);
    QCOMPARE(phone.binder.timesOpened(), 1);

    bool served = false;
    const auto next = phone.manager->createLocalObject(
        "test.IOwn", [&](IncomingRequest &, quint32, quint32, Status *) {
            served = true;
            return nullptr;
        });
    QCoreApplication::processEvents();
    phone.binder.call(next->id(), 7, request());
    QTRY_VERIFY(served);
}

void TestLocalObject::callsOutAreAllowedWhileServing()
{
    Phone phone;
    phone.thing->setReply(6, FakeReply::data(FakeParcel().int32(6)));
    OwnObject own(phone, [&](IncomingRequest &, quint32, quint32, Status *) {
        const auto inner = phone.client->transact(6, *phone.client->createRequest());
        qint32 value = 0;
        inner->readInt32(&value);
        auto reply = own.object->createReply();
        reply->writer().appendInt32(value);
        return reply;
    });

    const auto twoWay = phone.binder.call(own.id(), 7, request());
    const auto oneWay = phone.binder.call(own.id(), 8, request(), FlagOneWay);
    QTRY_VERIFY(phone.binder.isIdle());
    QCOMPARE(twoWay->data, FakeParcel().int32(6).data());
    QCOMPARE(own.codes, (std::vector<quint32>{7, 8}));
}

void TestLocalObject::tooLargeRepliesAreRefused()
{
    Phone phone;
    OwnObject own(phone, [&](IncomingRequest &, quint32, quint32, Status *) {
        auto reply = own.object->createReply();
        reply->writer().appendByteArray(QByteArray(static_cast<int>(OutgoingData::MaxSize), 'x'));
        return reply;
    });

    const auto answer = phone.binder.call(own.id(), 7, request());
    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(answer->status, StatusFailedTransaction);
    QCOMPARE(takeLog(QtWarningMsg), QStringList{QStringLiteral("Reply is too large to be sent")});
}

void TestLocalObject::callersMayDieBeforeTheyAreAnswered()
{
    Phone phone;
    OwnObject own(phone);

    phone.binder.callAndDie(own.id(), 7, request());
    const auto next = phone.binder.call(own.id(), 8, request());
    QTRY_COMPARE(next->count, 1);
    QCOMPARE(phone.client->transactOneWay(6, *phone.client->createRequest()), StatusOk);
}

void TestLocalObject::objectsInRequestsCanBeKept()
{
    Phone phone;
    std::shared_ptr<RemoteObject> kept;
    OwnObject own(phone, [&](IncomingRequest &incoming, quint32, quint32, Status *) {
        incoming.reader().readNullableObject(&kept);
        return nullptr;
    });
    const auto callback = std::make_shared<FakeObject>();

    phone.binder.call(own.id(), 7, request().object(callback), FlagOneWay);
    QTRY_VERIFY(kept != nullptr);
    const auto client = Client::create(std::move(kept), "test.ICallback");
    QVERIFY(client->transact(1, *client->createRequest()) != nullptr);
    QCOMPARE(callback->transactions().size(), std::size_t(1));
}

void TestLocalObject::objectsCanBeHandedOverAgainAfterTheyWereDropped()
{
    Phone phone;
    OwnObject own(phone);
    phone.binder.dropReferences(own.id());
    QTRY_VERIFY(phone.binder.isIdle());

    const auto handOver = phone.client->createRequest();
    handOver->writer().appendLocalObject(own.object.get());
    QVERIFY(phone.client->transact(1, *handOver) != nullptr);
    const auto answer = phone.binder.call(own.id(), 7, request());
    QTRY_COMPARE(answer->count, 1);
}

void TestLocalObject::manyCallsAreServedInTurns()
{
    Phone phone;
    OwnObject own(phone);
    for (int i = 0; i < 1000; ++i)
        phone.binder.call(own.id(), 7, request());

    QCoreApplication::processEvents();
    QVERIFY(own.codes.size() < 1000); // the rest of the program is not starved
    QTRY_COMPARE(own.codes.size(), std::size_t(1000));
}

void TestLocalObject::confirmationsOfRepliesAreNotTakenForOthers()
{
    Phone phone;
    OwnObject own(phone);
    phone.thing->setReply(6, FakeReply::failed());
    // A call and the confirmation of its reply take a read each. With one read more, turns end
    // between the two.
    phone.binder.call(own.id(), 7, request(), FlagOneWay);
    for (int i = 0; i < 1000; ++i)
        phone.binder.call(own.id(), 7, request());

    QTRY_VERIFY(!own.codes.empty());
    QVERIFY(own.codes.size() < 1000);
    QCOMPARE(phone.client->transactOneWay(6, *phone.client->createRequest()),
             StatusFailedTransaction);
    QVERIFY(isOneRefusal(takeLog(QtWarningMsg), 6));
    QTRY_COMPARE(own.codes.size(), std::size_t(1001));
}

QTEST_GUILESS_MAIN(TestLocalObject)
#include "test_localobject.moc"
