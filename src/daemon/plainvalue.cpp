#include "daemon/plainvalue.h"

#include <QDBusArgument>
#include <QDBusVariant>

namespace {

QVariantMap plainMap(const QDBusArgument &argument)
{
    QVariantMap map;
    argument.beginMap();
    while (!argument.atEnd()) {
        argument.beginMapEntry();
        const QString key = argument.asVariant().toString();
        map.insert(key, plainValue(argument.asVariant()));
        argument.endMapEntry();
    }
    argument.endMap();
    return map;
}

QVariantList plainArray(const QDBusArgument &argument)
{
    QVariantList list;
    argument.beginArray();
    while (!argument.atEnd())
        list.append(plainValue(argument.asVariant()));
    argument.endArray();
    return list;
}

QVariantList plainStructure(const QDBusArgument &argument)
{
    QVariantList list;
    argument.beginStructure();
    while (!argument.atEnd())
        list.append(plainValue(argument.asVariant()));
    argument.endStructure();
    return list;
}

} // namespace

QVariant plainValue(const QVariant &value)
{
    if (value.userType() == qMetaTypeId<QDBusVariant>())
        return plainValue(value.value<QDBusVariant>().variant());
    if (value.userType() != qMetaTypeId<QDBusArgument>())
        return value;
    // The bus nests containers at most 64 deep, so this ends.
    const auto argument = value.value<QDBusArgument>();
    switch (argument.currentType()) {
    case QDBusArgument::BasicType:
    case QDBusArgument::VariantType:
        return plainValue(argument.asVariant());
    case QDBusArgument::ArrayType:
        return plainArray(argument);
    case QDBusArgument::StructureType:
        return plainStructure(argument);
    case QDBusArgument::MapType:
        return plainMap(argument);
    case QDBusArgument::MapEntryType:
    case QDBusArgument::UnknownType:
        break;
    }
    return QVariant();
}
