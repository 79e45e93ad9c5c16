#include "runtime/controlconnection.h"

#include <QJsonDocument>
#include <QPointer>

namespace SimRuntime {

namespace {

constexpr qint64 LongestLine = qint64(8) * 1024 * 1024;

} // namespace

ControlConnection::ControlConnection(QLocalSocket *socket, const ControlServer::Handler &handler,
                                     QObject *parent)
    : QObject(parent)
    , m_socket(socket)
    , m_handler(handler)
{
    socket->setParent(this);
    connect(socket, &QLocalSocket::readyRead, this, &ControlConnection::next);
    connect(socket, &QLocalSocket::disconnected, this, &QObject::deleteLater);
    next();
}

void ControlConnection::next()
{
    if (m_busy)
        return;
    if (!m_socket->canReadLine()) {
        if (m_socket->bytesAvailable() > LongestLine)
            m_socket->abort();
        return;
    }
    m_busy = true;
    const QJsonDocument command = QJsonDocument::fromJson(m_socket->readLine());
    const QPointer<ControlConnection> self(this);
    const auto answer = [self](const QJsonObject &object) {
        if (self)
            self->reply(object);
    };
    if (command.isObject())
        m_handler(command.object(), answer);
    else
        answer({{QStringLiteral("ok"), false},
                {QStringLiteral("error"), QStringLiteral("not a JSON object")}});
}

void ControlConnection::reply(const QJsonObject &answer)
{
    m_socket->write(QJsonDocument(answer).toJson(QJsonDocument::Compact) + '\n');
    m_socket->flush();
    m_busy = false;
    QMetaObject::invokeMethod(this, &ControlConnection::next, Qt::QueuedConnection);
}

} // namespace SimRuntime
