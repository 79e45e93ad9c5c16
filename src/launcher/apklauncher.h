#pragma once

#include <QByteArray>
#include <QMetaType>
#include <QString>
#include <QStringList>

/// One activity that the runtime announced: a launcher, or a handler of MIME types, URLs or
/// shared content. Everything in it comes from the runtime and is unchecked.
struct ApkLauncher
{
    ApkLauncher() = default;

    /// The first six arguments are taken as they are. The four lists have ";" between their items:
    /// an empty list has none, and empty items count in `mimeTypes` only. URL schemes and hosts
    /// become the pseudo MIME types "x-scheme-handler/..." and "x-url-handler/...".
    ApkLauncher(const QString &label, const QString &caption, const QByteArray &icon,
                const QString &packageName, const QString &className, const QString &packageVersion,
                const QString &mimeTypes, const QString &urlSchemes, const QString &urlHandlers,
                const QString &shareMimeTypes, bool extraFlag, bool multi);

    QString label;              ///< name shown to the user
    QString caption;            ///< caption of the share target; empty for plain launchers
    QByteArray icon;            ///< encoded image (PNG)
    QString packageName;        ///< Android package; the key of all that the host keeps per app
    QString className;          ///< activity to start
    QString packageVersion;     ///< version of the package
    QStringList mimeTypes;      ///< MIME and pseudo MIME types that the activity opens
    QStringList shareMimeTypes; ///< MIME types that the activity takes as a share target
    bool multi = false;         ///< the share target takes several items at once
    bool extraFlag = false;     ///< second flag of handlers; carried only

    /// Whether the activity opens or takes content. A plain launcher does neither.
    bool isHandler() const { return !mimeTypes.isEmpty() || !shareMimeTypes.isEmpty(); }
};

bool operator==(const ApkLauncher &left, const ApkLauncher &right);

Q_DECLARE_METATYPE(ApkLauncher)
