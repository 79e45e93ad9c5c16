#include "runtime/request.h"

#include "runtime/intentreader.h"

namespace SimRuntime {

namespace {

QJsonValue toJson(const ObjectReference &object)
{
    switch (object.kind) {
    case ObjectReference::Kind::Remote:
        return QJsonObject{{QStringLiteral("handle"), int(object.handle)}};
    case ObjectReference::Kind::Local:
        return QJsonObject{{QStringLiteral("local"), qint64(object.id)}};
    case ObjectReference::Kind::Null:
        break;
    }
    return QJsonValue::Null;
}

QJsonValue toJson(const QString &text)
{
    return text.isNull() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
}

} // namespace

qint32 Request::int32(const char *name) const
{
    return m_json.value(QLatin1String(name)).toInt();
}

QString Request::string(const char *name) const
{
    return m_json.value(QLatin1String(name)).toString();
}

ObjectReference Request::object(const char *name) const
{
    return m_objects.value(QLatin1String(name));
}

QJsonObject Request::intent(const char *name) const
{
    return m_json.value(QLatin1String(name)).toObject();
}

Request Request::read(ParcelReader *reader, const QVector<Field> &fields, int sdk)
{
    Request request;
    for (const Field &field : fields) {
        const QString name = QLatin1String(field.name);
        QJsonValue value;
        switch (field.kind) {
        case FieldKind::Int32:
            value = reader->int32();
            break;
        case FieldKind::String:
            value = toJson(reader->string16());
            break;
        case FieldKind::Object: {
            const ObjectReference object = reader->object();
            request.m_objects.insert(name, object);
            value = toJson(object);
            break;
        }
        case FieldKind::Intent:
            value = reader->int32() == 0 ? QJsonValue(QJsonValue::Null)
                                         : QJsonValue(readIntent(reader, sdk));
            break;
        case FieldKind::AbsentBundle:
            if (reader->int32() != 0)
                reader->fail(QStringLiteral("%1 was not expected").arg(name));
            value = QJsonValue::Null;
            break;
        }
        if (reader->failed())
            return request;
        request.m_json.insert(name, value);
    }
    if (reader->remaining() > 0)
        reader->fail(QStringLiteral("%1 bytes left over").arg(reader->remaining()));
    return request;
}

} // namespace SimRuntime
