#pragma once

#include "fakes/fakebinder.h"
#include "platform/binder/client.h"
#include "platform/binder/localobject.h"
#include "platform/binder/remoteobject.h"
#include "platform/binder/servicemanager.h"

#include <QStringList>

#include <memory>

/// A runtime with one service, "thing", and this process's connection to it. What is left over
/// when it goes out of scope fails the test.
struct Phone
{
    static constexpr char Device[] = "/dev/marshhopper";
    static constexpr char Descriptor[] = "test.IThing";

    Phone()
        : thing(binder.addService("thing"))
        , manager(Binder::ServiceManager::open(Device))
        , client(Binder::Client::create(manager->getService("thing"), Descriptor))
    {
        binder.contextManager()->takeTransactions();
    }

    FakeBinder binder;
    std::shared_ptr<FakeObject> thing;
    std::unique_ptr<Binder::ServiceManager> manager;
    std::unique_ptr<Binder::Client> client;
};

/// Whether the only warning is that the driver has refused a request with this code.
inline bool isOneRefusal(const QStringList &warnings, quint32 code)
{
    const QString text = QStringLiteral("The driver did not take request %1 of ").arg(code);
    return warnings.size() == 1 && warnings.first().startsWith(text);
}
