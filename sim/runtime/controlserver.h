#pragma once

#include <QJsonObject>
#include <QLocalServer>
#include <QObject>
#include <QString>

#include <functional>

namespace SimRuntime {

/// A Unix stream socket that takes one JSON object per line and answers each with one, in order.
class ControlServer : public QObject
{
    Q_OBJECT

public:
    using Reply = std::function<void(const QJsonObject &answer)>;

    /// Carries out a command; the reply is to be given once, now or later.
    using Handler = std::function<void(const QJsonObject &command, Reply reply)>;

    explicit ControlServer(Handler handler, QObject *parent = nullptr);

    /// Replaces a socket left by an earlier run. False, with one line, on failure.
    bool listen(const QString &path);

private:
    void onConnection();

    Handler m_handler;
    QLocalServer m_server;
};

} // namespace SimRuntime
