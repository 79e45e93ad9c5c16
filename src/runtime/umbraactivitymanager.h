#pragma once

#include "binder/umbrabinderconnection.h"

#include <QString>

struct Intent;

/// The daemon's client of the Android activity manager service "activity". Both calls block until
/// the runtime answers, tell nothing of the outcome, and do nothing without a connection.
class UmbraActivityManager : public UmbraBinderConnection
{
    Q_OBJECT

public:
    explicit UmbraActivityManager(QObject *parent = nullptr);

    /// Starts the activity that the intent names or resolves to.
    void startActivity(const Intent &intent);

    /// Stops all processes of a package.
    void forceStopPackage(const QString &packageName);
};
