#pragma once

#include "fuzz/input.h"

#include <QString>

/// What every fuzz target has: fuzztarget.cpp calls these two, and the target defines them.
namespace FuzzTarget {

/// Once, before all runs.
void prepare();

/// One run. Ends with every effect undone that the next one could notice.
void run(Input input);

} // namespace FuzzTarget

/// Ends the process with this text unless `holds`: a finding.
void expect(bool holds, const char *what, const QString &detail = QString());
