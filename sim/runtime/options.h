#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace SimRuntime {

/// What the program was started with.
struct Options
{
    QByteArray device;
    int sdk = 0;
    QString dataRoot;
    QString record;   ///< file; empty: nothing is recorded
    QString control;  ///< socket; empty: none
    QStringList held; ///< names hidden from the start
    qint64 storageLimit = 0;
    int bootDelayMs = 0;
    QStringList caller; ///< arguments that start this program as the process that makes the calls
};

} // namespace SimRuntime
