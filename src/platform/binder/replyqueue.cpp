#include "platform/binder/replyqueue.h"

#include "platform/binder/address.h"
#include "platform/binder/channel.h"
#include "platform/binder/drivercategory.h"
#include "platform/binder/transactiondata.h"

#include <utility>

namespace Binder {

ReplyQueue::ReplyQueue(Channel &channel)
    : m_channel(channel)
{
}

void ReplyQueue::add(std::unique_ptr<OutgoingReply> reply, Status status)
{
    if (reply != nullptr && status == StatusOk && !reply->data().isComplete()) {
        qCWarning(lcBinderDriver) << "Reply is too large to be sent";
        status = StatusFailedTransaction;
    }

    Untaken &untaken = m_replies.emplace_back();
    untaken.reply = std::move(reply);
    untaken.status = status;
    binder_transaction_data transaction = {};
    if (status != StatusOk) {
        transaction.flags = TF_STATUS_CODE;
        transaction.data_size = sizeof untaken.status;
        transaction.data.ptr.buffer = address(&untaken.status);
    } else if (untaken.reply != nullptr) {
        describe(untaken.reply->data(), &transaction);
    }
    m_channel.queue(BC_REPLY, transaction);
    untaken.commandEnd = m_channel.bytesQueued();
}

void ReplyQueue::dropTaken()
{
    while (!m_replies.empty() && m_replies.front().commandEnd <= m_channel.bytesTaken())
        m_replies.pop_front();
}

} // namespace Binder
