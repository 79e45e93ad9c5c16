#pragma once

#include <QByteArray>
#include <QVector>

#include <linux/android/binder.h>

/// A message as a test writes it. An object lies at each offset.
struct Message
{
    QByteArray data;
    QVector<quint64> offsets;

    Message() = default;
    Message(const QByteArray &bytes)
        : data(bytes)
    {
    } // a message of nothing but bytes

    /// Appends an object and lists it.
    Message &object(quint32 type, quint64 number, quint64 cookie, quint32 flags = 0x113);

    Message &ownObject(quint64 id) { return object(BINDER_TYPE_BINDER, id, cookieOf(id)); }
    Message &handle(quint32 number) { return object(BINDER_TYPE_HANDLE, number, 0); }

    /// The cookie that own objects have in these tests, unless a test says otherwise.
    static quint64 cookieOf(quint64 id) { return id * 1000; }
};

/// A write buffer under construction. The messages lie apart, since their addresses are known
/// only in the process that sends them.
class Commands
{
public:
    Commands &call(quint32 handle, quint32 code, const Message &message = {}, quint32 flags = 0);
    Commands &oneWay(quint32 handle, quint32 code, const Message &message = {});
    Commands &reply(const Message &message = {}, quint32 flags = 0);

    Commands &incRefs(quint32 handle) { return add(BC_INCREFS, handle); }
    Commands &acquire(quint32 handle) { return add(BC_ACQUIRE, handle); }
    Commands &release(quint32 handle) { return add(BC_RELEASE, handle); }
    Commands &decRefs(quint32 handle) { return add(BC_DECREFS, handle); }
    Commands &incRefsDone(quint64 id);
    Commands &acquireDone(quint64 id);
    Commands &freeBuffer(quint64 address) { return add(BC_FREE_BUFFER, address); }
    Commands &requestDeath(quint32 handle, quint64 cookie);
    Commands &clearDeath(quint32 handle, quint64 cookie);
    Commands &deadDone(quint64 cookie) { return add(BC_DEAD_BINDER_DONE, cookie); }
    Commands &enterLooper();

    /// Any command.
    template <typename T>
    Commands &add(quint32 code, const T &payload)
    {
        m_bytes.append(reinterpret_cast<const char *>(&code), sizeof code);
        m_bytes.append(reinterpret_cast<const char *>(&payload), sizeof payload);
        return *this;
    }

    const QByteArray &bytes() const { return m_bytes; }
    const QVector<Message> &messages() const { return m_messages; }

private:
    Commands &message(quint32 command, quint32 handle, quint32 code, quint32 flags,
                      const Message &message);

    QByteArray m_bytes;
    QVector<Message> m_messages;
};
