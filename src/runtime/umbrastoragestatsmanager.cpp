#include "runtime/umbrastoragestatsmanager.h"

#include "binder/logging.h"
#include "binder/umbrabindertransaction.h"
#include "runtime/transactioncodes.h"

#include <QScopedPointer>

namespace {

constexpr char ServiceName[] = "storagestats";
constexpr char InterfaceDescriptor[] = "android.app.usage.IStorageStatsManager";

constexpr TransactionCodes QueryStatsForPackage{6, 7, 7, 7};

} // namespace

UmbraStorageStatsManager::UmbraStorageStatsManager(QObject *parent)
    : UmbraBinderConnection(ServiceName, InterfaceDescriptor, false, parent)
{
}

PackageStats UmbraStorageStatsManager::queryStatsForPackage(const QString &packageName,
                                                            const QString &volumeUuid, int userId)
{
    PackageStats stats;
    qCDebug(binderLog) << "Requesting package stats";
    const quint32 code = QueryStatsForPackage.forRuntime();
    const QScopedPointer<UmbraBinderTransaction> transaction(createTransaction(code, false));
    if (transaction.isNull()) {
        qCCritical(binderLog) << "Could not create storagestats transaction";
        return stats;
    }
    BinderParcel &request = transaction->request();
    request.writeString(volumeUuid);
    request.writeString(packageName);
    request.writeInt32(userId);
    request.writeString(QString()); // calling package
    if (transaction->execute() != 0) {
        qCCritical(binderLog) << "Error requesting package stats";
        return stats;
    }

    BinderParcel &reply = transaction->reply();
    // The exception word and the word that says whether figures follow, in one; neither is
    // examined, and an answer without figures reads as it comes.
    const qint64 status = reply.readInt64();
    qCDebug(binderLog) << "Status:" << static_cast<qint32>(status);
    stats.code = reply.readInt64();
    qCDebug(binderLog) << "Code: " << stats.code;
    stats.data = reply.readInt64();
    qCDebug(binderLog) << "Data: " << stats.data;
    stats.cache = reply.readInt64();
    qCDebug(binderLog) << "Cache: " << stats.cache;
    return stats;
}
