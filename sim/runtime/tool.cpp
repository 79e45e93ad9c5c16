#include "runtime/tool.h"

#include <QLoggingCategory>
#include <QProcess>

Q_LOGGING_CATEGORY(lcTool, "sim.runtime.tool")

namespace SimRuntime {

namespace {

constexpr int TimeLimitMs = 30000;

} // namespace

std::optional<QByteArray> runTool(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments, QIODevice::ReadOnly);
    if (!process.waitForFinished(TimeLimitMs) || process.exitStatus() != QProcess::NormalExit) {
        qCCritical(lcTool) << "Cannot run" << program << arguments << process.errorString();
        process.kill();
        process.waitForFinished();
        return std::nullopt;
    }
    if (process.exitCode() != 0)
        return std::nullopt;
    return process.readAllStandardOutput();
}

} // namespace SimRuntime
