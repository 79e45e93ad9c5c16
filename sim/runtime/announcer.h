#pragma once

#include "runtime/caller.h"
#include "runtime/packagestore.h"
#include "runtime/parcelwriter.h"

#include <QObject>
#include <QQueue>

namespace SimRuntime {

/// Tells the host's launcher service ("umbra.launcher") which activities there are. Announcements
/// go out one after the other; what cannot be delivered because the service is gone is forgotten,
/// as everything is announced anew when it is back.
class Announcer : public QObject
{
    Q_OBJECT

public:
    Announcer(Caller *caller, const PackageStore *store, int sdk, QObject *parent = nullptr);

    /// All apps, then that this was all.
    void announceAll();

    /// One app's activities, then that this was all.
    void announce(const QString &package);

    /// That a package is gone, and that this was all.
    void announceRemoval(const QString &package);

private:
    struct Announcement
    {
        quint32 code = 0;
        Parcel parcel;
    };

    void addActivities(const QString &package);
    void add(quint32 code, const ParcelWriter &request);
    ParcelWriter request() const;
    void sendNext();
    void onAnswered(quint32 code, int round, qint32 status);

    Caller *m_caller;
    const PackageStore *m_store;
    int m_sdk;
    QQueue<Announcement> m_queue;
    bool m_sending = false;
    int m_round = 0; ///< how often everything has been announced
};

} // namespace SimRuntime
