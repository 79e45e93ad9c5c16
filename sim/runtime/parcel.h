#pragma once

#include <QByteArray>
#include <QVector>

namespace SimRuntime {

/// The contents of one message: its bytes and the byte positions of the binder objects in them.
struct Parcel
{
    QByteArray data;
    QVector<quint64> objects;
};

inline bool operator==(const Parcel &a, const Parcel &b)
{
    return a.data == b.data && a.objects == b.objects;
}

/// A binder object as it stands in a message. Handles count in the receiver's open file; an object
/// of the receiver that comes home carries the id it was given here.
struct ObjectReference
{
    enum class Kind { Null, Remote, Local };

    Kind kind = Kind::Null;
    quint32 handle = 0;
    quint64 id = 0;
};

inline bool operator==(const ObjectReference &a, const ObjectReference &b)
{
    return a.kind == b.kind && a.handle == b.handle && a.id == b.id;
}

} // namespace SimRuntime
