#include "binder/bufferallocator.h"

#include <algorithm>

namespace SimBinder {

namespace {

// sizeof(struct binder_buffer) on 64-bit machines: what a one-way message costs besides its bytes.
constexpr std::uint64_t RecordSize = 104;

// An empty message takes a piece too, so that it has an address of its own to be freed by.
constexpr std::uint64_t SmallestPiece = 8;

std::uint64_t alignedTo8(std::uint64_t size)
{
    return (size + 7) & ~std::uint64_t(7);
}

} // namespace

BufferAllocator::BufferAllocator(std::uint64_t size)
    : m_size(size)
    , m_freeOneWaySpace(size / 2)
{
    if (size > 0)
        m_free.emplace(0, size);
}

std::optional<std::uint64_t> BufferAllocator::take(std::uint64_t dataSize,
                                                   std::uint64_t offsetsSize, bool oneWay)
{
    if (dataSize > m_size || offsetsSize > m_size)
        return std::nullopt;
    const std::uint64_t size =
        std::max(alignedTo8(dataSize) + alignedTo8(offsetsSize), SmallestPiece);
    if (oneWay && m_freeOneWaySpace < size + RecordSize)
        return std::nullopt;

    auto best = m_free.end();
    for (auto piece = m_free.begin(); piece != m_free.end(); ++piece) {
        if (piece->second >= size && (best == m_free.end() || piece->second < best->second))
            best = piece;
    }
    if (best == m_free.end())
        return std::nullopt;

    const auto [offset, available] = *best;
    m_free.erase(best);
    if (available > size)
        m_free.emplace(offset + size, available - size);
    m_taken.emplace(offset, Piece{size, oneWay});
    if (oneWay)
        m_freeOneWaySpace -= size + RecordSize;
    return offset;
}

void BufferAllocator::giveBack(std::uint64_t offset)
{
    const auto taken = m_taken.find(offset);
    if (taken == m_taken.end())
        return;
    std::uint64_t begin = offset;
    std::uint64_t size = taken->second.size;
    if (taken->second.oneWay)
        m_freeOneWaySpace += size + RecordSize;
    m_taken.erase(taken);

    auto next = m_free.lower_bound(begin);
    if (next != m_free.end() && next->first == begin + size) {
        size += next->second;
        next = m_free.erase(next);
    }
    if (next != m_free.begin()) {
        const auto previous = std::prev(next);
        if (previous->first + previous->second == begin) {
            begin = previous->first;
            size += previous->second;
            m_free.erase(previous);
        }
    }
    m_free.emplace(begin, size);
}

} // namespace SimBinder
