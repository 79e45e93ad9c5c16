#include "runtime/announcer.h"

#include "runtime/interfacetoken.h"
#include "runtime/launcherservice.h"

#include <QLoggingCategory>
#include <QPointer>

#include <algorithm>

Q_LOGGING_CATEGORY(lcAnnouncer, "sim.runtime.announcer")

namespace SimRuntime {

namespace {

enum LauncherCode : quint32 {
    LauncherAdded = 1,
    LaunchersComplete = 2,
    PackageRemoved = 3,
    HandlerAdded = 4
};

QString joined(const QStringList &items)
{
    return items.isEmpty() ? QStringLiteral("") : items.join(QLatin1Char(';'));
}

} // namespace

Announcer::Announcer(Caller *caller, const PackageStore *store, int sdk, QObject *parent)
    : QObject(parent)
    , m_caller(caller)
    , m_store(store)
    , m_sdk(sdk)
{
}

ParcelWriter Announcer::request() const
{
    ParcelWriter writer;
    writeInterfaceToken(&writer, launcherDescriptor(), m_sdk);
    return writer;
}

// Handlers first: the launcher service knows an activity that is both by what it heard last, and
// an app must not vanish from the home screen because it also opens documents.
void Announcer::addActivities(const QString &package)
{
    const ApkInfo info = m_store->find(package).info;
    for (const HandlerActivity &handler : info.handlers) {
        ParcelWriter writer = request();
        writer.string16(info.package);
        writer.string16(handler.className);
        writer.string16(handler.label);
        writer.string16(handler.caption);
        writer.string16(info.versionName);
        writer.string16(joined(handler.mimeTypes));
        writer.string16(joined(handler.shareMimeTypes));
        writer.boolean(handler.multi);
        writer.string16(joined(handler.schemes));
        writer.string16(joined(handler.hosts));
        writer.boolean(false);
        writer.byteArray(handler.icon);
        add(HandlerAdded, writer);
    }
    for (const LauncherActivity &launcher : info.launchers) {
        ParcelWriter writer = request();
        writer.string16(info.package);
        writer.string16(launcher.className);
        writer.string16(launcher.label);
        writer.string16(info.versionName);
        writer.byteArray(launcher.icon);
        add(LauncherAdded, writer);
    }
}

void Announcer::announceAll()
{
    ++m_round;
    // What is installed is told anew; that something has gone is told only once.
    const auto isTold = [](const Announcement &waiting) { return waiting.code != PackageRemoved; };
    m_queue.erase(std::remove_if(m_queue.begin(), m_queue.end(), isTold), m_queue.end());
    for (const QString &package : m_store->names())
        addActivities(package);
    add(LaunchersComplete, request());
    sendNext();
}

void Announcer::announce(const QString &package)
{
    addActivities(package);
    add(LaunchersComplete, request());
    sendNext();
}

void Announcer::announceRemoval(const QString &package)
{
    ParcelWriter writer = request();
    writer.string16(package);
    add(PackageRemoved, writer);
    add(LaunchersComplete, request());
    sendNext();
}

void Announcer::add(quint32 code, const ParcelWriter &request)
{
    m_queue.enqueue({code, request.parcel()});
}

void Announcer::sendNext()
{
    if (m_sending || m_queue.isEmpty())
        return;
    m_sending = true;
    const Announcement next = m_queue.dequeue();
    m_caller->call(launcherName(), next.code, next.parcel, CallMode::TwoWay,
                   [self = QPointer<Announcer>(this), code = next.code,
                    round = m_round](qint32 status, const Parcel &) {
                       if (self)
                           self->onAnswered(code, round, status);
                   });
}

void Announcer::onAnswered(quint32 code, int round, qint32 status)
{
    m_sending = false;
    if (status == StatusDeadObject || status == StatusNameNotFound) {
        if (round == m_round) // not if the launcher service is back already
            m_queue.clear();
    } else if (status != StatusOk) {
        qCWarning(lcAnnouncer) << "Announcement" << code << "was answered with status" << status;
    }
    sendNext();
}

} // namespace SimRuntime
