#pragma once

#include <QByteArray>
#include <QString>

namespace SimRuntime {

/// A PNG icon for an app that has no picture of its own: a coloured square with the label's first
/// letter or digit (a ring for other scripts). The colour depends on the label alone.
QByteArray letterIcon(const QString &label);

} // namespace SimRuntime
