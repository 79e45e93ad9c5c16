#include "platform/host/notification.h"

#include "platform/host/sessionbus.h"

#include <QVector>

namespace {

constexpr quint32 replacesNone = 0;
constexpr int noActions = 0;
constexpr qint32 serviceDecidesTimeout = -1;

/// More than any notice shows. A runtime may send millions of letters, and notices wait in memory
/// while the bus does not take them.
constexpr int MaxCharacters = 4096;

/// A text as sd-bus takes it: it refuses the code points that Unicode keeps for internal use, and
/// a NUL would end it. Apps choose their names and messages, so any of these may come along.
QByteArray busText(const QString &text)
{
    QVector<uint> characters = text.leftRef(MaxCharacters).toUcs4();
    for (uint &character : characters) {
        if (character == 0 || QChar::isNonCharacter(character))
            character = QChar::ReplacementCharacter;
    }
    return QString::fromUcs4(characters.constData(), characters.size()).toUtf8();
}

} // namespace

void Notification::publish(SessionBus &bus) const
{
    const SessionBus::Message call =
        bus.createCall("org.freedesktop.Notifications", "/org/freedesktop/Notifications",
                       "org.freedesktop.Notifications", "Notify");
    if (call && fill(call.get()))
        bus.send(call);
}

bool Notification::fill(sd_bus_message *call) const
{
    return sd_bus_message_append(call, "susssas", busText(m_appName).constData(), replacesNone,
                                 busText(m_appIcon).constData(), busText(m_summary).constData(),
                                 busText(m_body).constData(), noActions) >= 0 &&
           fillHints(call) && sd_bus_message_append(call, "i", serviceDecidesTimeout) >= 0;
}

bool Notification::fillHints(sd_bus_message *call) const
{
    if (sd_bus_message_open_container(call, SD_BUS_TYPE_ARRAY, "{sv}") < 0)
        return false;
    if (!m_icon.isEmpty() &&
        sd_bus_message_append(call, "{sv}", "image-path", "s", busText(m_icon).constData()) < 0)
        return false;
    if (m_transient && sd_bus_message_append(call, "{sv}", "transient", "b", int{true}) < 0)
        return false;
    if (m_urgency &&
        sd_bus_message_append(call, "{sv}", "urgency", "y", static_cast<int>(*m_urgency)) < 0)
        return false;
    return sd_bus_message_close_container(call) >= 0;
}
