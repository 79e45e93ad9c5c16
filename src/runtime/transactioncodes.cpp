#include "runtime/transactioncodes.h"

#include "binder/logging.h"
#include "config/daemonconfig.h"

quint32 TransactionCodes::forRuntime() const
{
    switch (DaemonConfig::androidSdkVersion()) {
    case 27:
        return sdk27;
    case 28:
        return sdk28;
    case 29:
        return sdk29;
    default:
        qCCritical(binderLog) << "Unsupported android SDK version!";
        return other;
    }
}
