#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QMutex>
#include <QStringList>
#include <QThread>
#include <QVariant>

/// Somebody who owns the daemon's name on a bus of the test's own and gives every call the same
/// answer. It serves from a thread of its own, because its callers block.
class FakeDaemon : public QDBusVirtualObject
{
    Q_OBJECT

public:
    struct Answer
    {
        QVariantList values;
        QString error; ///< the name of an error instead of values; empty: none
        bool silent = false;
    };

    explicit FakeDaemon(Answer answer);
    ~FakeDaemon() override;

    /// Takes the service's name on the bus at `address`.
    bool serve(const QString &address);

    /// Leaves the bus without another word, as a process does that ends.
    void leave();

    /// The calls so far, each "member(signature)".
    QStringList calls() const;

    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;
    QString introspect(const QString &path) const override;

private:
    const Answer m_answer;
    mutable QMutex m_mutex;
    QStringList m_calls;
    QThread m_thread;
};
