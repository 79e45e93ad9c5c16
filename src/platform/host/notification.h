#pragma once

#include <QString>

#include <optional>
#include <systemd/sd-bus.h>

class SessionBus;

/// One notice for the user, shown by the host's notification service on the session bus
/// (https://specifications.freedesktop.org/notification-spec/). What is not set stays empty.
class Notification
{
public:
    /// The values of the urgency hint.
    enum class Urgency : quint8 { Low = 0, Normal = 1, Critical = 2 };

    void setAppName(const QString &name) { m_appName = name; }
    /// Name of the notice's own picture.
    void setIcon(const QString &icon) { m_icon = icon; }
    /// Name of the sending application's icon.
    void setAppIcon(const QString &icon) { m_appIcon = icon; }
    /// Whether the notice only pops up and is not kept in the list of past ones.
    void setTransient(bool transient) { m_transient = transient; }
    void setUrgency(Urgency urgency) { m_urgency = urgency; }
    void setPreviewSummary(const QString &summary) { m_summary = summary; }
    /// Sent as it is, although some services read markup in bodies and apps choose the names and
    /// messages in them: escaped, an "&" would be shown as "&amp;" by all other services, and
    /// which kind is there could only be asked, for which no notice waits.
    void setPreviewBody(const QString &body) { m_body = body; }

    /// Shows the notice. Does not wait for the service; when it cannot be reached the notice is
    /// lost.
    void publish(SessionBus &bus) const;

private:
    bool fill(sd_bus_message *call) const;
    bool fillHints(sd_bus_message *call) const;

    QString m_appName;
    QString m_icon;
    QString m_appIcon;
    QString m_summary;
    QString m_body;
    bool m_transient = false;
    std::optional<Urgency> m_urgency;
};
