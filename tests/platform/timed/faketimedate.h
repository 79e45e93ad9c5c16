#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QMutex>
#include <QStringList>
#include <QThread>
#include <QVariantMap>

/// systemd's time daemon, under its real name on a bus of the test's own as long as it lives. It
/// answers from a thread of its own, so that the test may call it and block.
class FakeTimedate
{
public:
    /// `answer` is the one argument of the reply to every call, zone() of something in real life;
    /// an invalid one makes the reply an error.
    FakeTimedate(const QString &busAddress, const QVariant &answer);
    ~FakeTimedate();
    FakeTimedate(const FakeTimedate &) = delete;
    FakeTimedate &operator=(const FakeTimedate &) = delete;

    static QVariant zone(const QVariant &value);

    /// Whether the name on the bus is ours.
    bool isUp() const { return m_up; }

    /// The calls so far, each as "PATH INTERFACE.MEMBER SIGNATURE (ARGUMENTS)".
    QStringList calls() const;

    /// Announces that the property has this value now.
    void announce(const QVariant &zone);

    /// Sends any PropertiesChanged.
    void announce(const QString &interface, const QVariantMap &changed,
                  const QStringList &invalidated = {},
                  const QString &path = QStringLiteral("/org/freedesktop/timedate1"));

private:
    class Object : public QDBusVirtualObject
    {
    public:
        explicit Object(const QVariant &answer);

        QString introspect(const QString &path) const override;
        bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

        mutable QMutex mutex;
        QStringList calls;

    private:
        const QVariant m_answer;
    };

    QThread m_thread;
    Object m_object;
    QDBusConnection m_connection;
    bool m_up = false;
};
