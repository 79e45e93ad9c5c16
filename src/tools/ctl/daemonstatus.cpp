#include "tools/ctl/daemonstatus.h"

#include "tools/common/daemonclient.h"

namespace DaemonStatus {

Answer ask(Context::DaemonState state)
{
    constexpr int AnswerTimeoutMs = 5000;

    Answer answer;
    if (state != Context::DaemonState::Running)
        return answer;
    DaemonClient daemon(QDBusConnection::systemBus(), AnswerTimeoutMs);
    QDBusPendingReply<AndroidVersionData> reply = daemon.proxy().getAndroidVersionData();
    answer.outcome = daemon.finish(reply);
    if (answer.outcome.isDone())
        answer.android = reply.value();
    if (answer.isMissing())
        answer.outcome.sentence = silence() + QLatin1Char(' ') + adviceOnSilence();
    return answer;
}

QString silence()
{
    return QStringLiteral("bramd runs, but does not answer.");
}

QString adviceOnSilence()
{
    return QStringLiteral("It may be busy for half a minute. If it stays so, restart it with "
                          "“systemctl restart bramd”.");
}

QString text(Context::DaemonState state, const Answer &answer)
{
    switch (state) {
    case Context::DaemonState::Running:
        return answer.isMissing() ? QStringLiteral("running, but does not answer")
                                  : QStringLiteral("running");
    case Context::DaemonState::Startable:
        return QStringLiteral("not running; starts with the next request");
    case Context::DaemonState::Missing:
        return QStringLiteral("not installed, or not known to the bus");
    case Context::DaemonState::NoBus:
        break;
    }
    return QStringLiteral("not known, because the system bus cannot be reached");
}

QString word(Context::DaemonState state, const Answer &answer)
{
    switch (state) {
    case Context::DaemonState::Running:
        return answer.isMissing() ? QStringLiteral("unresponsive") : QStringLiteral("running");
    case Context::DaemonState::Startable:
        return QStringLiteral("startable");
    case Context::DaemonState::Missing:
        return QStringLiteral("missing");
    case Context::DaemonState::NoBus:
        break;
    }
    return QStringLiteral("unknown");
}

} // namespace DaemonStatus
