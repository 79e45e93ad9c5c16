#include "runtime/binderloop.h"
#include "sim/runtime/scripteddriver.h"
#include "support/testcase.h"

#include <QSignalSpy>
#include <QtTest>

#include <cerrno>

using namespace SimRuntime;

namespace {

Parcel parcel(const QByteArray &data)
{
    return {data, {}};
}

/// Keeps what it is called with and answers as the test says.
class Recording : public BinderObject
{
public:
    std::optional<Answer> transact(const IncomingCall &call) override
    {
        calls.append(call);
        return answer;
    }

    QVector<IncomingCall> calls;
    std::optional<Answer> answer = Answer{StatusOk, {QByteArray("done"), {}}};
};

struct Outcome
{
    int times = 0;
    qint32 status = 1;
    QByteArray reply;

    BinderLoop::Completion keep()
    {
        return [this](qint32 newStatus, const Parcel &newReply) {
            ++times;
            status = newStatus;
            reply = newReply.data;
        };
    }
};

QVector<quint32> codes(const QVector<ScriptedDriver::Written> &written)
{
    QVector<quint32> result;
    for (const auto &command : written)
        result.append(command.command);
    return result;
}

template <typename Payload>
Payload payload(const ScriptedDriver::Written &written)
{
    return payloadAs<Payload>({written.command, written.payload});
}

} // namespace

class BinderLoopTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void refusesADeviceOfAnotherProtocol();
    void refusesToBeASecondContextManager();
    void answersACallAndThenFreesIt();
    void freesAOneWayCallWithoutAnswer();
    void answersWithAStatusInPlaceOfAReply();
    void answersForAnObjectThatIsNotThere();
    void leavesACallOpenUntilItIsAnswered();
    void confirmsTheCountsOfItsObjects();
    void tellsHowAOneWayCallEnded_data();
    void tellsHowAOneWayCallEnded();
    void tellsHowATwoWayCallEnded_data();
    void tellsHowATwoWayCallEnded();
    void assignsConfirmationsInTheOrderOfWriting();
    void holdsAHandleAsLongAsAnyoneDoes();
    void watchesAHandleOnceForAll();
    void stopsWatchingWithTheLastWatcher();
    void writesTheRestWhenOnlyAPartWasTaken();
    void goesOnAfterAnInterruptedRead();
    void saysWhenTheDeviceIsLost();

private:
    void pump();

    ScriptedDriver *m_driver = nullptr;
    std::unique_ptr<BinderLoop> m_loop;
    Recording m_object;
    quint64 m_id = 0;
};

void BinderLoopTest::init()
{
    TestCase::init();
    auto driver = std::make_unique<ScriptedDriver>();
    m_driver = driver.get();
    m_loop = std::make_unique<BinderLoop>(std::move(driver));
    QVERIFY(m_loop->start());
    m_object = Recording();
    m_id = m_loop->publish(&m_object);
    pump();
    QCOMPARE(codes(m_driver->takeWritten()), (QVector<quint32>{BC_ENTER_LOOPER}));
}

void BinderLoopTest::cleanup()
{
    m_loop.reset();
    TestCase::cleanup();
}

