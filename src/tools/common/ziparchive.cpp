#include "tools/common/ziparchive.h"

#include <QIODevice>
#include <QtEndian>

#include <algorithm>
#include <zlib.h>

// The numbers are those of PKWARE's APPNOTE.TXT, sections 4.3.7 (local file header), 4.3.12
// (central directory) and 4.3.16 (its end).
namespace ZipArchive {

namespace {

constexpr int EndSize = 22;
constexpr int MaxCommentSize = 65535;
constexpr int CentralHeaderSize = 46;
constexpr int LocalHeaderSize = 30;
constexpr qint64 MaxDirectorySize = Q_INT64_C(64) * 1024 * 1024;
constexpr quint16 Stored = 0;
constexpr quint16 Deflated = 8;

/// Where a file is in the archive.
struct Entry
{
    quint16 method = 0;
    quint32 packedSize = 0;
    quint32 size = 0;
    quint32 position = 0;
};

quint16 uint16At(const QByteArray &data, int position)
{
    return qFromLittleEndian<quint16>(data.constData() + position);
}

quint32 uint32At(const QByteArray &data, int position)
{
    return qFromLittleEndian<quint32>(data.constData() + position);
}

QByteArray readAt(QIODevice &archive, qint64 position, qint64 size)
{
    if (position < 0 || size < 0 || position + size > archive.size() || !archive.seek(position))
        return QByteArray();
    const QByteArray data = archive.read(size);
    return data.size() == size ? data : QByteArray();
}

QByteArray centralDirectory(QIODevice &archive)
{
    const qint64 tailSize = std::min<qint64>(archive.size(), EndSize + MaxCommentSize);
    const QByteArray tail = readAt(archive, archive.size() - tailSize, tailSize);
    const int end = tail.lastIndexOf(QByteArrayLiteral("PK\5\6"));
    if (end < 0 || tail.size() - end < EndSize)
        return QByteArray();
    const quint32 size = uint32At(tail, end + 12);
    return size > MaxDirectorySize ? QByteArray() : readAt(archive, uint32At(tail, end + 16), size);
}

bool findEntry(const QByteArray &directory, const QByteArray &name, Entry &entry)
{
    int position = 0;
    while (directory.size() - position >= CentralHeaderSize &&
           directory.mid(position, 4) == QByteArrayLiteral("PK\1\2")) {
        const int nameSize = uint16At(directory, position + 28);
        if (directory.mid(position + CentralHeaderSize, nameSize) == name) {
            entry.method = uint16At(directory, position + 10);
            entry.packedSize = uint32At(directory, position + 20);
            entry.size = uint32At(directory, position + 24);
            entry.position = uint32At(directory, position + 42);
            return true;
        }
        position += CentralHeaderSize + nameSize + uint16At(directory, position + 30) +
                    uint16At(directory, position + 32);
    }
    return false;
}

QByteArray inflated(QByteArray packed, quint32 size)
{
    QByteArray content(static_cast<int>(size), Qt::Uninitialized);
    z_stream stream{};
    if (inflateInit2(&stream, -MAX_WBITS) != Z_OK)
        return QByteArray();
    stream.next_in = reinterpret_cast<Bytef *>(packed.data());
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = reinterpret_cast<Bytef *>(content.data());
    stream.avail_out = static_cast<uInt>(content.size());
    const int result = inflate(&stream, Z_FINISH);
    const bool isWhole = result == Z_STREAM_END && stream.avail_out == 0;
    inflateEnd(&stream);
    return isWhole ? content : QByteArray();
}

} // namespace

QByteArray readFile(QIODevice &archive, const QByteArray &name, int maxBytes)
{
    Entry entry;
    const auto limit = static_cast<quint32>(maxBytes);
    if (!findEntry(centralDirectory(archive), name, entry) || entry.size > limit ||
        entry.packedSize > limit)
        return QByteArray();
    const QByteArray header = readAt(archive, entry.position, LocalHeaderSize);
    if (!header.startsWith(QByteArrayLiteral("PK\3\4")))
        return QByteArray();
    const qint64 position =
        qint64(entry.position) + LocalHeaderSize + uint16At(header, 26) + uint16At(header, 28);
    const QByteArray packed = readAt(archive, position, entry.packedSize);
    if (entry.method == Stored)
        return packed;
    return entry.method == Deflated ? inflated(packed, entry.size) : QByteArray();
}

} // namespace ZipArchive
