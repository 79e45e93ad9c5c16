// usage: ours_launchers WORK N
// What the daemon does with the announcements of N apps, without the binder calls around it. WORK
// is one of
//   first         they are announced for the first time
//   again         they are announced again, unchanged
//   index         the name of one of N installed apps is looked up (cost per installed app)
//   share         N share targets are added, behind which 10 more are measured
//   share-again   N share targets are added, and measured when they are announced again

#include "common/cost.h"
#include "common/sample.h"
#include "config/daemonconfig.h"
#include "launcher/apklauncher.h"
#include "launcher/desktopmanager.h"
#include "launcher/sharingregistry.h"

#include <QVector>

#include <cstdlib>
#include <cstring>

namespace {

constexpr int AddedTargets = 10;

ApkLauncher launcher(int number)
{
    const QString none;
    return ApkLauncher(Sample::label(number), none, Sample::icon(number),
                       Sample::packageName(number), Sample::className(number), Sample::version(),
                       none, none, none, none, false, false);
}

ApkLauncher shareTarget(int number)
{
    const QString none;
    return ApkLauncher(Sample::label(number), QStringLiteral("Send to ") + Sample::label(number),
                       Sample::icon(number), Sample::packageName(number), Sample::className(number),
                       Sample::version(), none, none, none,
                       QStringLiteral("text/plain;image/jpeg;image/png;video/mp4"), false, true);
}

QVector<ApkLauncher> records(int begin, int end, ApkLauncher (*make)(int))
{
    QVector<ApkLauncher> made;
    for (int number = begin; number < end; ++number)
        made.append(make(number));
    return made;
}

template <typename Function>
void announce(const QVector<ApkLauncher> &launchers, Function function)
{
    for (const ApkLauncher &announced : launchers)
        function(announced);
}

void measureLaunchers(int count, bool again)
{
    const DaemonConfig config;
    DesktopManager manager(&config);
    const QVector<ApkLauncher> launchers = records(0, count, launcher);
    const auto create = [&manager](const ApkLauncher &announced) {
        manager.onCreateLauncher(announced);
    };
    if (again)
        announce(launchers, create);
    printCost(count, [&] { announce(launchers, create); });
}

void measureIndex(int count)
{
    const DaemonConfig config;
    const DesktopManager manager(&config);
    const QString package = Sample::packageName(count / 2);
    QString name;
    printCost(count, [&] { name = manager.applicationName(package); });
    if (name != Sample::label(count / 2)) {
        std::fprintf(stderr, "ours_launchers: app %d has no entry\n", count / 2);
        std::exit(EXIT_FAILURE);
    }
}

void measureSharing(int count, bool again)
{
    SharingRegistry registry;
    const auto add = [&registry](const ApkLauncher &target) { registry.add(target); };
    const QVector<ApkLauncher> known = records(0, count, shareTarget);
    const QVector<ApkLauncher> more = records(count, count + AddedTargets, shareTarget);
    announce(known, add);
    const QVector<ApkLauncher> &measured = again ? known : more;
    printCost(measured.size(), [&] { announce(measured, add); });
}

} // namespace

int main(int argc, char *argv[])
{
    const char *work = argc == 3 ? argv[1] : "";
    const int count = argc == 3 ? std::atoi(argv[2]) : 0;
    if (std::strcmp(work, "first") == 0 || std::strcmp(work, "again") == 0) {
        measureLaunchers(count, std::strcmp(work, "again") == 0);
    } else if (std::strcmp(work, "index") == 0) {
        measureIndex(count);
    } else if (std::strcmp(work, "share") == 0 || std::strcmp(work, "share-again") == 0) {
        measureSharing(count, std::strcmp(work, "share-again") == 0);
    } else {
        std::fprintf(stderr, "usage: ours_launchers WORK N\n");
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
