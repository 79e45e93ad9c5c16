#pragma once

#include <QByteArray>
#include <QDataStream>
#include <QStringList>
#include <QVector>

/// One return of a read, with the payload's fields that it has.
struct Return
{
    quint32 code = 0;
    quint64 id = 0;     ///< INCREFS…DECREFS: the object; a call: the object called
    quint64 cookie = 0; ///< the object's, or the death notification's

    // BR_TRANSACTION and BR_REPLY
    quint32 callCode = 0;
    quint32 flags = 0;
    qint32 senderPid = 0;
    quint32 senderEuid = 0;
    quint64 address = 0; ///< of the data, to be freed by
    QByteArray data;
    QVector<quint64> offsets;

    /// A field of the object that lies at `offset` in the data: its type, its flags, the number
    /// (id or handle) and the cookie.
    quint32 objectType(int offset = 0) const;
    quint32 objectFlags(int offset = 0) const;
    quint64 objectNumber(int offset = 0) const;
    quint64 objectCookie(int offset = 0) const;

    /// "BR_NOOP", …
    QString name() const;
};

QDataStream &operator<<(QDataStream &stream, const Return &item);
QDataStream &operator>>(QDataStream &stream, Return &item);

/// What one BINDER_WRITE_READ came back with.
struct Outcome
{
    int result = 0;
    quint64 writeConsumed = 0;
    QVector<Return> returns;

    /// The names, in order, without the BR_NOOPs that mean nothing.
    QStringList names() const;

    /// The names of everything, BR_NOOPs too.
    QStringList allNames() const;

    /// An empty one when there is none.
    Return last() const { return returns.isEmpty() ? Return() : returns.last(); }
    Return first(const char *name) const;
};
