// bramd-sim-binder: plays the binder driver, in user space, for programs that are linked with the
// simulated phone's driver. See usage() for the arguments.

#include "binder/router.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <getopt.h>
#include <iostream>
#include <sys/resource.h>

namespace {

constexpr int ExitUsage = 2;
constexpr int ExitMisuse = 3;

void usage(std::ostream &output)
{
    output
        << "usage: bramd-sim-binder [--strict] [--interrupted-reads N] [--empty-reads N] DEVICE\n"
           "Plays the binder driver at the socket DEVICE until it is terminated. SIGUSR1 has it\n"
           "print what it keeps for each open file.\n"
           "  --strict               exit with status 3 if a program has misused the driver\n"
           "  --interrupted-reads N  let every N-th read of a program fail with EINTR\n"
           "  --empty-reads N        let every N-th read of a program return nothing\n";
}

bool parsePeriod(const char *text, unsigned *period)
{
    char *end = nullptr;
    errno = 0;
    const unsigned long value = std::strtoul(text, &end, 10);
    if (errno != 0 || end == text || *end != '\0' || value < 2 || value > 1000000)
        return false;
    *period = static_cast<unsigned>(value);
    return true;
}

// Every open file takes three descriptors here.
void raiseDescriptorLimit()
{
    rlimit limit = {};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

} // namespace

int main(int argc, char **argv)
{
    bool strict = false;
    SimBinder::Quirks quirks;
    const option options[] = {
        {"strict", no_argument, nullptr, 's'},
        {"interrupted-reads", required_argument, nullptr, 'i'},
        {"empty-reads", required_argument, nullptr, 'e'},
        {"help", no_argument, nullptr, 'h'},
        {},
    };
    for (int option = 0; (option = ::getopt_long(argc, argv, "", options, nullptr)) != -1;) {
        bool ok = true;
        if (option == 's')
            strict = true;
        else if (option == 'i')
            ok = parsePeriod(optarg, &quirks.interruptedReads);
        else if (option == 'e')
            ok = parsePeriod(optarg, &quirks.emptyReads);
        else if (option == 'h')
            return usage(std::cout), EXIT_SUCCESS;
        else
            ok = false;
        if (!ok)
            return usage(std::cerr), ExitUsage;
    }
    if (optind + 1 != argc)
        return usage(std::cerr), ExitUsage;

    const char *path = argv[optind];
    raiseDescriptorLimit();
    SimBinder::MisuseLog misuse(std::cerr);
    {
        SimBinder::Router router(path, quirks, misuse);
        if (!router.listen()) {
            std::cerr << "bramd-sim-binder: cannot listen at " << path << ": "
                      << std::strerror(errno) << std::endl;
            return EXIT_FAILURE;
        }
        std::cout << "bramd-sim-binder: listening at " << path << std::endl;
        router.run();
    }
    if (misuse.count() > 0)
        std::cerr << "bramd-sim-binder: " << misuse.count() << " cases of misuse" << std::endl;
    return strict && misuse.count() > 0 ? ExitMisuse : EXIT_SUCCESS;
}
