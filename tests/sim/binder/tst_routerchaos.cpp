// Programs that use the router correctly command by command and senselessly as a whole: whatever
// the order, it keeps its accounts and serves the next one well.

#include "sim/drivertest.h"

#include <QtTest>

#include <array>
#include <cerrno>

class TestRouterChaos : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void anyOrderOfCommandsIsBorne_data();
    void anyOrderOfCommandsIsBorne();

private:
    struct Program
    {
        std::unique_ptr<Party> party;
        QVector<quint64> received;
        QVector<quint32> handles = {0};
    };

    quint32 pick(quint32 count)
    {
        m_state = m_state * 1664525u + 1013904223u;
        return (m_state >> 8) % count;
    }
    // Mostly one that the program has been given.
    quint32 pickHandle(const Program &program)
    {
        return pick(10) == 0 ? pick(5)
                             : program.handles.at(int(pick(quint32(program.handles.size()))));
    }
    Message pickMessage(const Program &program);
    Commands pickCommands(Program &program);
    static Commands answerTo(const Outcome &outcome, Program &program);
    static void remember(const Outcome &outcome, Program &program);

    quint32 m_state = 0;
};

Message TestRouterChaos::pickMessage(const Program &program)
{
    Message message(QByteArray(int(pick(5) == 0 ? pick(400000) : pick(64)) & ~3, 'x'));
    for (quint32 i = pick(4); i > 0; --i) {
        switch (pick(4)) {
        case 0:
            message.handle(pickHandle(program));
            break;
        case 1:
            message.object(BINDER_TYPE_WEAK_BINDER, 1 + pick(4), 0);
            break;
        default:
            message.object(BINDER_TYPE_BINDER, 1 + pick(4), 0);
        }
    }
    return message;
}

Commands TestRouterChaos::pickCommands(Program &program)
{
    QVector<quint64> &received = program.received;
    Commands commands;
    for (quint32 i = pick(6); i > 0; --i) {
        const quint32 handle = pickHandle(program);
        const quint64 cookie = pick(3);
        const binder_ptr_cookie object = {1 + pick(4), 0};
        switch (pick(13)) {
        case 0:
            // Rare, since two programs that call each other wait for ever.
            if (pick(4) == 0)
                commands.call(handle, 1, pickMessage(program), TF_ACCEPT_FDS);
            break;
        case 1:
        case 2:
        case 3:
            commands.oneWay(handle, 2, pickMessage(program));
            break;
        case 4:
            commands.reply(pickMessage(program));
            break;
        case 5:
            commands.acquire(handle);
            break;
        case 6:
            commands.release(handle);
            break;
        case 7:
            commands.incRefs(handle);
            break;
        case 8:
            commands.decRefs(handle);
            break;
        case 9:
            commands.add(BC_INCREFS_DONE, object).add(BC_ACQUIRE_DONE, object);
            break;
        case 10:
            commands.requestDeath(handle, cookie);
            break;
        case 11:
            commands.clearDeath(handle, cookie).deadDone(cookie);
            break;
        default:
            if (!received.isEmpty())
                commands.freeBuffer(received.takeAt(int(pick(quint32(received.size())))));
        }
    }
    return commands;
}

void TestRouterChaos::remember(const Outcome &outcome, Program &program)
{
    for (const Return &item : outcome.returns) {
        if (item.code != BR_TRANSACTION && item.code != BR_REPLY)
            continue;
        program.received.append(item.address);
        for (const quint64 offset : item.offsets) {
            if (item.objectType(int(offset)) == BINDER_TYPE_HANDLE)
                program.handles.append(quint32(item.objectNumber(int(offset))));
        }
    }
}

Commands TestRouterChaos::answerTo(const Outcome &outcome, Program &program)
{
    Commands commands;
    for (const Return &item : outcome.returns) {
        if (item.code != BR_TRANSACTION && item.code != BR_REPLY)
            continue;
        for (const quint64 offset : item.offsets) {
            if (item.objectType(int(offset)) == BINDER_TYPE_HANDLE)
                commands.acquire(quint32(item.objectNumber(int(offset))));
        }
        commands.freeBuffer(item.address);
        program.received.removeOne(item.address);
        if (item.code == BR_TRANSACTION && (item.flags & TF_ONE_WAY) == 0)
            commands.reply();
    }
    return commands;
}

void TestRouterChaos::anyOrderOfCommandsIsBorne_data()
{
    QTest::addColumn<quint32>("seed");
    for (const quint32 seed : {1u, 2u, 3u})
        QTest::newRow(qPrintable(QString::number(seed))) << seed;
}

void TestRouterChaos::anyOrderOfCommandsIsBorne()
{
    QFETCH(quint32, seed);
    m_state = seed;
    expectAnyMisuse();
    killManager(); // the programs take turns at it
    constexpr int Steps = 3000;
    int messages = 0;
    std::array<Program, 4> programs;
    for (int step = 0; step < Steps; ++step) {
        Program &program = programs.at(pick(quint32(programs.size())));
        if (program.party != nullptr && pick(50) == 0) {
            if (pick(2) == 0)
                program.party->kill();
            program = Program();
        }
        if (program.party == nullptr) {
            program.party = std::make_unique<Party>(device());
        }
        if (pick(10) == 0)
            program.party->control(BINDER_SET_CONTEXT_MGR);
        const Outcome outcome = program.party->exchange(pickCommands(program), 1024);
        // The context manager may not hold itself; nothing else is refused as a whole.
        QVERIFY2(outcome.result == 0 || outcome.result == -EAGAIN || outcome.result == -EINVAL,
                 qPrintable(QString::number(outcome.result)));
        remember(outcome, program);
        // Without some sense it would soon come to a standstill.
        if (pick(4) != 0)
            program.party->exchange(answerTo(outcome, program), 0);
        messages += int(outcome.first("BR_TRANSACTION").code != 0) +
                    int(outcome.first("BR_REPLY").code != 0);
    }
    for (Program &program : programs)
        program.party.reset();
    // Else most of the router has not been reached.
    QVERIFY2(messages > Steps / 30, qPrintable(QString::number(messages)));

    startManager();
    Party client(device());
    callAndServe(client, 0, manager());
}

QTEST_GUILESS_MAIN(TestRouterChaos)
#include "tst_routerchaos.moc"
