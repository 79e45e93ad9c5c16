#include "sim/returns.h"

#include <QHash>

#include <cstring>
#include <linux/android/binder.h>

namespace {

template <typename T>
T fieldAt(const QByteArray &data, int position)
{
    T value = 0;
    if (position >= 0 && data.size() - position >= int(sizeof value))
        std::memcpy(&value, data.constData() + position, sizeof value);
    return value;
}

} // namespace

quint32 Return::objectType(int offset) const
{
    return fieldAt<quint32>(data, offset);
}

quint32 Return::objectFlags(int offset) const
{
    return fieldAt<quint32>(data, offset + int(offsetof(flat_binder_object, flags)));
}

quint64 Return::objectNumber(int offset) const
{
    return fieldAt<quint64>(data, offset + int(offsetof(flat_binder_object, binder)));
}

quint64 Return::objectCookie(int offset) const
{
    return fieldAt<quint64>(data, offset + int(offsetof(flat_binder_object, cookie)));
}

QString Return::name() const
{
    static const QHash<quint32, QString> names = {
        {BR_ERROR, QStringLiteral("BR_ERROR")},
        {BR_OK, QStringLiteral("BR_OK")},
        {BR_TRANSACTION, QStringLiteral("BR_TRANSACTION")},
        {BR_REPLY, QStringLiteral("BR_REPLY")},
        {BR_DEAD_REPLY, QStringLiteral("BR_DEAD_REPLY")},
        {BR_TRANSACTION_COMPLETE, QStringLiteral("BR_TRANSACTION_COMPLETE")},
        {BR_INCREFS, QStringLiteral("BR_INCREFS")},
        {BR_ACQUIRE, QStringLiteral("BR_ACQUIRE")},
        {BR_RELEASE, QStringLiteral("BR_RELEASE")},
        {BR_DECREFS, QStringLiteral("BR_DECREFS")},
        {BR_NOOP, QStringLiteral("BR_NOOP")},
        {BR_SPAWN_LOOPER, QStringLiteral("BR_SPAWN_LOOPER")},
        {BR_DEAD_BINDER, QStringLiteral("BR_DEAD_BINDER")},
        {BR_CLEAR_DEATH_NOTIFICATION_DONE, QStringLiteral("BR_CLEAR_DEATH_NOTIFICATION_DONE")},
        {BR_FAILED_REPLY, QStringLiteral("BR_FAILED_REPLY")},
    };
    return names.value(code, QStringLiteral("0x") + QString::number(code, 16));
}

QDataStream &operator<<(QDataStream &stream, const Return &item)
{
    return stream << item.code << item.id << item.cookie << item.callCode << item.flags
                  << item.senderPid << item.senderEuid << item.address << item.data << item.offsets;
}

QDataStream &operator>>(QDataStream &stream, Return &item)
{
    return stream >> item.code >> item.id >> item.cookie >> item.callCode >> item.flags >>
           item.senderPid >> item.senderEuid >> item.address >> item.data >> item.offsets;
}

QStringList Outcome::names() const
{
    QStringList names;
    for (const Return &item : returns) {
        if (item.code != BR_NOOP)
            names.append(item.name());
    }
    return names;
}

QStringList Outcome::allNames() const
{
    QStringList names;
    for (const Return &item : returns)
        names.append(item.name());
    return names;
}

Return Outcome::first(const char *name) const
{
    for (const Return &item : returns) {
        if (item.name() == QLatin1String(name))
            return item;
    }
    return Return();
}
