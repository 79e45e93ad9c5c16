#include "binder/socketdriver.h"

#include "binder/filepassing.h"
#include "binder/messagecollector.h"
#include "binder/unixaddress.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <linux/android/binder.h>
#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/socket.h>

namespace SimBinder {

namespace {

template <typename T>
void append(std::vector<std::uint8_t> *body, const T &value)
{
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(&value);
    body->insert(body->end(), bytes, bytes + sizeof value);
}

std::size_t roundedToPages(std::size_t size)
{
    const auto pageSize = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    return (size + pageSize - 1) / pageSize * pageSize;
}

} // namespace

std::unique_ptr<SocketDriver> SocketDriver::connect(const char *path)
{
    UnixAddress address;
    if (!address.set(path))
        return nullptr;
    std::unique_ptr<SocketDriver> driver(new SocketDriver);
    UniqueFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!socket.isValid() || ::connect(socket.get(), address.get(), address.size()) != 0)
        return nullptr;
    driver->m_socket = std::move(socket);
    if (const int result = driver->begin()) {
        driver.reset();
        errno = -result;
    }
    return driver;
}

SocketDriver::~SocketDriver()
{
    if (m_socket.isValid())
        send(Operation::Close, {}, {});
    if (m_mapping != nullptr)
        ::munmap(m_mapping, m_mappingSize);
}

int SocketDriver::begin()
{
    std::vector<std::uint8_t> body;
    append(&body, ProtocolVersion);
    Reply reply;
    const int result = exchange(Operation::Open, body, {}, &reply);
    if (result != 0)
        return result;
    if (reply.files.size() != 1)
        return -EMFILE;
    m_work = std::move(reply.files[0]);
    // A router that has gone makes the descriptor readable: the next control() tells of it.
    m_readiness.reset(::epoll_create1(EPOLL_CLOEXEC));
    epoll_event work = {};
    work.events = EPOLLIN;
    epoll_event gone = {};
    gone.events = EPOLLRDHUP;
    if (!m_readiness.isValid() ||
        ::epoll_ctl(m_readiness.get(), EPOLL_CTL_ADD, m_work.get(), &work) != 0 ||
        ::epoll_ctl(m_readiness.get(), EPOLL_CTL_ADD, m_socket.get(), &gone) != 0)
        return -errno;
    return 0;
}

int SocketDriver::control(unsigned long request, void *argument)
{
    if (request == BINDER_WRITE_READ)
        return writeRead(static_cast<binder_write_read *>(argument));

    const std::size_t size = _IOC_SIZE(request);
    std::vector<std::uint8_t> body;
    append(&body, static_cast<std::uint32_t>(request));
    body.resize(body.size() + size);
    if ((_IOC_DIR(request) & _IOC_WRITE) != 0 && argument != nullptr)
        std::memcpy(body.data() + body.size() - size, argument, size);
    Reply reply;
    const int result = exchange(Operation::Control, body, {}, &reply);
    if (result == 0 && (_IOC_DIR(request) & _IOC_READ) != 0 && !reply.body.empty())
        std::memcpy(argument, reply.body.data(), std::min(size, reply.body.size()));
    return result;
}

