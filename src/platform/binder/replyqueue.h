#pragma once

#include "platform/binder/message.h"
#include "platform/binder/types.h"

#include <deque>
#include <memory>

namespace Binder {

class Channel;

/// The replies to incoming calls that the driver has not taken yet. Their commands name the bytes
/// where they are, so these stay here until then.
class ReplyQueue
{
public:
    /// The channel must outlive this object.
    explicit ReplyQueue(Channel &channel);

    /// Queues the command. Anything but StatusOk is sent in place of the reply; without a reply an
    /// empty one is sent.
    void add(std::unique_ptr<OutgoingReply> reply, Status status);

    /// To be called when the driver has taken commands.
    void dropTaken();

    bool isEmpty() const { return m_replies.empty(); }

private:
    struct Untaken
    {
        quint64 commandEnd = 0; ///< in all the bytes that were ever queued
        std::unique_ptr<OutgoingReply> reply;
        Status status = StatusOk;
    };

    Channel &m_channel;
    std::deque<Untaken> m_replies; // what is in it does not move
};

} // namespace Binder