void BinderLoopTest::pump()
{
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

void BinderLoopTest::refusesADeviceOfAnotherProtocol()
{
    auto driver = std::make_unique<ScriptedDriver>();
    driver->protocolVersion = 7;
    BinderLoop loop(std::move(driver));

    QVERIFY(!loop.start());
    QCOMPARE(takeLog(QtCriticalMsg).size(), 1);
}

void BinderLoopTest::refusesToBeASecondContextManager()
{
    QVERIFY(m_loop->becomeContextManager(&m_object));

    m_driver->hasContextManager = true;

    QVERIFY(!m_loop->becomeContextManager(&m_object));
    QCOMPARE(takeLog(QtCriticalMsg).size(), 1);
}

void BinderLoopTest::answersACallAndThenFreesIt()
{
    const quint64 buffer =
        m_driver->giveMessage(BR_TRANSACTION, m_id, 3, TF_ACCEPT_FDS, {QByteArray(28, 'q'), {4}});
    pump();

    QCOMPARE(m_object.calls.size(), 1);
    const IncomingCall &call = m_object.calls.constFirst();
    QCOMPARE(call.code, 3U);
    QVERIFY(!call.oneWay);
    QCOMPARE(call.pid, 4711);
    QCOMPARE(call.parcel, (Parcel{QByteArray(28, 'q'), {4}}));

    const auto written = m_driver->takeWritten();
    QCOMPARE(codes(written), (QVector<quint32>{BC_REPLY, BC_FREE_BUFFER}));
    QCOMPARE(payload<binder_transaction_data>(written.at(0)).flags, 0U);
    QCOMPARE(written.at(0).parcel.data, QByteArray("done"));
    QCOMPARE(payload<quint64>(written.at(1)), buffer);
}

void BinderLoopTest::freesAOneWayCallWithoutAnswer()
{
    const quint64 buffer =
        m_driver->giveMessage(BR_TRANSACTION, m_id, 3, TF_ONE_WAY, parcel("data"));
    pump();

    QVERIFY(m_object.calls.constFirst().oneWay);
    const auto written = m_driver->takeWritten();
    QCOMPARE(codes(written), (QVector<quint32>{BC_FREE_BUFFER}));
    QCOMPARE(payload<quint64>(written.at(0)), buffer);
}

void BinderLoopTest::answersWithAStatusInPlaceOfAReply()
{
    m_object.answer = Answer{StatusUnknownTransaction, {}};
    m_driver->giveMessage(BR_TRANSACTION, m_id, 3, 0, {});
    pump();

    const auto written = m_driver->takeWritten();
    QCOMPARE(codes(written), (QVector<quint32>{BC_REPLY, BC_FREE_BUFFER}));
    QCOMPARE(payload<binder_transaction_data>(written.at(0)).flags, quint32(TF_STATUS_CODE));
    QCOMPARE(written.at(0).parcel.data, QByteArray::fromHex("b6ffffff"));
}

void BinderLoopTest::answersForAnObjectThatIsNotThere()
{
    m_driver->giveMessage(BR_TRANSACTION, m_id + 1, 3, 0, {});
    pump();

    QVERIFY(m_object.calls.isEmpty());
    QCOMPARE(m_driver->takeWritten().constFirst().parcel.data, QByteArray::fromHex("e0ffffff"));
}

void BinderLoopTest::leavesACallOpenUntilItIsAnswered()
{
    m_object.answer = std::nullopt;
    m_driver->giveMessage(BR_TRANSACTION, m_id, 3, 0, {});
    pump();
    QCOMPARE(codes(m_driver->takeWritten()), QVector<quint32>());

    m_loop->answer({StatusOk, parcel("late")});
    m_loop->answer({StatusOk, parcel("twice")});
    pump();

    const auto written = m_driver->takeWritten();
    QCOMPARE(codes(written), (QVector<quint32>{BC_REPLY, BC_FREE_BUFFER}));
    QCOMPARE(written.at(0).parcel.data, QByteArray("late"));
}

void BinderLoopTest::confirmsTheCountsOfItsObjects()
{
    const binder_ptr_cookie pair{m_id, m_id};
    m_driver->give(driverCommand(BR_INCREFS, pair) + driverCommand(BR_ACQUIRE, pair) +
                   driverCommand(BR_RELEASE, pair) + driverCommand(BR_DECREFS, pair));
    pump();

    const auto written = m_driver->takeWritten();
    QCOMPARE(codes(written), (QVector<quint32>{BC_INCREFS_DONE, BC_ACQUIRE_DONE}));
    QCOMPARE(payload<binder_ptr_cookie>(written.at(1)).ptr, m_id);
    QCOMPARE(payload<binder_ptr_cookie>(written.at(1)).cookie, m_id);
}

void BinderLoopTest::tellsHowAOneWayCallEnded_data()
{
    QTest::addColumn<quint32>("command");
    QTest::addColumn<qint32>("status");
    QTest::newRow("taken") << quint32(BR_TRANSACTION_COMPLETE) << StatusOk;
    QTest::newRow("dead") << quint32(BR_DEAD_REPLY) << StatusDeadObject;
    QTest::newRow("failed") << quint32(BR_FAILED_REPLY) << StatusFailedTransaction;
}

void BinderLoopTest::tellsHowAOneWayCallEnded()
{
    QFETCH(quint32, command);
    QFETCH(qint32, status);
    Outcome outcome;

    m_loop->send(5, 2, parcel("data"), CallMode::OneWay, outcome.keep());
    m_driver->give(driverCommand(command));
    pump();

    const auto written = m_driver->takeWritten();
    QCOMPARE(codes(written), (QVector<quint32>{BC_TRANSACTION}));
    const auto transaction = payload<binder_transaction_data>(written.constFirst());
    QCOMPARE(transaction.target.handle, 5U);
    QCOMPARE(transaction.code, 2U);
    QCOMPARE(transaction.flags, quint32(TF_ONE_WAY));
    QCOMPARE(outcome.times, 1);
    QCOMPARE(outcome.status, status);
}

void BinderLoopTest::tellsHowATwoWayCallEnded_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<quint32>("replyFlags");
    QTest::addColumn<QByteArray>("replyData");
    QTest::addColumn<QByteArray>("after");
    QTest::addColumn<qint32>("status");
    QTest::addColumn<QByteArray>("reply");
    const QByteArray complete = driverCommand(BR_TRANSACTION_COMPLETE);
    const QByteArray dead = driverCommand(BR_DEAD_REPLY);
    const QByteArray failed = driverCommand(BR_FAILED_REPLY);

    QTest::newRow("reply") << complete << 0U << QByteArray("good") << QByteArray() << StatusOk
                           << QByteArray("good");
    QTest::newRow("status") << complete << quint32(TF_STATUS_CODE)
                            << QByteArray::fromHex("ffffffff") << QByteArray() << -1
                            << QByteArray();
    QTest::newRow("dead at once") << dead << 0U << QByteArray() << QByteArray() << StatusDeadObject
                                  << QByteArray();
    QTest::newRow("dies meanwhile")
        << complete << 0U << QByteArray() << dead << StatusDeadObject << QByteArray();
    QTest::newRow("does not fit") << failed << 0U << QByteArray() << QByteArray()
                                  << StatusFailedTransaction << QByteArray();
}

