#pragma once

#include <QString>

class SessionBus;

/// The home screen's launcher model on the user's session bus, which shows which apps are being
/// updated. Nothing waits for it: without a home screen nothing happens.
namespace HomeScreen {

/// Tells that the app of a desktop entry is being updated, or is not any more.
void updatingStarted(SessionBus &bus, const QString &desktopFile);
void updatingFinished(SessionBus &bus, const QString &desktopFile);

} // namespace HomeScreen