const void *SocketDriver::map(std::size_t size)
{
    const std::size_t whole = roundedToPages(size);
    void *place =
        ::mmap(nullptr, whole, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (place == MAP_FAILED)
        return nullptr;
    std::vector<std::uint8_t> body;
    append(&body, MapRequest{whole, reinterpret_cast<std::uint64_t>(place)});
    Reply reply;
    int result = exchange(Operation::Map, body, {}, &reply);
    if (result == 0 && reply.files.size() != 1)
        result = -EMFILE;
    const std::size_t shared = std::min(whole, MaxMappingSize);
    if (result == 0 && ::mmap(place, shared, PROT_READ, MAP_SHARED | MAP_FIXED,
                              reply.files[0].get(), 0) == MAP_FAILED)
        result = -errno;
    if (result != 0) {
        ::munmap(place, whole);
        errno = -result;
        return nullptr;
    }
    m_memory = std::move(reply.files[0]);
    m_mapping = place;
    m_mappingSize = whole;
    return place;
}

int SocketDriver::writeRead(binder_write_read *exchanged)
{
    const auto *commands =
        reinterpret_cast<const std::uint8_t *>( // NOLINT(performance-no-int-to-ptr)
            exchanged->write_buffer) +
        exchanged->write_consumed;
    const std::size_t writeSize = exchanged->write_size > exchanged->write_consumed
                                      ? exchanged->write_size - exchanged->write_consumed
                                      : 0;
    MessageCollector messages;
    messages.collect(commands, writeSize);

    WriteReadRequest header;
    header.writeSize = writeSize;
    if (exchanged->read_size > exchanged->read_consumed)
        header.readSize = exchanged->read_size - exchanged->read_consumed;
    header.readBegins = exchanged->read_consumed == 0 ? 1 : 0;
    std::vector<std::uint8_t> body;
    append(&body, header);
    body.insert(body.end(), commands, commands + writeSize);
    body.insert(body.end(), messages.bytes().begin(), messages.bytes().end());

    Reply reply;
    const int result = exchange(Operation::WriteRead, body, messages.files(), &reply);
    if (reply.body.size() < sizeof(WriteReadAnswer))
        return result != 0 ? result : fail();
    const int delivered = deliver(&reply, exchanged);
    return delivered != 0 ? delivered : result;
}

int SocketDriver::deliver(Reply *reply, binder_write_read *exchanged)
{
    WriteReadAnswer answer;
    std::memcpy(&answer, reply->body.data(), sizeof answer);
    const std::uint8_t *positions = reply->body.data() + sizeof answer;
    const std::size_t rest = reply->body.size() - sizeof answer;
    if (answer.fileCount > MaxFiles || rest < answer.fileCount * sizeof(std::uint64_t) ||
        rest - answer.fileCount * sizeof(std::uint64_t) != answer.readConsumed)
        return fail();

    for (std::size_t i = 0; i < answer.fileCount; ++i) {
        std::uint64_t position = 0;
        std::memcpy(&position, positions + i * sizeof position, sizeof position);
        const int file = i < reply->files.size() ? reply->files[i].release() : -1;
        if (::pwrite(m_memory.get(), &file, sizeof file, static_cast<off_t>(position)) !=
            sizeof file)
            return fail();
    }
    if (answer.readConsumed > 0) {
        auto *returns = reinterpret_cast<std::uint8_t *>( // NOLINT(performance-no-int-to-ptr)
            exchanged->read_buffer);
        std::memcpy(returns + exchanged->read_consumed,
                    positions + answer.fileCount * sizeof(std::uint64_t), answer.readConsumed);
    }
    exchanged->write_consumed += answer.writeConsumed;
    exchanged->read_consumed += answer.readConsumed;
    return 0;
}

int SocketDriver::exchange(Operation operation, const std::vector<std::uint8_t> &body,
                           const std::vector<int> &files, Reply *reply)
{
    if (!m_socket.isValid())
        return -ECONNREFUSED;
    if (body.size() > MaxFrameSize - sizeof(RequestHeader))
        return -ENOMEM;
    if (!send(operation, body, files) || !receive(reply))
        return fail();
    return reply->result;
}

bool SocketDriver::send(Operation operation, const std::vector<std::uint8_t> &body,
                        const std::vector<int> &files)
{
    RequestHeader header;
    header.size = static_cast<std::uint32_t>(sizeof header + body.size());
    header.operation = operation;
    std::vector<std::uint8_t> frame;
    frame.reserve(header.size);
    append(&frame, header);
    frame.insert(frame.end(), body.begin(), body.end());
    for (std::size_t sent = 0; sent < frame.size();) {
        const ssize_t count =
            sendWithFiles(m_socket.get(), frame.data() + sent, frame.size() - sent,
                          sent == 0 ? files : std::vector<int>());
        if (count < 0)
            return false;
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

bool SocketDriver::receive(Reply *reply)
{
    const auto receiveAll = [this, reply](void *bytes, std::size_t size) {
        auto *position = static_cast<std::uint8_t *>(bytes);
        while (size > 0) {
            const ssize_t count = receiveWithFiles(m_socket.get(), position, size, &reply->files);
            if (count <= 0)
                return false;
            position += count;
            size -= static_cast<std::size_t>(count);
        }
        return true;
    };
    AnswerHeader header;
    if (!receiveAll(&header, sizeof header) || header.size < sizeof header ||
        header.size > MaxFrameSize)
        return false;
    reply->result = header.result;
    reply->body.resize(header.size - sizeof header);
    return receiveAll(reply->body.data(), reply->body.size());
}

// The router is gone, or is none. The kernel's driver answers the same when it has closed a file.
int SocketDriver::fail()
{
    m_socket.reset();
    return -ECONNREFUSED;
}

} // namespace SimBinder

std::unique_ptr<Binder::Driver> Binder::Driver::open(const char *device)
{
    return SimBinder::SocketDriver::connect(device);
}
