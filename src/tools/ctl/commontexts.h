#pragma once

#include "tools/common/outcome.h"
#include "tools/ctl/command.h"

/// Rows and sentences that several groups of commands share.
namespace CommonTexts {

Option jsonOption();
Option timeoutOption(int defaultSeconds);
Argument packageArgument();

Outcome badTimeout();

/// Done when this can be the name of a package at all.
Outcome requirePackageName(const QString &name);

/// Done when the directory of desktop entries can be read; without, no app is known.
Outcome requireEntries();

/// Of an app that is not among the entries, or why they cannot be read.
Outcome notInstalled(const QString &packageName);

} // namespace CommonTexts
