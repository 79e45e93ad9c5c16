#include "support/otherusers.h"

#include <QFile>
#include <QList>
#include <QtGlobal>

#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace OtherUsers {

namespace {

[[noreturn]] void prepareAndWait(const std::function<bool()> &prepare, int ready)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const bool prepared = prepare();
    if (!prepared || ::write(ready, "x", 1) != 1)
        ::_exit(EXIT_FAILURE);
    for (;;)
        ::pause();
}

} // namespace

bool exist()
{
    QFile map(QStringLiteral("/proc/self/uid_map"));
    if (::geteuid() != 0 || !map.open(QIODevice::ReadOnly))
        return false;
    qulonglong users = 0;
    const QList<QByteArray> ranges = map.readAll().trimmed().split('\n');
    for (const QByteArray &range : ranges)
        users += range.simplified().split(' ').value(2).toULongLong();
    return users > 1;
}

WaitingProcess::WaitingProcess(const std::function<bool()> &prepare)
    : m_id(-1)
{
    int ready[2] = {-1, -1};
    char byte = 0;
    if (::pipe(ready) != 0)
        qFatal("cannot make a pipe");
    m_id = ::fork();
    if (m_id == 0) {
        ::close(ready[0]);
        prepareAndWait(prepare, ready[1]);
    }
    ::close(ready[1]);
    if (m_id < 0 || ::read(ready[0], &byte, 1) != 1)
        qFatal("cannot prepare a process");
    ::close(ready[0]);
}

WaitingProcess::~WaitingProcess()
{
    ::kill(m_id, SIGKILL);
    ::waitpid(m_id, nullptr, 0);
}

} // namespace OtherUsers
