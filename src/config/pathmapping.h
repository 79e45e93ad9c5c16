#pragma once

#include <QString>
#include <QUrl>

/// How the runtime sees the host's files. It mounts the user's home directory and the user's
/// memory cards as storage volumes, and shows the directory "android_storage" in the home
/// directory as its own internal shared storage.
namespace PathMapping {

/// The path under which the runtime sees the host file that `hostPath` names. `hostPath` is an
/// absolute path or a URL that begins with "file:/". Paths the runtime has no volume for come
/// back unchanged.
QString toAndroidPath(const QString &hostPath);

/// toAndroidPath() as a URL: a file URL when the mapped path is absolute, else the mapped text
/// read as a URL in tolerant mode.
QUrl toAndroidUrl(const QString &hostPath);

} // namespace PathMapping
