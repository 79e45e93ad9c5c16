#include "tools/common/fakedaemon.h"

#include <QDBusMessage>

namespace {

const char connectionName[] = "daemon";

} // namespace

FakeDaemon::FakeDaemon(Answer answer)
    : m_answer(std::move(answer))
{
}

FakeDaemon::~FakeDaemon()
{
    leave();
    m_thread.quit();
    m_thread.wait();
}

bool FakeDaemon::serve(const QString &address)
{
    QDBusConnection bus = QDBusConnection::connectToBus(address, QLatin1String(connectionName));
    const bool registered = bus.registerVirtualObject(QStringLiteral("/com/corvo/bramd"), this);
    moveToThread(&m_thread);
    m_thread.start();
    return registered && bus.registerService(QStringLiteral("com.corvo.bramd"));
}

void FakeDaemon::leave()
{
    QDBusConnection::disconnectFromBus(QLatin1String(connectionName));
}

QStringList FakeDaemon::calls() const
{
    const QMutexLocker lock(&m_mutex);
    return m_calls;
}

bool FakeDaemon::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    {
        const QMutexLocker lock(&m_mutex);
        m_calls.append(QStringLiteral("%1(%2)").arg(message.member(), message.signature()));
    }
    if (m_answer.silent)
        return true;
    if (!m_answer.error.isEmpty())
        return connection.send(message.createErrorReply(m_answer.error, QStringLiteral("no luck")));
    return connection.send(message.createReply(m_answer.values));
}

QString FakeDaemon::introspect(const QString &path) const
{
    Q_UNUSED(path)
    return QString();
}
