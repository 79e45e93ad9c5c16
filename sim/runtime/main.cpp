// bramd-sim-runtime: plays the Android runtime on a binder device. See --help for the arguments.

#include "runtime/callerprocess.h"
#include "runtime/runtime.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

using namespace SimRuntime;

namespace {

constexpr int ExitUsage = 2;

int signalPipe[2] = {-1, -1};

void onSignal(int)
{
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], &byte, 1);
}

// Ends the event loop, so that everything is put away properly.
void quitOnSignals(QCoreApplication *application)
{
    if (::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    auto *notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, application);
    QObject::connect(notifier, &QSocketNotifier::activated, application, &QCoreApplication::quit);
    struct sigaction action = {};
    action.sa_handler = onSignal;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
}

int levelOfImage(const QString &image)
{
    QFile file(image + QStringLiteral("/build.prop"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray key = QByteArrayLiteral("ro.build.version.sdk=");
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().trimmed();
        if (line.startsWith(key))
            return line.mid(key.size()).toInt();
    }
    return 0;
}

int runCaller(const Options &options)
{
    auto driver = Binder::Driver::open(options.device.constData());
    if (driver == nullptr) {
        fprintf(stderr, "bramd-sim-runtime: cannot open %s: %s\n", options.device.constData(),
                strerror(errno));
        return EXIT_FAILURE;
    }
    auto loop = std::make_unique<BinderLoop>(std::move(driver));
    if (!loop->start())
        return EXIT_FAILURE;
    // cppcheck-suppress unreadVariable // it works from now on
    const CallerProcess caller(std::move(loop), options);
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("bramd-sim-runtime"));

    const QCommandLineOption device(QStringLiteral("device"), QStringLiteral("Binder device."),
                                    QStringLiteral("path"), QStringLiteral("/dev/marshhopper"));
    const QCommandLineOption sdk(QStringLiteral("sdk"),
                                 QStringLiteral("Android SDK level (default: the image's)."),
                                 QStringLiteral("level"));
    const QCommandLineOption dataRoot(
        QStringLiteral("data-root"), QStringLiteral("Where apps and their data are kept."),
        QStringLiteral("directory"), QStringLiteral("/home/.android"));
    const QCommandLineOption image(QStringLiteral("image"),
                                   QStringLiteral("Where the runtime's build.prop is."),
                                   QStringLiteral("directory"), QStringLiteral("/opt/umbra"));
    const QCommandLineOption record(QStringLiteral("record"),
                                    QStringLiteral("Append every transaction received to a file."),
                                    QStringLiteral("file"));
    const QCommandLineOption control(QStringLiteral("control"),
                                     QStringLiteral("Take commands at this socket."),
                                     QStringLiteral("socket"));
    const QCommandLineOption hold(QStringLiteral("hold"),
                                  QStringLiteral("Hide a service (repeatable)."),
                                  QStringLiteral("name"));
    const QCommandLineOption storageLimit(QStringLiteral("storage-limit"),
                                          QStringLiteral("Room for all APKs together."),
                                          QStringLiteral("bytes"), QStringLiteral("0"));
    const QCommandLineOption bootDelay(QStringLiteral("boot-delay-ms"),
                                       QStringLiteral("Time until all services are registered."),
                                       QStringLiteral("milliseconds"), QStringLiteral("0"));
    QCommandLineOption callerOnly(QStringLiteral("caller"));
    callerOnly.setFlags(QCommandLineOption::HiddenFromHelp);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Plays the Android runtime."));
    parser.addHelpOption();
    parser.addOptions(
        {device, sdk, dataRoot, image, record, control, hold, storageLimit, bootDelay, callerOnly});
    parser.process(application);

    Options options;
    options.device = QFile::encodeName(parser.value(device));
    options.sdk = parser.isSet(sdk) ? parser.value(sdk).toInt() : levelOfImage(parser.value(image));
    options.dataRoot = parser.value(dataRoot);
    options.record = parser.value(record);
    options.control = parser.value(control);
    options.held = parser.values(hold);
    options.storageLimit = parser.value(storageLimit).toLongLong();
    options.bootDelayMs = parser.value(bootDelay).toInt();
    options.caller =
        QStringList{QStringLiteral("--caller"), QStringLiteral("--device"), parser.value(device),
                    QStringLiteral("--sdk"), QString::number(options.sdk)};
    if (!parser.positionalArguments().isEmpty())
        parser.showHelp(ExitUsage);
    if (options.sdk <= 0) {
        fprintf(stderr, "bramd-sim-runtime: no SDK level is known; give one with --sdk\n");
        return ExitUsage;
    }

    quitOnSignals(&application);
    if (parser.isSet(callerOnly))
        return runCaller(options);
    Runtime runtime(options);
    return runtime.start() ? QCoreApplication::exec() : EXIT_FAILURE;
}
