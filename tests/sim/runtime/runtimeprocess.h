#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QLocalSocket>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <QVector>

/// The router and the simulated runtime as processes of their own, with a data root in a temporary
/// directory and with the control socket open.
class RuntimeProcess
{
public:
    ~RuntimeProcess();

    /// Starts both and waits until the runtime has booted.
    bool start(int sdk, const QStringList &moreArguments = {});

    /// Asks the runtime to end and returns its exit status; -1 when it does not end.
    int stop();

    /// Sends a command and returns the answer; incoming calls are served meanwhile.
    QJsonObject control(const QJsonObject &command);

    QString controlPath() const { return path("control"); }
    QByteArray device() const { return path("device").toUtf8(); }
    QString dataRoot() const { return path("root"); }

    /// Puts an APK of the source tree where the runtime finds it; returns the runtime's view.
    QString stage(const char *apk) const;

    /// What the runtime has recorded, without the service manager's part.
    QVector<QJsonObject> record() const;

    /// What was not as it should be in everything that the runtime received.
    QStringList problems() const;

    /// Whether the router has seen no misuse of the driver; ends it.
    bool wasDriverUsedWell();

private:
    QString path(const char *name) const { return m_directory.filePath(QLatin1String(name)); }
    QVector<QJsonObject> wholeRecord() const;

    QTemporaryDir m_directory;
    QProcess m_router;
    QProcess m_runtime;
    QLocalSocket m_control;
};
