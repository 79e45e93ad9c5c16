#include "daemon/notices.h"

#include <QtGlobal>

namespace {

QString androidIcon()
{
    return QStringLiteral("icon-s-android");
}

} // namespace

Notification Notices::text(const QString &text, bool isWarning)
{
    Notification notice;
    notice.setTransient(true);
    if (isWarning) {
        notice.setUrgency(Notification::Urgency::Critical);
        notice.setIcon(QStringLiteral("icon-lock-warning"));
    } else {
        notice.setIcon(androidIcon());
    }
    notice.setPreviewBody(text);
    return notice;
}

Notification Notices::result(const QString &summary, const QString &body)
{
    Notification notice;
    notice.setAppName(qtTrId("bramd-ap-name"));
    notice.setIcon(androidIcon());
    notice.setAppIcon(androidIcon());
    notice.setTransient(true);
    notice.setPreviewSummary(summary);
    notice.setPreviewBody(body);
    return notice;
}
