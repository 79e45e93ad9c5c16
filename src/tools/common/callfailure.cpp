#include "tools/common/callfailure.h"

namespace {

/// An error's name, or, with a final dot, all names that begin so.
struct Failure
{
    const char *name;
    ExitStatus status;
    const char *sentence; ///< %1: what the bus or the daemon said about it
};

constexpr char NoBus[] = "The system bus cannot be reached (%1). Look at “systemctl status dbus”.";
constexpr char NotStarted[] =
    "bramd does not run and cannot be started (%1). Look at “systemctl status bramd”.";
constexpr char NotReady[] =
    "bramd is not ready yet, as before a user has logged in (%1). Try again after the login, or "
    "look at “systemctl status bramd”.";
constexpr char NotAllowed[] = "You may not call bramd (%1). Ask the administrator for one of the "
                              "groups that bramd(8) names, and log in anew.";
constexpr char NotUnderstood[] =
    "The bramd that runs does not understand this request (%1). Restart it with “systemctl "
    "restart bramd” if it was upgraded since it started.";
constexpr char Other[] = "bramd has not taken the request (%1). Look at “journalctl -u bramd”.";

constexpr Failure Failures[] = {
    {"org.freedesktop.DBus.Error.Disconnected", ExitStatus::DaemonUnreachable, NoBus},
    {"org.freedesktop.DBus.Error.FileNotFound", ExitStatus::DaemonUnreachable, NoBus},
    {"org.freedesktop.DBus.Error.NoServer", ExitStatus::DaemonUnreachable, NoBus},
    {"org.freedesktop.DBus.Error.NoNetwork", ExitStatus::DaemonUnreachable, NoBus},
    {"org.freedesktop.DBus.Error.BadAddress", ExitStatus::DaemonUnreachable, NoBus},
    {"org.freedesktop.DBus.Error.ServiceUnknown", ExitStatus::DaemonUnreachable, NotStarted},
    {"org.freedesktop.DBus.Error.NameHasNoOwner", ExitStatus::DaemonUnreachable, NotStarted},
    {"org.freedesktop.DBus.Error.Spawn.", ExitStatus::DaemonUnreachable, NotStarted},
    {"org.freedesktop.systemd1.", ExitStatus::DaemonUnreachable, NotStarted},
    // The bus gives up on starting a service before we give up on the answer.
    {"org.freedesktop.DBus.Error.TimedOut", ExitStatus::DaemonUnreachable, NotReady},
    {"org.freedesktop.DBus.Error.AccessDenied", ExitStatus::Refused, NotAllowed},
    {"org.freedesktop.DBus.Error.AuthFailed", ExitStatus::Refused, NotAllowed},
    {"org.freedesktop.DBus.Error.InvalidArgs", ExitStatus::Refused, NotUnderstood},
    {"org.freedesktop.DBus.Error.InvalidSignature", ExitStatus::Refused, NotUnderstood},
    {"org.freedesktop.DBus.Error.UnknownInterface", ExitStatus::Refused, NotUnderstood},
    {"org.freedesktop.DBus.Error.UnknownMethod", ExitStatus::Refused, NotUnderstood},
    {"org.freedesktop.DBus.Error.UnknownObject", ExitStatus::Refused, NotUnderstood},
};

bool isAbout(const Failure &failure, const QString &name)
{
    const QLatin1String ours(failure.name);
    return ours.endsWith(QLatin1Char('.')) ? name.startsWith(ours) : name == ours;
}

bool isNoReply(const QString &name)
{
    return name == QLatin1String("org.freedesktop.DBus.Error.NoReply") ||
           name == QLatin1String("org.freedesktop.DBus.Error.Timeout");
}

Outcome noReply(bool daemonRuns, int timeoutMs)
{
    if (daemonRuns) {
        return {ExitStatus::NotConfirmed,
                QStringLiteral("bramd has not answered within %1 s. It may carry the request out "
                               "yet: see whether it did before you ask again.")
                    .arg((timeoutMs + 999) / 1000)};
    }
    return {ExitStatus::DaemonUnreachable,
            QStringLiteral("bramd has ended before it answered. Look at “journalctl -u bramd”, "
                           "and see whether it carried the request out before you ask again.")};
}

} // namespace

QString oneLine(const QDBusError &error)
{
    QString text = error.message().simplified();
    while (text.endsWith(QLatin1Char('.')))
        text.chop(1);
    return text.isEmpty() ? error.name() : text;
}

Outcome busFailure(const QDBusError &error)
{
    return {ExitStatus::DaemonUnreachable, QString::fromUtf8(NoBus).arg(oneLine(error))};
}

Outcome callFailure(const QDBusError &error, bool daemonRuns, int timeoutMs)
{
    const QString name = error.name();
    if (isNoReply(name))
        return noReply(daemonRuns, timeoutMs);
    for (const Failure &failure : Failures) {
        if (isAbout(failure, name))
            return {failure.status, QString::fromUtf8(failure.sentence).arg(oneLine(error))};
    }
    return {ExitStatus::Refused, QString::fromUtf8(Other).arg(oneLine(error))};
}
