// usage: ours_binderclient NAME N
// Calls the binder service of that name N times as the daemon does, and tells the median.

#include "binder/binderparcel.h"
#include "binder/sdklevelsource.h"
#include "common/cost.h"
#include "platform/binder/client.h"
#include "platform/binder/servicemanager.h"

#include <QCoreApplication>

#include <cstdlib>

namespace {

constexpr char Device[] = "/dev/marshhopper";
constexpr char Interface[] = "umbra.applications.IUmbraNativeLauncherService";
constexpr quint32 UnknownCode = 1000;

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    UmbraBinder::provideSdkLevel();
    const std::unique_ptr<Binder::ServiceManager> manager = Binder::ServiceManager::open(Device);
    const std::unique_ptr<Binder::Client> client =
        argc == 3 && manager ? Binder::Client::create(manager->getService(argv[1]), Interface)
                             : nullptr;
    if (client == nullptr) {
        std::fprintf(stderr, "ours_binderclient: nobody has that name\n");
        return EXIT_FAILURE;
    }
    printMedianCost(std::atoi(argv[2]), [&client](int) {
        const std::unique_ptr<Binder::OutgoingRequest> request = client->createRequest();
        BinderParcel(*request).writeInt32(1);
        const std::unique_ptr<Binder::IncomingReply> reply =
            client->transact(UnknownCode, *request);
        if (reply == nullptr || BinderParcel(*reply).readInt32() != 0)
            std::exit(EXIT_FAILURE);
    });
    return EXIT_SUCCESS;
}
