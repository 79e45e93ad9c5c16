#pragma once

#include "platform/host/notification.h"

/// The notices that the daemon shows. All of them only pop up.
namespace Notices {

/// A plain text; a warning is urgent and shown with a lock.
Notification text(const QString &text, bool isWarning);

/// What came of an installation or removal; `body` may be empty.
Notification result(const QString &summary, const QString &body = QString());

} // namespace Notices
