#include "platform/host/homescreen.h"

#include "platform/host/sessionbus.h"

#include <QFileInfo>

namespace HomeScreen {

namespace {

void call(SessionBus &bus, const char *method, const QString &desktopFile)
{
    const SessionBus::Message message = bus.createCall("org.orcadesk.gloss", "/LauncherModel",
                                                       "org.orcadesk.gloss.LauncherModel", method);
    const QByteArray name = QFileInfo(desktopFile).baseName().toUtf8();
    const QByteArray path = desktopFile.toUtf8();
    if (message && sd_bus_message_append(message.get(), "ssss", name.constData(), "", "",
                                         path.constData()) >= 0)
        bus.send(message);
}

} // namespace

void updatingStarted(SessionBus &bus, const QString &desktopFile)
{
    call(bus, "updatingStarted", desktopFile);
}

void updatingFinished(SessionBus &bus, const QString &desktopFile)
{
    call(bus, "updatingFinished", desktopFile);
}

} // namespace HomeScreen
