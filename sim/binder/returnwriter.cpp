#include "binder/returnwriter.h"

#include "binder/client.h"

#include <algorithm>
#include <cerrno>
#include <linux/android/binder.h>
#include <utility>

namespace SimBinder {

namespace {

// More fills no read buffer of a real program.
constexpr std::size_t MaxRead = 65536;

// Work is taken only while the largest return still fits.
constexpr std::size_t LargestReturn =
    sizeof(std::uint32_t) + sizeof(binder_transaction_data_secctx);

} // namespace

ReturnWriter::ReturnWriter(Client &client, std::size_t room)
    : m_client(client)
    , m_room(std::min(room, MaxRead))
{
}

int ReturnWriter::run(bool begins)
{
    if (!m_client.hasWork())
        return -EAGAIN;
    if (begins)
        writeNothing();
    const std::size_t nothing = m_bytes.size();

    bool idle = m_client.isIdle();
    while (hasRoom()) {
        std::optional<Work> work = m_client.takeWork(idle);
        if (!work) {
            if (m_bytes.size() > nothing)
                break;
            // All work cancelled out. The kernel looks again, and sleeps if there is no more.
            idle = m_client.isIdle();
            if (!m_client.hasWork()) {
                m_bytes.clear();
                return -EAGAIN;
            }
            continue;
        }
        if (std::visit([this](const auto &item) { return write(item); }, *work) == Then::End)
            break;
    }
    return 0;
}

void ReturnWriter::writeNothing()
{
    if (m_room >= sizeof(std::uint32_t))
        append(BR_NOOP);
}

ReturnWriter::Then ReturnWriter::write(const MessageWork &work)
{
    Transaction &message = *work.transaction;
    Buffer &buffer = *std::exchange(message.buffer, nullptr);
    const ReceiveArea &area = m_client.area();

    binder_transaction_data data = {};
    if (buffer.target != nullptr) {
        data.target.ptr = buffer.target->id();
        data.cookie = buffer.target->cookie();
    }
    data.code = message.code;
    data.flags = message.flags;
    data.sender_pid = message.from == nullptr ? 0 : message.from->pid();
    data.sender_euid = message.senderEuid;
    data.data_size = buffer.dataSize;
    data.offsets_size = buffer.offsetsSize;
    data.data.ptr.buffer = area.dataAddress(buffer);
    data.data.ptr.offsets = area.offsetsAddress(buffer);
    append(buffer.target != nullptr ? BR_TRANSACTION : BR_REPLY, data);

    buffer.isDelivered = true;
    m_files = std::move(message.files);
    if (message.expectsReply) {
        message.to = &m_client;
        message.calleesOuter = m_client.innermostCall();
        m_client.setInnermostCall(work.transaction);
    }
    return Then::End;
}

ReturnWriter::Then ReturnWriter::write(const ReturnWork &work)
{
    if (work.endsWriteError)
        m_client.resumeWriting();
    append(work.code);
    return Then::ReadOn;
}

ReturnWriter::Then ReturnWriter::write(const AnnouncementWork &work)
{
    Node &node = *work.node;
    const Node::Announcement announcement = node.announce();
    const binder_ptr_cookie object = {node.id(), node.cookie()};
    if (announcement.incRefs)
        append(BR_INCREFS, object);
    if (announcement.acquire)
        append(BR_ACQUIRE, object);
    if (announcement.release)
        append(BR_RELEASE, object);
    if (announcement.decRefs)
        append(BR_DECREFS, object);
    return Then::ReadOn;
}

ReturnWriter::Then ReturnWriter::write(const DeathWork &work)
{
    const DeathNotices::Notice notice = m_client.deaths().read(work.death);
    append(notice.code, binder_uintptr_t(notice.cookie));
    return notice.code == BR_DEAD_BINDER ? Then::End : Then::ReadOn;
}

void ReturnWriter::append(std::uint32_t code)
{
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(&code);
    m_bytes.insert(m_bytes.end(), bytes, bytes + sizeof code);
}

template <typename T>
void ReturnWriter::append(std::uint32_t code, const T &payload)
{
    append(code);
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(&payload);
    m_bytes.insert(m_bytes.end(), bytes, bytes + sizeof payload);
}

bool ReturnWriter::hasRoom() const
{
    return m_room - m_bytes.size() >= LargestReturn;
}

} // namespace SimBinder
