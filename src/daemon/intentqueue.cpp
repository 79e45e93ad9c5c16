#include "daemon/intentqueue.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>

namespace {

/// No such value can be sent to the runtime: it is told of in the log by its type. As it came it
/// would keep the message of the bus, of up to 32 MiB, or file descriptors, for as long as it
/// waits.
QVariant withoutUnsendable(const QVariant &extra)
{
    const QVariant unsendable[] = {
        QVariant::fromValue(QDBusArgument()), QVariant::fromValue(QDBusVariant()),
        QVariant::fromValue(QDBusObjectPath()), QVariant::fromValue(QDBusUnixFileDescriptor())};
    for (const QVariant &value : unsendable) {
        if (value.userType() == extra.userType())
            return value;
    }
    return extra;
}

} // namespace

bool IntentQueue::add(const Intent &intent)
{
    Intent kept = intent;
    for (QVariant &extra : kept.extras)
        extra = withoutUnsendable(extra);
    return m_waiting.add(kept);
}

void IntentQueue::workThrough(const std::function<bool(const Intent &)> &start)
{
    if (m_busy)
        return;
    m_busy = true;
    while (!m_waiting.isEmpty()) {
        const Intent intent = m_waiting.takeFirst();
        if (start(intent))
            continue;
        m_waiting.putBack(intent);
        break;
    }
    m_busy = false;
}
