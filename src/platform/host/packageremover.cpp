#include "platform/host/packageremover.h"

#include "platform/host/logging.h"

#include <QMetaEnum>

#include <PackageKit/Daemon>
#include <PackageKit/Transaction>

using PackageKit::Transaction;

namespace {

void logErrors(Transaction *transaction, const char *failure)
{
    QObject::connect(transaction, &Transaction::errorCode, transaction,
                     [failure](Transaction::Error error, const QString &details) {
                         const auto names = QMetaEnum::fromType<Transaction::Error>();
                         qCDebug(daemonLog) << failure << names.valueToKey(error) << details;
                     });
}

void removeById(const QString &packageId)
{
    constexpr bool allowDependencies = false;
    constexpr bool autoremove = false;
    Transaction *removal = PackageKit::Daemon::removePackage(
        packageId, allowDependencies, autoremove, Transaction::TransactionFlagOnlyTrusted);
    logErrors(removal, "Error uninstalling package: ");
}

} // namespace

void PackageRemover::remove(const QString &package) const
{
    // Transactions belong to PackageKit's library, which deletes them once they have finished.
    qCDebug(daemonLog) << "Requesting uninstall of RPM '" << package << "' from PackageKit";
    Transaction *search = PackageKit::Daemon::resolve(package, Transaction::FilterInstalled);
    logErrors(search, "Error resolving package: ");
    QObject::connect(search, &Transaction::package, search,
                     [](Transaction::Info, const QString &packageId) { removeById(packageId); });
}
