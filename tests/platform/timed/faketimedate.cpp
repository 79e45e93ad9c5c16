#include "platform/timed/faketimedate.h"

#include <QDBusError>
#include <QDBusVariant>

namespace {

const QString ConnectionName = QStringLiteral("fake timedate");
const QString Name = QStringLiteral("org.freedesktop.timedate1");
const QString Path = QStringLiteral("/org/freedesktop/timedate1");

} // namespace

FakeTimedate::FakeTimedate(const QString &busAddress, const QVariant &answer)
    : m_object(answer)
    , m_connection(QDBusConnection::connectToBus(busAddress, ConnectionName))
{
    m_up = m_connection.registerVirtualObject(Path, &m_object);
    m_object.moveToThread(&m_thread);
    m_thread.start();
    m_up = m_up && m_connection.registerService(Name);
}

FakeTimedate::~FakeTimedate()
{
    m_connection.unregisterObject(Path);
    m_thread.quit();
    m_thread.wait();
    QDBusConnection::disconnectFromBus(ConnectionName);
}

QVariant FakeTimedate::zone(const QVariant &value)
{
    return QVariant::fromValue(QDBusVariant(value));
}

QStringList FakeTimedate::calls() const
{
    const QMutexLocker lock(&m_object.mutex);
    return m_object.calls;
}

void FakeTimedate::announce(const QVariant &zone)
{
    announce(Name, {{QStringLiteral("Timezone"), zone}});
}

void FakeTimedate::announce(const QString &interface, const QVariantMap &changed,
                            const QStringList &invalidated, const QString &path)
{
    QDBusMessage signal =
        QDBusMessage::createSignal(path, QStringLiteral("org.freedesktop.DBus.Properties"),
                                   QStringLiteral("PropertiesChanged"));
    signal << interface << changed << invalidated;
    m_connection.send(signal);
}

FakeTimedate::Object::Object(const QVariant &answer)
    : m_answer(answer)
{
}

QString FakeTimedate::Object::introspect(const QString &path) const
{
    Q_UNUSED(path)
    return QString();
}

bool FakeTimedate::Object::handleMessage(const QDBusMessage &message,
                                         const QDBusConnection &connection)
{
    {
        const QMutexLocker lock(&mutex);
        QStringList arguments;
        for (const QVariant &argument : message.arguments())
            arguments.append(argument.toString());
        calls.append(QStringLiteral("%1 %2.%3 %4 (%5)")
                         .arg(message.path(), message.interface(), message.member(),
                              message.signature(), arguments.join(QStringLiteral(", "))));
    }
    if (m_answer.isValid())
        return connection.send(message.createReply(m_answer));
    return connection.send(
        message.createErrorReply(QDBusError::UnknownProperty, QStringLiteral("No.")));
}
