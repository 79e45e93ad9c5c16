// usage: floor_intent WORK N
// The least that it takes to make the bytes of an intent and to read them again: by hand, for the
// fields that this one has. WORK is "encode", "decode", or "print", which shows the bytes.

#include "common/cost.h"
#include "common/intentrecord.h"

#include <QByteArray>

#include <cstdlib>
#include <cstring>

namespace {

constexpr qint32 BundleMagic = 0x4C444E42;

void put(QByteArray *bytes, qint32 value)
{
    bytes->append(reinterpret_cast<const char *>(&value), sizeof value);
}

void put(QByteArray *bytes, const QString &text)
{
    put(bytes, text.size());
    bytes->append(reinterpret_cast<const char *>(text.utf16()), (text.size() + 1) * 2);
    bytes->append(-bytes->size() & 3, '\0');
}

QByteArray encode(const IntentRecord &record)
{
    QByteArray bytes;
    put(&bytes, record.action);
    put(&bytes, 1); // the address is a string
    put(&bytes, record.data.toString());
    put(&bytes, record.type);
    put(&bytes, record.flags);
    put(&bytes, record.package);
    put(&bytes, record.componentPackage);
    put(&bytes, record.componentClass);
    put(&bytes, 0); // no bounds
    put(&bytes, record.categories.size());
    for (const QString &category : record.categories)
        put(&bytes, category);
    put(&bytes, 0);  // no selector
    put(&bytes, 0);  // no clip data
    put(&bytes, -2); // the current user
    const int lengthPosition = bytes.size();
    put(&bytes, 0);
    put(&bytes, BundleMagic);
    put(&bytes, record.extras.size());
    for (auto extra = record.extras.begin(); extra != record.extras.end(); ++extra) {
        put(&bytes, extra.key());
        if (extra->userType() == QMetaType::Int) {
            put(&bytes, 1);
            put(&bytes, extra->toInt());
        } else {
            put(&bytes, 0);
            put(&bytes, extra->toString());
        }
    }
    const qint32 length = bytes.size() - lengthPosition - 8;
    std::memcpy(bytes.data() + lengthPosition, &length, sizeof length);
    return bytes;
}

/// Trusts every length.
class Fields
{
public:
    explicit Fields(const QByteArray &bytes)
        : m_next(bytes.constData())
    {
    }

    qint32 number()
    {
        qint32 value = 0;
        std::memcpy(&value, m_next, sizeof value);
        m_next += sizeof value;
        return value;
    }

    QString text()
    {
        const qint32 length = number();
        const QString value(reinterpret_cast<const QChar *>(m_next), length);
        m_next += ((length + 1) * 2 + 3) & ~3;
        return value;
    }

private:
    const char *m_next;
};

IntentRecord decode(const QByteArray &bytes)
{
    IntentRecord record{{}, {}, {}, 0, {}, {}, {}, {}, {}};
    Fields fields(bytes);
    record.action = fields.text();
    fields.number();
    record.data = QUrl(fields.text());
    record.type = fields.text();
    record.flags = fields.number();
    record.package = fields.text();
    record.componentPackage = fields.text();
    record.componentClass = fields.text();
    fields.number();
    for (int left = fields.number(); left > 0; --left)
        record.categories.append(fields.text());
    for (int skipped = 0; skipped < 5; ++skipped)
        fields.number();
    for (int left = fields.number(); left > 0; --left) {
        const QString key = fields.text();
        if (fields.number() == 1)
            record.extras.insert(key, fields.number());
        else
            record.extras.insert(key, fields.text());
    }
    return record;
}

} // namespace

int main(int argc, char *argv[])
{
    const QByteArray work = argc == 3 ? argv[1] : "";
    const int count = argc == 3 ? std::atoi(argv[2]) : 0;
    const IntentRecord record;
    const QByteArray bytes = encode(record);
    if (work == "print") {
        std::puts(bytes.toHex().constData());
    } else if (work == "encode") {
        printCost(count, [&] {
            for (int i = 0; i < count; ++i)
                encode(record);
        });
    } else {
        if (decode(bytes).extras != record.extras || decode(bytes).data != record.data)
            return EXIT_FAILURE;
        printCost(count, [&] {
            for (int i = 0; i < count; ++i)
                decode(bytes);
        });
    }
    return EXIT_SUCCESS;
}
