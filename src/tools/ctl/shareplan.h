#pragma once

#include "tools/ctl/sharetarget.h"

#include <QString>
#include <QStringList>
#include <QVariantMap>

/// What is to be shared: files, or one text.
struct ShareItems
{
    QStringList files; ///< absolute paths
    QString mimeType;  ///< that covers all files
    QString text;
    QString title; ///< of the text; never empty

    bool isText() const { return files.isEmpty(); }
};

namespace SharePlan {

/// The type that covers all of these: the common one, "image/*" or the like, or "*/*".
QString commonType(const QStringList &mimeTypes);

/// The first line of a text, cut to the length of a title.
QString titleOf(const QString &text);

/// Why the target does not take the items, as a sentence; empty when it does.
QString complaint(const ShareTarget &target, const ShareItems &items);

/// The argument of the daemon's method `share`.
QVariantMap configuration(const ShareTarget &target, const ShareItems &items);

} // namespace SharePlan
