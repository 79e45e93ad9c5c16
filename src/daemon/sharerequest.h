#pragma once

#include "binder/intent.h"

#include <QString>
#include <QVariantList>
#include <QVariantMap>

#include <optional>

/// What the user wants to share, and with which Android app, as the host's sharing framework says
/// it.
struct ShareRequest
{
    /// Reads a share configuration. Values may be wrapped as they come over D-Bus. An unknown key
    /// gets a warning and is left out.
    static ShareRequest fromConfiguration(const QVariantMap &configuration);

    /// The intent that shares it; none when there is nothing to share, or, with a warning, more
    /// files than a request to the runtime has room for. A resource that names no file is left
    /// out, with a warning, and so is a target that names no app.
    std::optional<Intent> toIntent() const;

    QVariantList resources;     ///< file paths or URLs; for text, maps
    QString mimeType;           ///< of the resources
    QVariantMap transferMethod; ///< the target; its "methodId" is PACKAGE/CLASS
};
