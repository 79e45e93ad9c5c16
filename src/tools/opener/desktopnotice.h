#pragma once

#include "tools/opener/apknotice.h"

#include <QDBusConnection>
#include <QDBusPendingReply>

/// One notice on the user's desktop (https://specifications.freedesktop.org/notification-spec/),
/// whose text can change while it is shown. Without a notification service it is lost.
class DesktopNotice
{
public:
    /// How long to wait for the service, in milliseconds.
    static constexpr int AnswerTimeoutMs = 5000;

    explicit DesktopNotice(const QDBusConnection &bus);
    /// Waits until the service has taken the last text.
    ~DesktopNotice();
    DesktopNotice(const DesktopNotice &) = delete;
    DesktopNotice &operator=(const DesktopNotice &) = delete;

    /// Shows this in the place of what it showed before.
    void show(const ApkNotice &notice);

private:
    /// What the service calls the notice; 0: it has none yet.
    quint32 id();

    QDBusConnection m_bus;
    QDBusPendingReply<quint32> m_reply;
};
