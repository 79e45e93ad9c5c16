#pragma once

#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

namespace SimRuntime {

/// The apps that have been started and not been closed.
class RunningApps : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    void start(const QString &package);
    void close(const QString &package);
    bool isRunning(const QString &package) const { return m_running.contains(package); }
    QStringList all() const;

Q_SIGNALS:
    void closed(const QString &package);

private:
    QSet<QString> m_running;
};

} // namespace SimRuntime