void BinderLoopTest::tellsHowATwoWayCallEnded()
{
    QFETCH(QByteArray, before);
    QFETCH(quint32, replyFlags);
    QFETCH(QByteArray, replyData);
    QFETCH(QByteArray, after);
    QFETCH(qint32, status);
    QFETCH(QByteArray, reply);
    Outcome outcome;

    m_loop->send(0, 2, {}, CallMode::TwoWay, outcome.keep());
    m_driver->give(before);
    quint64 buffer = 0;
    if (!replyData.isEmpty())
        buffer = m_driver->giveMessage(BR_REPLY, 0, 0, replyFlags, parcel(replyData));
    m_driver->give(after);
    pump();

    QCOMPARE(outcome.times, 1);
    QCOMPARE(outcome.status, status);
    QCOMPARE(outcome.reply, reply);
    const auto written = m_driver->takeWritten();
    QCOMPARE(written.size(), buffer == 0 ? 1 : 2);
    if (buffer != 0)
        QCOMPARE(payload<quint64>(written.at(1)), buffer);
}

void BinderLoopTest::assignsConfirmationsInTheOrderOfWriting()
{
    Outcome first;
    Outcome second;
    m_driver->giveMessage(BR_TRANSACTION, m_id, 3, 0, {});
    pump(); // its reply is not confirmed yet
    m_loop->send(5, 1, {}, CallMode::OneWay, first.keep());
    m_loop->send(6, 1, {}, CallMode::OneWay, second.keep());
    m_driver->give(driverCommand(BR_TRANSACTION_COMPLETE) + driverCommand(BR_DEAD_REPLY) +
                   driverCommand(BR_TRANSACTION_COMPLETE));
    pump();

    QCOMPARE(first.status, StatusDeadObject);
    QCOMPARE(second.status, StatusOk);
}

