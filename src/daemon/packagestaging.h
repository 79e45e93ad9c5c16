#pragma once

#include "daemon/userrights.h"

#include <QString>

#include <optional>

/// The directory through which APK files reach the runtime's package manager: the runtime sees
/// it, and only root may write there. The runtime's root may write there too, and so everything is
/// done by DirectoryWalk: what is planted there leads nowhere else.
class PackageStaging
{
public:
    /// `directory` begins with `root`, the data root, and ends in "/".
    PackageStaging(const QString &root, const QString &directory);

    /// Creates the directory if need be and makes it root's, mode 0755. Each failure is a
    /// warning; it does not keep anyone from trying to go on.
    void prepare() const;

    /// Deletes the files that an earlier run has left there.
    void removeLeftovers() const;

    /// Puts a copy of a file there under the same file name, root's and readable by all, in place
    /// of one that is there already. The file is read with the rights that are given, else with the
    /// daemon's own. Returns the copy's path; null, after one critical line, on failure.
    QString stage(const QString &source, const std::optional<UserRights> &rights) const;

private:
    QString m_root;
    QString m_directory;
};
