#include "sim/party.h"

#include <QElapsedTimer>
#include <QtTest>

#include <cerrno>
#include <csignal>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int PatienceMs = 10000;
constexpr quint64 ReadSize = 4096;

void expect(bool condition, const char *what)
{
    if (!condition)
        QTest::qFail(what, __FILE__, __LINE__);
}

} // namespace

Party::Party()
{
    int sockets[2] = {-1, -1};
    expect(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) == 0, "no socket pair");
    m_pid = ::fork();
    if (m_pid == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::close(sockets[0]);
        PartyProcess::serve(sockets[1]);
        ::_exit(0);
    }
    expect(m_pid > 0, "cannot fork");
    ::close(sockets[1]);
    m_socket = sockets[0];
}

Party::Party(const QByteArray &device, quint64 mappingSize)
    : Party()
{
    expect(open(device) == 0, "cannot open the device");
    if (mappingSize > 0)
        expect(map(mappingSize) == 0, "cannot map the device");
    write(Commands().enterLooper());
}

Party::~Party()
{
    if (m_pid <= 0)
        return;
    close();
    kill();
}

int Party::open(const QByteArray &device)
{
    qint32 result = -EIO;
    QDataStream(ask(PartyRequest::Open, [&](QDataStream &out) { out << device; })) >> result;
    return result;
}

int Party::map(quint64 size)
{
    qint32 result = -EIO;
    QDataStream(ask(PartyRequest::Map, [&](QDataStream &out) { out << size; })) >> result;
    return result;
}

int Party::control(unsigned long request, QByteArray *argument)
{
    QByteArray bytes = argument != nullptr ? *argument : QByteArray(64, '\0');
    qint32 result = -EIO;
    QDataStream(
        ask(PartyRequest::Control, [&](QDataStream &out) { out << quint64(request) << bytes; })) >>
        result >> bytes;
    if (argument != nullptr)
        *argument = bytes;
    return result;
}

bool Party::becomeContextManager()
{
    QElapsedTimer timer;
    timer.start();
    // A kernel's driver closes files a little later than the program does.
    while (const int result = control(BINDER_SET_CONTEXT_MGR)) {
        if (result != -EBUSY || timer.hasExpired(PatienceMs))
            return false;
        QTest::qSleep(1);
    }
    return true;
}

void Party::close()
{
    ask(PartyRequest::Close);
}

void Party::kill()
{
    ::kill(m_pid, SIGKILL);
    ::waitpid(m_pid, nullptr, 0);
    ::close(m_socket);
    m_pid = -1;
    m_socket = -1;
}

Outcome Party::exchange(const Commands &commands, quint64 readSize)
{
    Outcome outcome;
    outcome.result = -EIO;
    const QByteArray answer = ask(PartyRequest::Exchange, [&](QDataStream &out) {
        out << commands.bytes() << readSize << quint32(commands.messages().size());
        for (const Message &message : commands.messages())
            out << message.data << message.offsets;
    });
    qint32 result = -EIO;
    QDataStream in(answer);
    in >> result >> outcome.writeConsumed >> outcome.returns;
    outcome.result = result;
    return outcome;
}

void Party::write(const Commands &commands)
{
    const Outcome outcome = exchange(commands, 0);
    expect(outcome.result == 0, "a write failed");
    expect(outcome.writeConsumed == quint64(commands.bytes().size()), "a write was cut short");
}

Outcome Party::read()
{
    expect(poll(PatienceMs), "nothing came to be read");
    return readNow();
}

Outcome Party::readNow()
{
    return exchange(Commands(), ReadSize);
}

Outcome Party::readUntil(const char *returnName)
{
    Outcome all;
    QElapsedTimer timer;
    timer.start();
    while (!all.allNames().contains(QLatin1String(returnName))) {
        if (!poll(PatienceMs) || timer.hasExpired(PatienceMs)) {
            QTest::qFail(
                qPrintable(QStringLiteral("%1 did not come, but %2")
                               .arg(QLatin1String(returnName), all.names().join(QLatin1Char(' ')))),
                __FILE__, __LINE__);
            break;
        }
        const Outcome outcome = readNow();
        all.result = outcome.result;
        all.returns += outcome.returns;
    }
    return all;
}

bool Party::isReadable()
{
    return poll(0);
}

void Party::answerAnnouncements(const Outcome &outcome)
{
    Commands answers;
    for (const Return &item : outcome.returns) {
        const binder_ptr_cookie object = {item.id, item.cookie};
        if (item.code == BR_INCREFS)
            answers.add(BC_INCREFS_DONE, object);
        else if (item.code == BR_ACQUIRE)
            answers.add(BC_ACQUIRE_DONE, object);
    }
    if (!answers.bytes().isEmpty())
        write(answers);
}

Return Party::serve(const Message &reply)
{
    const Return request = readUntil("BR_TRANSACTION").last();
    write(Commands().freeBuffer(request.address).reply(reply));
    readUntil("BR_TRANSACTION_COMPLETE");
    return request;
}

int Party::makeFile(const QByteArray &content)
{
    qint32 file = -1;
    QDataStream(ask(PartyRequest::MakeFile, [&](QDataStream &out) { out << content; })) >> file;
    return file;
}

QByteArray Party::readFile(int descriptor)
{
    const QByteArray answer =
        ask(PartyRequest::ReadFile, [&](QDataStream &out) { out << qint32(descriptor); });
    QByteArray content;
    QDataStream in(answer);
    in >> content;
    return content;
}

bool Party::poll(int timeoutMs)
{
    bool readable = false;
    QDataStream(ask(PartyRequest::Poll, [&](QDataStream &out) { out << qint32(timeoutMs); })) >>
        readable;
    return readable;
}

QByteArray Party::ask(PartyRequest request,
                      const std::function<void(QDataStream &)> &writeArguments)
{
    QByteArray frame;
    QDataStream out(&frame, QIODevice::WriteOnly);
    out << quint32(request);
    if (writeArguments)
        writeArguments(out);
    QByteArray answer;
    expect(PartyProcess::writeFrame(m_socket, frame) && PartyProcess::readFrame(m_socket, &answer),
           "the other process is gone");
    return answer;
}
