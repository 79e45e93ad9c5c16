#pragma once

#include <QString>

/// The apps that are shown in the partner space only: each has an empty marker file, named as the
/// APK file it was installed from.
class PartnerSpace
{
public:
    /// `directory` ends in "/".
    explicit PartnerSpace(
        const QString &directory = QStringLiteral("/usr/share/bramd/partnerspace/"));

    /// Marks an app; a warning is logged when that fails.
    void mark(const QString &apkName) const;

    /// Takes the mark away, if there is one, from the app that `apkName` was installed from.
    void unmark(const QString &apkName) const;

    /// The name of the marker that unmark() removes: the APK's file name without the "-" and
    /// number that may stand before ".apk". mark() leaves them in; that the two differ is known
    /// and kept.
    static QString markerToRemove(const QString &apkName);

private:
    QString m_directory;
};
