#pragma once

#include "tools/common/outcome.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QObject>
#include <QString>
#include <QVariantMap>

/// The systemd unit that runs the Android runtime, "umbravm.service", as systemd itself describes
/// it over the system bus. The daemon's own `isRunning` is no help: it always answers false.
class RuntimeUnit : public QObject
{
    Q_OBJECT

public:
    /// systemd answers in no time, or not at all.
    static constexpr int AnswerTimeoutMs = 10000;

    struct State
    {
        /// Done, or why nothing is known; the other fields are empty then.
        Outcome outcome;
        bool isUnstartable = false; ///< there is no usable unit, or it is masked
        QString activeState;   ///< "active", "activating", "inactive", "deactivating", "failed"
        QString subState;      ///< finer, as "running" or "dead"
        QString unitFileState; ///< "enabled", "disabled", "static", "masked", ...

        bool isActive() const { return activeState == QLatin1String("active"); }
        bool hasFailed() const { return activeState == QLatin1String("failed"); }
        bool isEnabled() const { return unitFileState == QLatin1String("enabled"); }
    };

    explicit RuntimeUnit(const QDBusConnection &bus = QDBusConnection::systemBus(),
                         int timeoutMs = AnswerTimeoutMs, QObject *parent = nullptr);

    /// Asks anew, and blocks until there is an answer.
    State read() const;

    /// Has activeStateChanged() emitted from now on, which needs an event loop. Call it before a
    /// state is read that others are to follow, or one may be missed.
    Outcome watch();

Q_SIGNALS:
    /// In the order in which the unit went through them, the short ones too, which read() may miss.
    /// A state may be told again.
    void activeStateChanged(const QString &activeState);

private Q_SLOTS:
    void onPropertiesChanged(const QString &interface, const QVariantMap &changed);

private:
    QDBusReply<QDBusObjectPath> load() const;

    QDBusConnection m_bus;
    int m_timeoutMs;
};
