#include "tools/opener/apknotice.h"

#include <QtGlobal>

namespace {

QString about(const QString &title, const QString &fileName)
{
    return title + QStringLiteral(": ") + fileName;
}

} // namespace

bool operator==(const ApkNotice &left, const ApkNotice &right)
{
    return left.summary == right.summary && left.body == right.body;
}

ApkNotice installingNotice(const QString &fileName)
{
    return {about(qtTrId("bramd-installing"), fileName), QString()};
}

ApkNotice unusableFileNotice(const QString &fileName)
{
    return {about(qtTrId("bramd-install-failed"), fileName), qtTrId("bramd-install-no-file")};
}

std::optional<ApkNotice> failureNotice(const QString &fileName, ExitStatus status,
                                       bool isRuntimeInstalled)
{
    const QString summary = about(qtTrId("bramd-install-failed"), fileName);
    switch (status) {
    case ExitStatus::Done:
    case ExitStatus::NotConfirmed:
        return std::nullopt;
    case ExitStatus::Refused:
        return ApkNotice{summary, qtTrId("bramd-install-refused")};
    case ExitStatus::RuntimeUnavailable:
        if (!isRuntimeInstalled)
            return ApkNotice{summary, qtTrId("bramd-install-no-runtime")};
        break;
    case ExitStatus::Usage:
    case ExitStatus::DaemonUnreachable:
        break;
    }
    return ApkNotice{summary, qtTrId("bramd-install-unavailable")};
}
