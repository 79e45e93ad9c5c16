#include "binder/incomingcall.h"

#include "binder/binderparcel.h"

namespace UmbraBinder {

std::unique_ptr<Binder::OutgoingReply> serve(const Binder::LocalObject &object,
                                             Binder::IncomingRequest &request, quint32 code,
                                             quint32 flags, Binder::Status *status,
                                             const ProcessRequest &processRequest)
{
    BinderParcel requestParcel(request);
    std::unique_ptr<Binder::OutgoingReply> reply;
    BinderParcel replyParcel;
    if ((flags & Binder::FlagOneWay) == 0) {
        reply = object.createReply();
        replyParcel = BinderParcel(*reply);
    }
    const bool handled = processRequest(code, &requestParcel, &replyParcel);
    *status = handled ? Binder::StatusOk : Binder::StatusRefused;
    return reply;
}

} // namespace UmbraBinder
