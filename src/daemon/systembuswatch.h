#pragma once

#include <QObject>

/// Ends the event loop, with status 1, when the system bus goes away.
///
/// Without it the daemon hears nobody, and no connection comes back by itself: names, signals and
/// the state of the runtime's unit would all have to be asked for anew. Its unit starts it again
/// until there is a bus, and the runtime then announces its apps anew. Requests that still wait
/// are lost, as everybody may expect who was on that bus.
class SystemBusWatch : public QObject
{
    Q_OBJECT

public:
    SystemBusWatch();

private Q_SLOTS:
    void onDisconnected();
};
