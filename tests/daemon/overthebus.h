#pragma once

#include "platform/host/privatebus.h"

#include <QObject>
#include <QVariantMap>

/// An "a{sv}" argument on its way from a client to a method of a service, over a bus of the test's
/// own: what the method gets has the very types, wrapped as deep, that the daemon's methods get.
class OverTheBus : public QObject
{
    Q_OBJECT

public:
    OverTheBus() = default;
    ~OverTheBus() override;

    /// False when there is no bus.
    bool start();

    /// What the method gets of these values. A warning tells when they did not arrive.
    QVariantMap carry(const QVariantMap &values);

    /// The same for a single value.
    QVariant carryValue(const QVariant &value);

public Q_SLOTS:
    void take(const QVariantMap &values);

private:
    PrivateBus m_bus;
    QVariantMap m_taken;
};
