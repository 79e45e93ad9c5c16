#pragma once

#include "binder/intent.h"

/// The intents behind the daemon's launching operations.
namespace Intents {

/// An activity by intent. Empty arguments stay unset, but for an empty action, which means MAIN.
/// `data` is a URL, or a host path, which becomes the URL under which the runtime sees the file. A
/// class name counts only together with a package name.
Intent launch(const QString &action, const QString &data, const QString &type,
              const QString &packageName, const QString &className, const QString &category,
              const QVariantMap &extras);

/// The runtime's settings page for an app.
Intent appSettings(const QString &packageName);

/// The runtime's page of legal information.
Intent licenses();

} // namespace Intents
