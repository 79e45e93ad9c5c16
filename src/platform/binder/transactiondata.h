#pragma once

#include "platform/binder/address.h"
#include "platform/binder/outgoingdata.h"

#include <linux/android/binder.h>

namespace Binder {

/// Has the driver's description of a message (linux/android/binder.h) point to its bytes, which
/// must stay where they are until the driver has taken the command.
inline void describe(const OutgoingData &data, binder_transaction_data *transaction)
{
    transaction->data_size = data.size();
    transaction->data.ptr.buffer = address(data.bytes().constData());
    transaction->offsets_size = data.objects().size() * sizeof(binder_size_t);
    transaction->data.ptr.offsets = address(data.objects().data());
}

} // namespace Binder
