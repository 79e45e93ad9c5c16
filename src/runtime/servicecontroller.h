#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

class QDBusAbstractInterface;

/// Follows and drives "umbravm.service", the systemd unit that runs the Android runtime, over
/// systemd's manager on the system bus (org.freedesktop.systemd1(5)).
class ServiceController : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString serviceState READ serviceState NOTIFY serviceStateChanged)
    Q_PROPERTY(bool serviceEnabled READ serviceEnabled NOTIFY serviceEnabledChanged)

public:
    /// The one controller of the process, made on the first call, which blocks until systemd has
    /// answered, and never destroyed.
    static ServiceController *instance();

    /// The unit's `ActiveState` as systemd last reported it; "invalid" when the unit could not be
    /// loaded, empty when its properties could not be read.
    QString serviceState() const { return m_serviceState; }

    /// Whether the unit's `UnitFileState` is exactly "enabled".
    bool serviceEnabled() const { return m_serviceEnabled; }

    /// Asks systemd to start or stop the unit, unless it is, or is becoming, so already. Does not
    /// wait; the new state arrives through serviceStateChanged().
    void controlService(bool start);

    /// Asks systemd to start the unit at boot or not. Does not wait.
    void controlServiceAutostart(bool enable);

Q_SIGNALS:
    void serviceStateChanged();
    void serviceEnabledChanged();

public Q_SLOTS:
    void onPropertiesChanged(const QString &interface, const QVariantMap &changed,
                             const QStringList &invalidated);

private:
    ServiceController();

    QDBusAbstractInterface *m_manager;
    QString m_unitPath;
    QString m_serviceState;
    bool m_serviceEnabled = false;
};
