#include "platform/host/fakeaccounts.h"

#include <QDBusMessage>

namespace {

const char connectionName[] = "accounts";

} // namespace

FakeAccounts::FakeAccounts(Answer user, Answer allowUserInstallation)
    : m_user(std::move(user))
    , m_allowUserInstallation(std::move(allowUserInstallation))
{
}

FakeAccounts::~FakeAccounts()
{
    QDBusConnection::disconnectFromBus(QLatin1String(connectionName));
    m_thread.quit();
    m_thread.wait();
}

bool FakeAccounts::serve(const QString &address)
{
    QDBusConnection bus = QDBusConnection::connectToBus(address, QLatin1String(connectionName));
    const bool registered = bus.registerVirtualObject(QStringLiteral("/org/freedesktop/Accounts"),
                                                      this, QDBusConnection::SubPath);
    moveToThread(&m_thread);
    m_thread.start();
    return registered && bus.registerService(QStringLiteral("org.freedesktop.Accounts"));
}

bool FakeAccounts::handleMessage(const QDBusMessage &message, const QDBusConnection &connection)
{
    QStringList question{message.path(), message.interface(), message.member()};
    for (const QVariant &argument : message.arguments())
        question.append(argument.toString());
    m_questions.append(question.join(QLatin1Char(' ')));

    const bool asksForUser = message.member() == QLatin1String("FindUserById");
    const Answer &answer = asksForUser ? m_user : m_allowUserInstallation;
    if (answer.silent)
        return true;
    if (answer.error.isEmpty())
        return connection.send(message.createReply(answer.value));
    return connection.send(message.createErrorReply(answer.error, QStringLiteral("no luck")));
}

QString FakeAccounts::introspect(const QString &path) const
{
    Q_UNUSED(path)
    return QString();
}

QStringList FakeAccounts::questions() const
{
    return m_questions;
}
