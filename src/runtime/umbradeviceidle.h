#pragma once

#include "binder/umbrabinderconnection.h"

#include <QString>

/// The daemon's client of the Android device idle controller "deviceidle". A package on its
/// power-save whitelist may start in the background, and so when the runtime boots. Both calls
/// block until the runtime answers.
class UmbraDeviceIdle : public UmbraBinderConnection
{
    Q_OBJECT

public:
    explicit UmbraDeviceIdle(QObject *parent = nullptr);

    /// Puts the package on the whitelist or takes it off. A failed call logs one critical line.
    void setPowerSaveWhitelist(const QString &packageName, bool whitelisted);

    /// False, too, without a connection, and with one critical line when the call fails.
    bool isPowerSaveWhitelisted(const QString &packageName);
};
