#pragma once

#include <cstdint>
#include <map>
#include <optional>

namespace SimBinder {

/// Hands out pieces of one receiver's mapping, as the kernel does (Linux,
/// drivers/android/binder_alloc.c): the smallest free piece that fits is taken, pieces that become
/// free join their neighbours, and one-way messages may together take half of the mapping, each
/// counted with the kernel's own record of it.
class BufferAllocator
{
public:
    explicit BufferAllocator(std::uint64_t size);

    /// Offset of a piece for `dataSize` and `offsetsSize` bytes, each rounded up to 8. Nothing
    /// when there is no room.
    std::optional<std::uint64_t> take(std::uint64_t dataSize, std::uint64_t offsetsSize,
                                      bool oneWay);

    /// Returns a piece that take() gave out.
    void giveBack(std::uint64_t offset);

    std::uint64_t freeOneWaySpace() const { return m_freeOneWaySpace; }

private:
    struct Piece
    {
        std::uint64_t size = 0;
        bool oneWay = false;
    };

    std::map<std::uint64_t, Piece> m_taken;
    std::map<std::uint64_t, std::uint64_t> m_free; // offset to size
    std::uint64_t m_size;
    std::uint64_t m_freeOneWaySpace;
};

} // namespace SimBinder
