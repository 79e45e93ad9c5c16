#include "tools/opener/desktopnotice.h"

#include <QDBusMessage>
#include <QStringList>
#include <QVariantMap>

namespace {

constexpr int ServiceDecidesTimeout = -1;

} // namespace

DesktopNotice::DesktopNotice(const QDBusConnection &bus)
    : m_bus(bus)
{
}

DesktopNotice::~DesktopNotice()
{
    m_reply.waitForFinished();
}

quint32 DesktopNotice::id()
{
    m_reply.waitForFinished();
    return m_reply.isValid() ? m_reply.value() : 0;
}

void DesktopNotice::show(const ApkNotice &notice)
{
    // The icon of the daemon's notices, of which one follows with the result.
    const QString icon = QStringLiteral("icon-s-android");
    const QVariantMap hints{{QStringLiteral("image-path"), icon},
                            {QStringLiteral("transient"), true}};
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"),
        QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    call << qtTrId("bramd-ap-name") << id() << icon << notice.summary << notice.body
         << QStringList() << hints << ServiceDecidesTimeout;
    m_reply = m_bus.asyncCall(call, AnswerTimeoutMs);
}
