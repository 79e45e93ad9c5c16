#pragma once

#include <QStringList>

class Context;

namespace BugReport {

/// Versions, states, findings, apps, and the newest lines of the journal.
QStringList write(Context &context);

} // namespace BugReport
