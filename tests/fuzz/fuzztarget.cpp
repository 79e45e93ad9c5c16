#include "fuzz/fuzztarget.h"

#include "support/hostfiles.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <linux/magic.h>
#include <sys/statfs.h>

namespace {

bool showsLog = false;

/// The lines are made, which is a part of what is tested, and thrown away. Those of the tests'
/// driver tell of rules that the code under test has broken.
void takeLine(QtMsgType, const QMessageLogContext &, const QString &text)
{
    if (showsLog)
        std::fprintf(stderr, "%s\n", qPrintable(text));
    expect(!text.startsWith(QLatin1String("FakeBinder: ")), "rule of the driver", text);
}

/// Targets write and delete below fixed paths, which have to be their own (sim/phone/enter).
void requirePrivateRoot()
{
    for (const char *directory : {"/etc", "/home", "/opt", "/run", "/usr/share", "/var/lib"}) {
        struct statfs status = {};
        if (::statfs(directory, &status) != 0 || status.f_type != TMPFS_MAGIC) {
            std::fprintf(stderr, "%s is not private: start this by tests/fuzz/run\n", directory);
            std::exit(2);
        }
    }
}

} // namespace

void expect(bool holds, const char *what, const QString &detail)
{
    if (holds)
        return;
    std::fprintf(stderr, "EXPECTED: %s %s\n", what, qPrintable(detail));
    std::abort();
}

// The names by which the fuzzer's main() finds them.
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    requirePrivateRoot();
    showsLog = std::getenv("FUZZ_LOG") != nullptr;
    qInstallMessageHandler(takeLine);
    static QCoreApplication application(*argc, *argv);
    HostFiles::makeEmptyDirectory(QStringLiteral("/opt/umbra"));
    HostFiles::write(QStringLiteral("/opt/umbra/build.prop"), "ro.build.version.sdk=29\n");
    FuzzTarget::prepare();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size)
{
    FuzzTarget::run(Input(bytes, size));
    return 0;
}
