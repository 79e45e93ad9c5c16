#pragma once

#include "tools/common/location.h"
#include "tools/common/outcome.h"

#include <QString>

/// What is wrong with a file that somebody has named, before anybody is asked for anything. The
/// daemon would pass on any path, and an app would show its user a puzzle.
namespace HostFile {

/// The home directory of the user who runs this; empty for root, who acts for the phone's user.
QString homeOfUser();

/// Whether the runtime has a volume on which it sees this file: it mounts the user's home directory
/// and memory cards. Without a home below "/home" it is not known whose that is, and any will do.
bool isSeenByRuntime(const QString &path, const QString &home = homeOfUser());

Outcome missing(const QString &path);
Outcome notSeenByRuntime(const QString &path);

/// Done when this can be handed to an app: a URL, or a file that is there, wherever on the host.
/// Some devices let their runtime see more than others do, and the app says what it cannot open.
Outcome checkForApps(const Location &location);

/// Done when this is a regular file that can be read, wherever on the host.
Outcome checkForReading(const Location &location);

} // namespace HostFile
