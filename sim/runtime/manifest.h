#pragma once

#include "runtime/apkinfo.h"
#include "runtime/resourcetable.h"
#include "runtime/xmltree.h"

#include <functional>

namespace SimRuntime {

/// Gives the picture of an "icon" attribute as PNG; the label is for a picture that has to be
/// made up.
using IconSource = std::function<QByteArray(const XmlValue &icon, const QString &label)>;

/// Reads an app's manifest as the package manager does: references resolved, class names
/// completed, disabled and unexported activities left out. Activities that no implicit intent can
/// reach (no category DEFAULT) are not handlers.
ApkInfo readManifest(const XmlElement &manifest, const ResourceTable &resources,
                     const IconSource &icons);

/// Whether Android takes this for a package name: two or more parts of letters, digits and
/// underscores, each beginning with a letter, joined by dots.
bool isValidPackageName(const QString &name);

} // namespace SimRuntime
