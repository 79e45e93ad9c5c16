#include "platform/host/accountsdevicepolicy.h"

#include "platform/host/logging.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>
#include <QDeadlineTimer>

namespace {

QDBusMessage findUser(uid_t user)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Accounts"), QStringLiteral("/org/freedesktop/Accounts"),
        QStringLiteral("org.freedesktop.Accounts"), QStringLiteral("FindUserById"));
    call << static_cast<qlonglong>(user);
    return call;
}

QDBusMessage getAllowUserInstallation(const QString &account)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Accounts"), account,
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call << QStringLiteral("com.endlessm.ParentalControls.AppFilter")
         << QStringLiteral("AllowUserInstallation");
    return call;
}

bool isNoSuchProperty(QDBusError::ErrorType error)
{
    // AccountsService is a GDBus service: those say InvalidArgs for an interface or a property
    // that the object does not have.
    return error == QDBusError::UnknownInterface || error == QDBusError::UnknownProperty ||
           error == QDBusError::InvalidArgs;
}

bool refuse(const QString &reason)
{
    qCWarning(daemonLog) << "Cannot read the device policy on app installation:" << reason;
    return false;
}

} // namespace

AccountsDevicePolicy::AccountsDevicePolicy(const QDBusConnection &bus,
                                           std::function<std::optional<uid_t>()> seatUser,
                                           int timeoutMs)
    : m_bus(bus)
    , m_seatUser(std::move(seatUser))
    , m_timeoutMs(timeoutMs)
{
}

bool AccountsDevicePolicy::mayInstallApps()
{
    const std::optional<uid_t> user = m_seatUser();
    if (!user)
        return refuse(QStringLiteral("no user is active on the seat"));

    const QDeadlineTimer deadline(m_timeoutMs);
    const QDBusReply<QDBusObjectPath> account =
        m_bus.call(findUser(*user), QDBus::Block, m_timeoutMs);
    if (account.error().type() == QDBusError::ServiceUnknown)
        return true;
    if (!account.isValid())
        return refuse(account.error().message());

    // Never 0: that would be no time at all for D-Bus, and -1 its own default.
    const int remainingMs = qMax(1, static_cast<int>(deadline.remainingTime()));
    const QDBusReply<QDBusVariant> allowed =
        m_bus.call(getAllowUserInstallation(account.value().path()), QDBus::Block, remainingMs);
    if (isNoSuchProperty(allowed.error().type()))
        return true;
    if (!allowed.isValid())
        return refuse(allowed.error().message());
    const QVariant value = allowed.value().variant();
    if (value.userType() != QMetaType::Bool)
        return refuse(QStringLiteral("the answer is not a boolean"));
    return value.toBool();
}
