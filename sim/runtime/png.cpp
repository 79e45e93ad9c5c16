#include "runtime/png.h"

#include <QtEndian>

namespace SimRuntime {

namespace {

// The CRC of RFC 2083, section 3.4.
quint32 crcOf(const QByteArray &bytes)
{
    quint32 crc = 0xffffffff;
    for (const char byte : bytes) {
        crc ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) != 0 ? 0xedb88320 ^ (crc >> 1) : crc >> 1;
    }
    return crc ^ 0xffffffff;
}

void appendNumber(QByteArray *bytes, quint32 number)
{
    const quint32 ordered = qToBigEndian(number);
    bytes->append(reinterpret_cast<const char *>(&ordered), sizeof ordered);
}

void appendChunk(QByteArray *file, const char *type, const QByteArray &content)
{
    appendNumber(file, quint32(content.size()));
    file->append(type).append(content);
    appendNumber(file, crcOf(type + content));
}

} // namespace

QByteArray encodePng(int width, const QVector<quint32> &argbPixels)
{
    const int height = argbPixels.size() / width;
    QByteArray header;
    appendNumber(&header, quint32(width));
    appendNumber(&header, quint32(height));
    header.append("\x08\x06\x00\x00\x00", 5); // 8 bits, RGB with alpha, the usual methods

    QByteArray rows;
    for (int y = 0; y < height; ++y) {
        rows.append('\0'); // unfiltered
        for (int x = 0; x < width; ++x) {
            const quint32 pixel = argbPixels.at(y * width + x);
            appendNumber(&rows, pixel << 8 | pixel >> 24);
        }
    }

    QByteArray file("\x89PNG\r\n\x1a\n", 8);
    appendChunk(&file, "IHDR", header);
    appendChunk(&file, "IDAT", qCompress(rows).mid(4)); // Qt puts the length before the zlib stream
    appendChunk(&file, "IEND", {});
    return file;
}

} // namespace SimRuntime
