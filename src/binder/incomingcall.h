#pragma once

#include "platform/binder/localobject.h"

#include <functional>
#include <memory>

class BinderParcel;

namespace UmbraBinder {

/// The logic behind a local object: reads the fields of a call from `request`, writes those of the
/// answer to `reply` (for a one-way call an empty parcel that ignores what is written). False
/// tells the caller that the call was not handled.
using ProcessRequest =
    std::function<bool(quint32 code, BinderParcel *request, BinderParcel *reply)>;

/// Serves one incoming call of `object` by `processRequest`. `status` becomes 0 when the call was
/// handled and 1 when not. The reply is null for a one-way call.
std::unique_ptr<Binder::OutgoingReply> serve(const Binder::LocalObject &object,
                                             Binder::IncomingRequest &request, quint32 code,
                                             quint32 flags, Binder::Status *status,
                                             const ProcessRequest &processRequest);

} // namespace UmbraBinder
