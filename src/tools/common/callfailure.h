#pragma once

#include "tools/common/outcome.h"

#include <QDBusError>

/// What a caller of the daemon makes of a D-Bus error.
///
/// The bus says NoReply both for an answer that is late and for a daemon that has gone; whether
/// somebody still owns the daemon's name, `daemonRuns`, tells the two apart.
Outcome callFailure(const QDBusError &error, bool daemonRuns, int timeoutMs);

/// The same for an error that says that there is no bus.
Outcome busFailure(const QDBusError &error);

/// What an error says, as one line that fits into a sentence; its name, if it says nothing.
QString oneLine(const QDBusError &error);
