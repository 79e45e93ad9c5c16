#pragma once

#include "runtime/parcelreader.h"

#include <QHash>
#include <QJsonObject>
#include <QString>
#include <QVector>

namespace SimRuntime {

enum class FieldKind {
    Int32,
    String,
    Object,
    Intent,       ///< presence word, then the Intent
    AbsentBundle, ///< presence word of an optional argument that no caller here gives
};

/// One argument of a method, in the order of the method's AIDL declaration.
struct Field
{
    const char *name;
    FieldKind kind;
};

/// The arguments of one call, by name. Asking for a name that the method does not have gives the
/// default.
class Request
{
public:
    qint32 int32(const char *name) const;
    QString string(const char *name) const;
    ObjectReference object(const char *name) const;
    QJsonObject intent(const char *name) const;

    /// Everything, for the record.
    const QJsonObject &json() const { return m_json; }

    /// Reads the arguments. What is wrong with the request, bytes left over included, is in the
    /// reader's problem() afterwards.
    static Request read(ParcelReader *reader, const QVector<Field> &fields, int sdk);

private:
    QJsonObject m_json;
    QHash<QString, ObjectReference> m_objects;
};

} // namespace SimRuntime
