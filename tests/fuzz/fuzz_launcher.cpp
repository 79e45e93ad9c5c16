#include "binder/device.h"
#include "config/daemonconfig.h"
#include "fakes/fakebinder.h"
#include "fuzz/announcedfiles.h"
#include "fuzz/fuzztarget.h"
#include "fuzz/noprograms.h"
#include "launcher/apkmanager.h"
#include "launcher/desktopmanager.h"

#include <QCoreApplication>

#include <iterator>
#include <memory>

// Transactions of the runtime with "umbra.launcher", from the driver to the files on the host.
//
// The input is a list of them, each ended by the character "record separator": the code as a digit
// and the fields, with the "unit separator" between them. After "1r" to "4r" the rest of the input
// is the message as it is, so that it may have any form. An "n" starts the daemon anew.

namespace {

constexpr char RecordSeparator = '\x1E';
constexpr char UnitSeparator = '\x1F';
constexpr int MaxTransactions = 12;

// What an announcement's fields are, in their order: strings, booleans, bytes.
const char *const Fields[] = {"", "ssssb", "", "s", "sssssss?ss?b"};

/// Everything from the binder device to the files, as main() puts it together.
struct Daemon
{
    explicit Daemon(AnnouncedFiles &files)
        : desktop(&config)
    {
        QObject::connect(&apks, &ApkManager::addLauncher, &desktop,
                         &DesktopManager::onCreateLauncher);
        QObject::connect(&apks, &ApkManager::packageRemoved, &desktop,
                         &DesktopManager::onRemovePackage);
        QObject::connect(&apks, &ApkManager::launchersComplete, &desktop,
                         &DesktopManager::onLaunchersComplete);
        const auto announced = [&files](const ApkLauncher &launcher) {
            files.onAnnounced(launcher);
        };
        QObject::connect(&apks, &ApkManager::addLauncher, &desktop, announced);
        QObject::connect(&apks, &ApkManager::packageRemoved, &desktop,
                         [&files](const QString &package) { files.onPackageRemoved(package); });
        QObject::connect(&apks, &ApkManager::launchersComplete, &desktop,
                         [&files] { files.onComplete(); });
        files.onDaemonStarted();
        apks.onServiceStateChanged(true);
    }

    DaemonConfig config;
    ApkManager apks;
    DesktopManager desktop;
};

FakeParcel token()
{
    return FakeParcel().token(QStringLiteral("umbra.applications.IUmbraNativeLauncherService"),
                              {0, -1});
}

FakeParcel parcelOf(Input fields, const char *kinds)
{
    FakeParcel parcel = token();
    for (; *kinds != '\0' && !fields.isEmpty(); ++kinds) {
        const QByteArray field = fields.bytesBefore(UnitSeparator);
        if (*kinds == 's')
            parcel.string16(QString::fromUtf8(field));
        else if (*kinds == '?')
            parcel.int32(field.toInt());
        else
            parcel.byteArray(field);
    }
    return parcel;
}

void send(FakeBinder &binder, quint32 code, const FakeParcel &parcel, bool oneWay)
{
    const quint64 object = binder.registeredObject("umbra.launcher");
    const auto answer = binder.call(object, code, parcel, oneWay ? Binder::FlagOneWay : 0);
    while (!binder.isIdle())
        QCoreApplication::processEvents();
    expect(answer->count == (oneWay ? 0 : 1), "one answer to a call");
}

} // namespace

void FuzzTarget::prepare()
{
    AnnouncedFiles::makeHost();
    // The bus thread and whatever else Qt makes once is there from the first daemon on.
    run(Input(nullptr, 0));
    startNoPrograms();
}

void FuzzTarget::run(Input input)
{
    AnnouncedFiles::clearHost();
    AnnouncedFiles files;
    FakeBinder binder(UmbraBinder::Device);
    auto daemon = std::make_unique<Daemon>(files);
    qint64 budget = 1000;
    for (int count = 0; count < MaxTransactions && !input.isEmpty(); ++count) {
        const char kind = input.number<char>();
        if (kind == 'n') {
            daemon.reset();
            daemon = std::make_unique<Daemon>(files);
            continue;
        }
        const quint32 code = static_cast<quint32>(kind - '0') % 8;
        QByteArray content = input.bytesBefore(RecordSeparator);
        FakeParcel parcel;
        if (content.startsWith('r')) {
            content = content.mid(1) + RecordSeparator + input.rest();
            parcel = token().raw(content);
        } else if (code < std::size(Fields)) {
            const auto *bytes = reinterpret_cast<const std::uint8_t *>(content.constData());
            parcel = parcelOf(Input(bytes, static_cast<std::size_t>(content.size())), Fields[code]);
        }
        send(binder, code, parcel, (kind & 8) != 0);
        // three files with all names several times over
        budget += 10000 + 50 * qint64(parcel.data().size());
    }
    files.expectOnHost(budget);
}
