#include "support/systemcalls.h"

#include <cerrno>
#include <cstddef>
#include <future>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace SystemCalls {

namespace {

constexpr quint32 lowHalf = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? 0 : 4;
constexpr auto numberAt = static_cast<quint32>(offsetof(seccomp_data, nr));
constexpr auto firstArgumentAt = static_cast<quint32>(offsetof(seccomp_data, args)) + lowHalf;
constexpr auto thirdArgumentAt = firstArgumentAt + 2 * static_cast<quint32>(sizeof(quint64));

/// Has calls of this thread treated by `program` from now on. The listener, or 0 without one;
/// negative on failure.
int filter(QVector<sock_filter> program, unsigned flags)
{
    const sock_fprog filter{static_cast<unsigned short>(program.size()), program.data()};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        return -1;
    return static_cast<int>(::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, flags, &filter));
}

/// Waits until a call is held or `end` can be read; tells which call it is, 0 for none.
quint64 heldCall(int listener, int end)
{
    pollfd sources[] = {{listener, POLLIN, 0}, {end, POLLIN, 0}};
    while (::poll(sources, 2, -1) < 0 && errno == EINTR) {
    }
    seccomp_notif held{};
    const bool isHeld = (sources[0].revents & POLLIN) != 0 &&
                        ::ioctl(listener, SECCOMP_IOCTL_NOTIF_RECV, &held) == 0;
    return isHeld ? held.id : 0;
}

bool answer(int listener, quint64 call, unsigned flags, int error)
{
    seccomp_notif_resp answer{};
    answer.id = call;
    answer.flags = flags;
    answer.error = -error;
    return ::ioctl(listener, SECCOMP_IOCTL_NOTIF_SEND, &answer) == 0;
}

bool letGo(int listener, quint64 call)
{
    return answer(listener, call, SECCOMP_USER_NOTIF_FLAG_CONTINUE, 0);
}

/// A filter that holds such calls; with a third argument, only those with that one.
QVector<sock_filter> holding(unsigned call, std::optional<unsigned> thirdArgument)
{
    QVector<sock_filter> program{
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, numberAt),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, static_cast<quint8>(thirdArgument ? 3 : 1)),
    };
    if (thirdArgument) {
        program.append(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, thirdArgumentAt));
        program.append(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, *thirdArgument, 0, 1));
    }
    program.append(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF));
    program.append(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    return program;
}

/// Runs `work` in a thread of its own; each call of it that `program` holds waits until `onCall`
/// has answered it. False when there was none, or `onCall` returned false.
bool watch(const QVector<sock_filter> &program, const std::function<void()> &work,
           const std::function<bool(int listener, quint64 held)> &onCall)
{
    int end[2] = {-1, -1};
    if (::pipe(end) != 0)
        return false;
    std::promise<int> promise;
    std::thread worker([&] {
        const int listener = filter(program, SECCOMP_FILTER_FLAG_NEW_LISTENER);
        promise.set_value(listener);
        if (listener >= 0)
            work();
        ::close(end[1]);
    });

    const int listener = promise.get_future().get();
    quint64 held = listener >= 0 ? heldCall(listener, end[0]) : 0;
    bool done = held != 0;
    for (; held != 0; held = heldCall(listener, end[0]))
        done = onCall(listener, held) && done;
    worker.join();
    ::close(listener);
    ::close(end[0]);
    return done;
}

} // namespace

bool refuse(const QVector<unsigned> &calls, std::optional<unsigned> firstArgument)
{
    QVector<sock_filter> program;
    for (const unsigned call : calls) {
        program.append(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, numberAt));
        program.append(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0,
                                static_cast<quint8>(firstArgument ? 3 : 1)));
        if (firstArgument) {
            program.append(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, firstArgumentAt));
            program.append(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, *firstArgument, 0, 1));
        }
        program.append(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM));
    }
    program.append(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    return filter(program, 0) == 0;
}

bool hold(unsigned call, const std::function<void()> &work, const std::function<void()> &meanwhile)
{
    bool isFirst = true; // later calls are none of the test's business
    return watch(holding(call, std::nullopt), work, [&](int listener, quint64 held) {
        if (std::exchange(isFirst, false))
            meanwhile();
        return letGo(listener, held);
    });
}

bool fail(unsigned call, QVector<int> errors, const std::function<void()> &work,
          std::optional<unsigned> thirdArgument)
{
    const bool done =
        watch(holding(call, thirdArgument), work, [&errors](int listener, quint64 held) {
            return errors.isEmpty() ? letGo(listener, held)
                                    : answer(listener, held, 0, errors.takeFirst());
        });
    return done && errors.isEmpty();
}

} // namespace SystemCalls
