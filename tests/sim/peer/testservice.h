#pragma once

#include "platform/binder/localobject.h"
#include "platform/binder/servicemanager.h"
#include "platform/binder/servicename.h"

#include <QByteArray>

#include <memory>

/// A service of another process, made with the library, that the library's tests call.
class TestService
{
public:
    static constexpr const char *Descriptor = "test.service";
    static constexpr const char *ObjectDescriptor = "test.object";

    enum Code : quint32 {
        Echo = 1,     ///< byte array → the same
        CallBack = 2, ///< object, int32 n → calls its Echo n levels deep; int32 result of that
        Count = 3,    ///< one-way: int32 that is to be one more than the last, byte array
        Counted = 4,  ///< → int32 how many Count came, int32 how many were out of order
        Refuse = 5,   ///< → status StatusRefused
        Flood = 6,    ///< object, int32 n → n one-way calls Count of the object; int32 failures
        Die = 7,      ///< ends the process while serving
        CallName = 8, ///< byte array name, int32 n → calls that service's Echo with n; its int32
    };

    /// Registers itself with the service manager under the name.
    TestService(const char *device, const char *name);

    bool isReady() const { return m_name != nullptr; }

private:
    std::unique_ptr<Binder::OutgoingReply> serve(Binder::IncomingRequest &request, quint32 code,
                                                 Binder::Status *status);
    static qint32 callBack(Binder::Reader &reader);
    qint32 callName(Binder::Reader &reader) const;
    static qint32 flood(Binder::Reader &reader);

    std::unique_ptr<Binder::ServiceManager> m_manager;
    std::unique_ptr<Binder::LocalObject> m_object;
    std::unique_ptr<Binder::ServiceName> m_name;
    qint32 m_count = 0;
    qint32 m_outOfOrder = 0;
};
