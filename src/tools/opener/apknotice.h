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

/// There is no such file to install, none that the user can read, or it is no app or not on this
/// phone.
ApkNotice unusableFileNotice(const QString &fileName);

/// What is shown in the place of installingNotice() once it is known what has become of it, if
/// anything: not when the daemon has taken the file, because a notice of its own follows, nor when
/// it takes its time with it, as it may install the file yet. When the device's policy forbids it,
/// the daemon shows a warning that says so, but neither that it was this file nor that the first
/// notice is no longer true: both are shown. The technical reason is for standard error: who opens
/// files on a desktop is told what can be done about it there.
std::optional<ApkNotice> failureNotice(const QString &fileName, ExitStatus status,
                                       bool isRuntimeInstalled);
