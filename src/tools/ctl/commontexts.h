#pragma once

#include "tools/common/outcome.h"
#include "tools/ctl/command.h"

/// Rows and sentences that several groups of commands share.
namespace CommonTexts {

Option jsonOption();
Option timeoutOption(int defaultSeconds);
Argument packageArgument();

Outcome badTimeout();
Outcome notInstalled(const QString &packageName);

} // namespace CommonTexts
