#pragma once

#include "launcher/sharetargets.h"

#include <QByteArray>
#include <QString>

struct ApkLauncher;

/// The apps that take shared content, as the host's sharing front end reads them from
/// "/var/lib/bramd/sharing.json", which holds the JSON text of ShareTargets. When the file cannot
/// be written the change is kept and goes out with the next one, or with retry().
///
/// The text is kept in memory and written as a whole with every change, so it has a limit that
/// no honest phone comes near (300 targets take 150 kB). A target that does not fit is left out,
/// with one warning until a package goes.
class SharingRegistry
{
public:
    static constexpr int MaxBytes = 8 * 1024 * 1024;

    /// Empties the file (and makes its directory), so that no target of an earlier run survives.
    SharingRegistry();

    void add(const ApkLauncher &launcher);
    void removePackage(const QString &packageName);

    /// Writes the file if that did not succeed the last time.
    void retry();

private:
    void write();

    ShareTargets m_targets;
    QByteArray m_content; ///< what has to be in the file; empty until there was a target
    bool m_isWritten = false;
    bool m_fullTold = false; ///< that a target does not fit
};
