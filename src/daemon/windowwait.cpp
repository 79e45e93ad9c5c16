#include "daemon/windowwait.h"

#include "binder/umbrabinderconnection.h"
#include "binder/umbrabindertransaction.h"
#include "platform/host/logging.h"

#include <memory>

namespace {

constexpr int looks = 10;
constexpr unsigned long pauseMs = 500;

// Not Android's own: the runtime image adds it to the compositor.
constexpr quint32 hasWindowOfPackage = 103;

} // namespace

void waitForWindow(const QString &packageName,
                   const std::function<void(unsigned long milliseconds)> &sleep)
{
    UmbraBinderConnection compositor("SurfaceFlinger", "android.ui.ISurfaceComposer", false);
    for (int look = 0; look < looks; ++look) {
        const std::unique_ptr<UmbraBinderTransaction> transaction(
            compositor.createTransaction(hasWindowOfPackage, false));
        if (transaction == nullptr)
            return;
        transaction->request().writeString(packageName);
        if (transaction->execute() == 0 && transaction->reply().readBool())
            return;
        qCDebug(daemonLog) << "Window for" << packageName << "not yet found. Sleeping 500ms";
        sleep(pauseMs);
    }
}
