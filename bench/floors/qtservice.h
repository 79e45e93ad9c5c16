#pragma once

#include "interface/androidversiondata.h"

#include <QDBusAbstractAdaptor>

/// One method of com.corvo.bramd, answered from constants.
class VersionAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.corvo.bramd")

public:
    explicit VersionAdaptor(QObject *service)
        : QDBusAbstractAdaptor(service)
    {
    }

public Q_SLOTS:
    AndroidVersionData getAndroidVersionData() const;
};
