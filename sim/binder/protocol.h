#pragma once

#include <cstddef>
#include <cstdint>

/// What the driver in a program and the router say to each other over their Unix stream socket.
///
/// The socket is one open file of the device. The driver sends one request and waits for its
/// answer, which always comes at once: reading is never blocking, as with O_NONBLOCK on the real
/// device. Everything is in the machine's own byte order, since both sides run on it. File
/// descriptors travel with the first byte of a frame (SCM_RIGHTS).
///
/// The router cannot see the program's memory. So the driver sends the data and offsets of each
/// BC_TRANSACTION and BC_REPLY along, and received messages appear in memory that both share: the
/// driver says where it maps it, and the router reports addresses in that mapping, as the kernel
/// does.
namespace SimBinder {

constexpr std::uint32_t ProtocolVersion = 1;

enum class Operation : std::uint32_t {
    Open = 1,      ///< u32 ProtocolVersion → an eventfd that is readable while work waits
    Map = 2,       ///< MapRequest → the memfd to map there
    Control = 3,   ///< u32 ioctl number, the ioctl's argument → the argument as changed
    WriteRead = 4, ///< WriteReadRequest, ... → WriteReadAnswer, ...
    Close = 5,     ///< an orderly close; no answer
};

struct RequestHeader
{
    std::uint32_t size = 0; ///< of the whole frame, this header included
    Operation operation = Operation::Open;
};

struct AnswerHeader
{
    std::uint32_t size = 0;  ///< of the whole frame, this header included
    std::int32_t result = 0; ///< 0 or a negative errno value
};

struct MapRequest
{
    std::uint64_t size = 0;
    std::uint64_t address = 0;
};

/// Followed by `writeSize` bytes of commands and then, for each BC_TRANSACTION and BC_REPLY among
/// them, a u64 count and that many bytes: the data, the offsets. In the data the descriptor of a
/// file object is replaced by its index among the files that came with the frame. A count that
/// is not the sum of the command's two sizes says that the message is too large for any receiver.
struct WriteReadRequest
{
    std::uint64_t writeSize = 0;
    std::uint64_t readSize = 0;
    std::uint32_t readBegins = 0; ///< 1: nothing is in the read buffer yet
    std::uint32_t reserved = 0;
};

/// Followed by `fileCount` u64 positions in the mapping, where the number of the file that came
/// with the frame has to be filled in, and by `readConsumed` bytes of returns.
struct WriteReadAnswer
{
    std::uint64_t writeConsumed = 0;
    std::uint64_t readConsumed = 0;
    std::uint64_t fileCount = 0;
};

static_assert(sizeof(RequestHeader) == 8 && sizeof(AnswerHeader) == 8);
static_assert(sizeof(MapRequest) == 16);
static_assert(sizeof(WriteReadRequest) == 24 && sizeof(WriteReadAnswer) == 24);

/// The binder driver uses no more of a mapping than this (Linux, drivers/android/binder_alloc.c).
constexpr std::size_t MaxMappingSize = std::size_t(4) * 1024 * 1024;

/// A frame can carry a few messages that fill a receiver's mapping; a longer one is refused.
constexpr std::size_t MaxFrameSize = 4 * MaxMappingSize;

/// Linux passes no more descriptors at once (SCM_MAX_FD).
constexpr std::size_t MaxFiles = 253;

} // namespace SimBinder