void BinderLoopTest::holdsAHandleAsLongAsAnyoneDoes()
{
    m_loop->acquire(5);
    m_loop->acquire(5);
    m_loop->release(5);
    pump();
    QCOMPARE(codes(m_driver->takeWritten()), (QVector<quint32>{BC_ACQUIRE}));

    m_loop->release(5);
    m_loop->release(5);
    pump();
    QCOMPARE(codes(m_driver->takeWritten()), (QVector<quint32>{BC_RELEASE}));
}

void BinderLoopTest::watchesAHandleOnceForAll()
{
    int deaths = 0;
    m_loop->watch(5, [&] { ++deaths; });
    m_loop->watch(5, [&] { ++deaths; });
    pump();
    auto written = m_driver->takeWritten();
    QCOMPARE(codes(written), (QVector<quint32>{BC_REQUEST_DEATH_NOTIFICATION}));
    QCOMPARE(payload<binder_handle_cookie>(written.constFirst()).handle, 5U);
    const quint64 cookie = payload<binder_handle_cookie>(written.constFirst()).cookie;

    m_driver->give(driverCommand(BR_DEAD_BINDER, cookie));
    m_driver->give(driverCommand(BR_CLEAR_DEATH_NOTIFICATION_DONE, cookie));
    pump();

    QCOMPARE(deaths, 2);
    written = m_driver->takeWritten();
    QCOMPARE(codes(written), (QVector<quint32>{BC_DEAD_BINDER_DONE, BC_CLEAR_DEATH_NOTIFICATION}));
    QCOMPARE(payload<quint64>(written.at(0)), cookie);
}

void BinderLoopTest::stopsWatchingWithTheLastWatcher()
{
    bool told = false;
    const quint64 first = m_loop->watch(5, [&] { told = true; });
    const quint64 second = m_loop->watch(5, [&] { told = true; });
    pump();
    const quint64 cookie =
        payload<binder_handle_cookie>(m_driver->takeWritten().constFirst()).cookie;

    m_loop->unwatch(first);
    pump();
    QVERIFY(m_driver->takeWritten().isEmpty());
    m_loop->unwatch(second);
    m_driver->give(driverCommand(BR_DEAD_BINDER, cookie)); // it was on its way already
    pump();

    QVERIFY(!told);
    QCOMPARE(codes(m_driver->takeWritten()),
             (QVector<quint32>{BC_CLEAR_DEATH_NOTIFICATION, BC_DEAD_BINDER_DONE}));
}

void BinderLoopTest::writesTheRestWhenOnlyAPartWasTaken()
{
    m_driver->setLargestWrite(8);
    m_loop->acquire(5);
    m_loop->acquire(6);
    m_loop->acquire(7);
    pump();

    QCOMPARE(codes(m_driver->takeWritten()),
             (QVector<quint32>{BC_ACQUIRE, BC_ACQUIRE, BC_ACQUIRE}));
}

void BinderLoopTest::goesOnAfterAnInterruptedRead()
{
    m_driver->giveError(-EINTR);
    m_driver->give({});
    m_driver->giveMessage(BR_TRANSACTION, m_id, 3, 0, {});
    pump();

    QCOMPARE(m_object.calls.size(), 1);
}

void BinderLoopTest::saysWhenTheDeviceIsLost()
{
    QSignalSpy lost(m_loop.get(), &BinderLoop::lost);
    m_driver->giveError(-EPIPE);
    pump();
    m_loop->acquire(5);
    pump();

    QCOMPARE(lost.size(), 1);
    QVERIFY(m_driver->takeWritten().isEmpty());
    QCOMPARE(takeLog(QtCriticalMsg).size(), 1);
}

QTEST_GUILESS_MAIN(BinderLoopTest)
#include "tst_binderloop.moc"
