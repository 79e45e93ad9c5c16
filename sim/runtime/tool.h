#pragma once

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace SimRuntime {

/// What a program printed on its standard output. None when it could not be run, crashed, ran
/// longer than 30 s or ended with an error; only the first three are worth a log line.
std::optional<QByteArray> runTool(const QString &program, const QStringList &arguments);

} // namespace SimRuntime
