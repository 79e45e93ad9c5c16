#include "daemon/runtimeoffer.h"

#include "platform/host/seat.h"

#include <QFile>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr char runtimePackage[] = "umbravm";
constexpr int failed = 1;

int reportFailure()
{
    std::fprintf(stderr, "Could not install QRT package: %s\n", runtimePackage);
    return failed;
}

int becomeLauncher(const char *invoker)
{
    const std::optional<uid_t> user = activeSeatUser();
    if (user && ::setuid(*user) != 0) {
        std::fputs("Could not setuid to logged-in user", stderr);
        return failed;
    }
    ::execl(invoker, "invoker", "--type=quartz-qt5", "--no-wait", "/usr/bin/store-client",
            "showApp", runtimePackage, nullptr);
    return reportFailure();
}

int waitForLauncher(pid_t launcher)
{
    int status = 0;
    pid_t ended = -1;
    do {
        ended = ::waitpid(launcher, &status, 0);
    } while (ended < 0 && errno == EINTR);
    if (ended < 0) {
        std::fprintf(stderr, "Could not install QRT package: %s (%s)\n", runtimePackage,
                     std::strerror(errno));
        return failed;
    }
    if (WIFSIGNALED(status))
        return reportFailure();
    return WEXITSTATUS(status);
}

} // namespace

bool isRuntimeInstalled()
{
    return QFile::exists(QStringLiteral("/opt/umbra/system.img"));
}

int offerRuntime(const char *invoker)
{
    const pid_t child = ::fork();
    if (child < 0)
        return reportFailure();
    return child == 0 ? becomeLauncher(invoker) : waitForLauncher(child);
}
