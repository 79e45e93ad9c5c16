#pragma once

#include "binder/intent.h"

/// The intents behind the daemon's launching operations.
namespace Intents {

/// The URL under which the runtime sees what `location`, a host path or a URL, names. Empty, with a
/// warning, when it is neither.
QUrl runtimeUrl(const QString &location);

/// An activity by intent. Empty arguments stay unset, but for an empty action, which means MAIN.
/// `data` is what runtimeUrl() takes. A class name counts only together with a package name.
Intent launch(const QString &action, const QString &data, const QString &type,
              const QString &packageName, const QString &className, const QString &category,
              const QVariantMap &extras);

/// The runtime's settings page for an app; of no app in particular, with a warning, when the name
/// cannot stand in a URL.
Intent appSettings(const QString &packageName);

/// The runtime's page of legal information.
Intent licenses();

} // namespace Intents
