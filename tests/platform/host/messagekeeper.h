#pragma once

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QVector>

/// A service with one object on a test's own bus: keeps every message that it is sent, and answers
/// none.
class MessageKeeper : public QDBusVirtualObject
{
    Q_OBJECT

public:
    MessageKeeper(const QString &address, const QString &service, const QString &path);
    ~MessageKeeper() override;

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &path) const override;

    QVector<QDBusMessage> messages;

private:
    const QString m_connectionName;
};
