#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

class FakeObject;

/// Builds what the runtime's side sends, item by item. Written apart from the library's Writer, so
/// that neither hides a mistake of the other.
class FakeParcel
{
public:
    FakeParcel() = default;
    explicit FakeParcel(const QByteArray &data)
        : m_data(data)
    {
    }

    FakeParcel &int32(qint32 value);
    FakeParcel &int64(qint64 value);
    FakeParcel &float64(double value);
    FakeParcel &string16(const QString &text); ///< a null string is length −1
    FakeParcel &byteArray(const QByteArray &bytes);
    FakeParcel &raw(const QByteArray &bytes);

    /// Interface token with these words before the descriptor.
    FakeParcel &token(const QString &descriptor, const std::vector<qint32> &words = {0});

    FakeParcel &object(const std::shared_ptr<FakeObject> &object);
    FakeParcel &ownObject(quint64 id); ///< an object of the receiver that comes home
    FakeParcel &nullObject();

    /// A file descriptor, which becomes the receiver's.
    FakeParcel &fileDescriptor(int descriptor);

    /// Says that an object lies at this position, whether or not one does.
    FakeParcel &listObjectAt(quint64 position);

    const QByteArray &data() const { return m_data; }
    const std::vector<quint64> &offsets() const { return m_offsets; }
    const std::map<std::size_t, std::shared_ptr<FakeObject>> &objects() const { return m_objects; }

private:
    FakeParcel &flatObject(quint32 type, quint64 binder, quint64 cookie);

    QByteArray m_data;
    std::vector<quint64> m_offsets;
    std::map<std::size_t, std::shared_ptr<FakeObject>> m_objects; // by position
};
