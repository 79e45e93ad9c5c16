#include "tools/ctl/shareplan.h"

#include "config/runtimetext.h"

#include <QVariantList>

namespace SharePlan {

namespace {

const QString AnyType = QStringLiteral("*/*");
const QString PlainText = QStringLiteral("text/plain");

/// The daemon takes every type that begins with "text/" for a text to be pasted, so a text file
/// goes as a file of any type; the app sees by its name what it is.
QString typeOfFiles(const QString &mimeType)
{
    return mimeType.startsWith(QLatin1String("text/")) ? AnyType : mimeType;
}

} // namespace

QString commonType(const QStringList &mimeTypes)
{
    QString common = mimeTypes.value(0);
    for (const QString &type : mimeTypes) {
        if (type == common)
            continue;
        const QString family = type.left(type.indexOf(QLatin1Char('/')) + 1);
        common = common.startsWith(family) ? family + QLatin1Char('*') : AnyType;
    }
    return common.isEmpty() ? AnyType : common;
}

QString titleOf(const QString &text)
{
    constexpr int MaxTitle = 60;

    const QString trimmed = text.trimmed();
    const QString line =
        RuntimeText::singleLine(trimmed.left(trimmed.indexOf(QLatin1Char('\n')))).trimmed();
    if (line.isEmpty())
        return QStringLiteral("Text");
    return line.size() <= MaxTitle ? line : line.left(MaxTitle - 1).trimmed() + QChar(0x2026);
}

QString complaint(const ShareTarget &target, const ShareItems &items)
{
    const QString type = items.isText() ? PlainText : items.mimeType;
    if (!target.takes(type)) {
        return QStringLiteral(
                   "%1 does not take %2 but: %3. “bramctl targets” shows who takes what.")
            .arg(target.component(), type, target.mimeTypes.join(QLatin1String(", ")));
    }
    if (items.files.size() > 1 && !target.takesSeveral) {
        return QStringLiteral("%1 takes one file at a time: share them one by one.")
            .arg(target.component());
    }
    return QString();
}

QVariantMap configuration(const ShareTarget &target, const ShareItems &items)
{
    QVariantList resources;
    for (const QString &file : items.files)
        resources.append(file);
    // Without a name, the daemon would leave the text out.
    if (items.isText()) {
        resources.append(QVariantMap{{QStringLiteral("name"), items.title},
                                     {QStringLiteral("data"), items.text}});
    }
    return {
        {QStringLiteral("resources"), resources},
        {QStringLiteral("mimeType"), items.isText() ? PlainText : typeOfFiles(items.mimeType)},
        {QStringLiteral("selectedTransferMethodInfo"),
         QVariantMap{{QStringLiteral("methodId"), target.component()}}},
    };
}

} // namespace SharePlan
