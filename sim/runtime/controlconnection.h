#pragma once

#include "runtime/controlserver.h"

#include <QLocalSocket>
#include <QObject>

namespace SimRuntime {

/// One user of the control socket; deletes itself and the socket when the user leaves.
class ControlConnection : public QObject
{
    Q_OBJECT

public:
    ControlConnection(QLocalSocket *socket, const ControlServer::Handler &handler, QObject *parent);

private:
    void next();
    void reply(const QJsonObject &answer);

    QLocalSocket *m_socket;
    ControlServer::Handler m_handler;
    bool m_busy = false;
};

} // namespace SimRuntime
