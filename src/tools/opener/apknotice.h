#pragma once

#include "tools/common/exitstatus.h"

#include <QString>

#include <optional>

/// What the user is shown about an APK file that is being opened, in the user's language.
struct ApkNotice
{
    QString summary; ///< names the file; unlike bodies, summaries have no markup
    QString body;
};

bool operator==(const ApkNotice &left, const ApkNotice &right);

/// The file is on its way to the daemon.
ApkNotice installingNotice(const QString &fileName);

/// What is shown instead once it is known what has become of that, if anything: not when the daemon
/// has taken the file, because a notice of its own follows, nor when it takes its time with it, as
/// it may install the file yet. The technical reason is for standard error: who opens files on a
/// desktop is told what can be done about it there.
std::optional<ApkNotice> failureNotice(const QString &fileName, ExitStatus status);
