#include "tools/common/apkfile.h"

#include "config/runtimetext.h"
#include "tools/common/ziparchive.h"

#include <QFile>
#include <QFileInfo>
#include <QVector>
#include <QtEndian>

#include <algorithm>

// The layout is that of Android's public ResourceTypes.h: chunks of (type, header size, size), one
// of them the pool of strings, and one per element.
namespace {

constexpr quint16 XmlChunk = 0x0003;
constexpr quint16 StringPoolChunk = 0x0001;
constexpr quint16 StartElementChunk = 0x0102;
constexpr quint32 Utf8Flag = 0x100;
constexpr int MaxManifestBytes = 4 * 1024 * 1024;
constexpr quint32 MaxStrings = 100000;

/// Bytes of which none beyond the end is ever read: they are zero.
class Bytes
{
public:
    explicit Bytes(const QByteArray &data)
        : m_data(data)
    {
    }

    quint64 size() const { return static_cast<quint64>(m_data.size()); }
    quint8 uint8At(quint64 position) const { return numberAt<quint8>(position); }
    quint16 uint16At(quint64 position) const { return numberAt<quint16>(position); }
    quint32 uint32At(quint64 position) const { return numberAt<quint32>(position); }

    QByteArray mid(quint64 position, quint64 length) const
    {
        if (position > size() || length > size() - position)
            return QByteArray();
        return m_data.mid(static_cast<int>(position), static_cast<int>(length));
    }

private:
    template <typename Number>
    Number numberAt(quint64 position) const
    {
        const QByteArray bytes = mid(position, sizeof(Number));
        return bytes.isEmpty() ? Number(0) : qFromLittleEndian<Number>(bytes.constData());
    }

    const QByteArray &m_data;
};

/// Two lengths, in characters and in bytes, of one or two bytes each, then the bytes.
QString utf8At(const Bytes &xml, quint64 position)
{
    const auto skipLength = [&xml](quint64 at) {
        return at + ((xml.uint8At(at) & 0x80) != 0 ? 2 : 1);
    };
    position = skipLength(position);
    quint64 length = xml.uint8At(position);
    if ((length & 0x80) != 0)
        length = ((length & 0x7f) << 8) | xml.uint8At(position + 1);
    return QString::fromUtf8(xml.mid(skipLength(position), length));
}

QString utf16At(const Bytes &xml, quint64 position)
{
    const quint64 length = xml.uint16At(position); // longer ones than 32767 name no package
    QString text;
    for (quint64 index = 0; index < length && length < 0x8000; ++index)
        text.append(QChar(xml.uint16At(position + 2 + 2 * index)));
    return text;
}

QVector<QString> readStrings(const Bytes &xml, quint64 chunk)
{
    const quint32 count = std::min(xml.uint32At(chunk + 8), MaxStrings);
    const bool isUtf8 = (xml.uint32At(chunk + 16) & Utf8Flag) != 0;
    const quint64 strings = chunk + xml.uint32At(chunk + 20);
    const quint64 offsets = chunk + xml.uint16At(chunk + 2);
    QVector<QString> texts;
    for (quint64 index = 0; index < count && offsets + 4 * index < xml.size(); ++index) {
        const quint64 position = strings + xml.uint32At(offsets + 4 * index);
        texts.append(isUtf8 ? utf8At(xml, position) : utf16At(xml, position));
    }
    return texts;
}

QString stringAt(const QVector<QString> &strings, quint32 index)
{
    return index < static_cast<quint32>(strings.size()) ? strings.at(static_cast<int>(index))
                                                        : QString();
}

ApkFile readManifestElement(const Bytes &xml, quint64 chunk, const QVector<QString> &strings)
{
    const quint64 element = chunk + xml.uint16At(chunk + 2);
    ApkFile apk;
    if (stringAt(strings, xml.uint32At(element + 4)) != QLatin1String("manifest"))
        return apk;
    const quint64 attributes = element + xml.uint16At(element + 8);
    const quint16 attributeSize = xml.uint16At(element + 10);
    const quint16 count = xml.uint16At(element + 12);
    for (quint64 index = 0; index < count; ++index) {
        const quint64 attribute = attributes + index * attributeSize;
        const QString name = stringAt(strings, xml.uint32At(attribute + 4));
        const QString value = stringAt(strings, xml.uint32At(attribute + 8));
        if (name == QLatin1String("package"))
            apk.packageName = value;
        else if (name == QLatin1String("versionName"))
            apk.versionName = value;
    }
    return apk;
}

} // namespace

ApkFile parseManifest(const QByteArray &data)
{
    const Bytes xml(data);
    if (xml.uint16At(0) != XmlChunk)
        return {};
    QVector<QString> strings;
    quint64 chunk = xml.uint16At(2);
    while (chunk < xml.size()) {
        const quint16 type = xml.uint16At(chunk);
        const quint32 size = xml.uint32At(chunk + 4);
        if (size == 0 || chunk + size > xml.size())
            break;
        if (type == StringPoolChunk)
            strings = readStrings(xml, chunk);
        if (type == StartElementChunk) {
            const ApkFile apk = readManifestElement(xml, chunk, strings);
            return RuntimeText::isUsableName(apk.packageName) ? apk : ApkFile();
        }
        chunk += size;
    }
    return {};
}

ApkFile ApkFile::read(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return {};
    return parseManifest(
        ZipArchive::readFile(file, QByteArrayLiteral("AndroidManifest.xml"), MaxManifestBytes));
}
