#pragma once

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QVector>

/// The host's notification service on a test's own bus: keeps what it is asked to show.
class FakeNotifications : public QDBusVirtualObject
{
    Q_OBJECT

public:
    explicit FakeNotifications(const QString &address);
    ~FakeNotifications() override;

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &path) const override;

    QVector<QDBusMessage> messages;
};
