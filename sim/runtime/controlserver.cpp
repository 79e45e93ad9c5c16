#include "runtime/controlserver.h"

#include "runtime/controlconnection.h"

#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcControl, "sim.runtime.control")

namespace SimRuntime {

ControlServer::ControlServer(Handler handler, QObject *parent)
    : QObject(parent)
    , m_handler(std::move(handler))
{
    connect(&m_server, &QLocalServer::newConnection, this, &ControlServer::onConnection);
}

bool ControlServer::listen(const QString &path)
{
    QLocalServer::removeServer(path);
    if (m_server.listen(path))
        return true;
    qCCritical(lcControl) << "Cannot listen at" << path << m_server.errorString();
    return false;
}

void ControlServer::onConnection()
{
    while (QLocalSocket *socket = m_server.nextPendingConnection())
        new ControlConnection(socket, m_handler, this);
}

} // namespace SimRuntime
