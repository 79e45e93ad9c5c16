#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QThread>
#include <QVariantMap>
#include <QVector>

/// systemd's manager with the one unit "umbravm.service", under its real name on a bus of the
/// test's own. It answers from a thread of its own, so that the test may call it and block.
///
/// It does nothing by itself: a StartUnit is kept and answered, and the state changes when the
/// test says so.
class FakeSystemd
{
public:
    struct Unit
    {
        bool loadable = true; ///< else LoadUnit is answered with the error "Unit is masked."
        bool readable = true; ///< else GetAll is answered with an error
        QVariantMap properties;
        /// What GetAll answers next, one after the other, when it has told `properties` once; the
        /// last one stays.
        QVector<QVariantMap> next;
        QString fileState; ///< what GetUnitFileState is answered with, unless it is empty
    };

    static QVariantMap properties(const QString &activeState, const QString &subState,
                                  const QString &unitFileState);
    static QString unitPath();

    FakeSystemd(const QString &busAddress, const Unit &unit);
    ~FakeSystemd();
    FakeSystemd(const FakeSystemd &) = delete;
    FakeSystemd &operator=(const FakeSystemd &) = delete;

    /// Whether the name on the bus is ours.
    bool isUp() const { return m_up; }

    /// The calls so far, oldest first, each as "PATH INTERFACE.MEMBER SIGNATURE (ARGUMENTS)".
    QStringList calls() const;
    void clearCalls();

    /// Sends the unit's PropertiesChanged.
    void
    changeProperties(const QVariantMap &changed,
                     const QString &interface = QStringLiteral("org.freedesktop.systemd1.Unit"));

private:
    class Object : public QDBusVirtualObject
    {
    public:
        explicit Object(const Unit &unit);

        QString introspect(const QString &path) const override;
        bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

        mutable QMutex mutex;
        QStringList calls;

    private:
        QDBusMessage answer(const QDBusMessage &message);

        Unit m_unit; ///< used by the thread that answers only
    };

    QThread m_thread;
    Object m_object;
    QDBusConnection m_connection;
    bool m_up = false;
};
