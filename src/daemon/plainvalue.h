#pragma once

#include <QVariant>

/// A value that came over D-Bus, with its nested containers unwrapped: a{sv} as QVariantMap,
/// arrays and structures as QVariantList ("as" as QStringList), variants as what they hold.
QVariant plainValue(const QVariant &value);
