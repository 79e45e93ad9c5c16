#pragma once

#include <QString>

namespace Confirmation {

/// Asks on standard error and reads a line from standard input; true for "y" or "yes". The end of
/// input is no.
bool ask(const QString &question);

} // namespace Confirmation
