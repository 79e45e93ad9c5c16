#include "daemon/spelledout.h"

#include "binder/clipdata.h"

#include <QMetaType>

namespace {

QString quoted(const QString &text)
{
    return text.isNull() ? QStringLiteral("null") : QStringLiteral("'%1'").arg(text);
}

QString joined(const QStringList &parts)
{
    return parts.join(QStringLiteral(", "));
}

QString listOf(const QStringList &texts)
{
    QStringList parts;
    for (const QString &text : texts)
        parts.append(quoted(text));
    return QStringLiteral("strings[%1]").arg(joined(parts));
}

QString listOf(const QVariantList &values)
{
    QStringList parts;
    for (const QVariant &value : values)
        parts.append(spelledOut(value));
    return QStringLiteral("[%1]").arg(joined(parts));
}

QString mapOf(const QVariantMap &values)
{
    QStringList parts;
    for (auto entry = values.begin(); entry != values.end(); ++entry)
        parts.append(quoted(entry.key()) + QStringLiteral(": ") + spelledOut(entry.value()));
    return QStringLiteral("{%1}").arg(joined(parts));
}

QString urlText(const QUrl &url)
{
    return QStringLiteral("<%1>").arg(url.toString());
}

/// The lines of an intent.
class Lines
{
public:
    void add(const char *name, const QString &value)
    {
        lines.append(QLatin1String(name) + QLatin1Char(' ') + value);
    }
    void addText(const char *name, const QString &text)
    {
        if (!text.isNull())
            add(name, quoted(text));
    }
    void addIf(bool set, const char *name, const QString &value)
    {
        if (set)
            add(name, value);
    }

    QStringList lines;
};

} // namespace

QString spelledOut(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::UnknownType:
        return QStringLiteral("nothing");
    case QMetaType::QString:
        return quoted(value.toString());
    case QMetaType::QStringList:
        return listOf(value.toStringList());
    case QMetaType::QUrl:
        return urlText(value.toUrl());
    case QMetaType::QVariantList:
        return listOf(value.toList());
    case QMetaType::QVariantMap:
        return mapOf(value.toMap());
    default:
        return QStringLiteral("%1(%2)").arg(QLatin1String(value.typeName()), value.toString());
    }
}

QStringList spelledOut(const Intent &intent)
{
    Lines of;
    of.addText("action", intent.action);
    of.addIf(intent.data != QUrl(), "data", urlText(intent.data));
    of.addText("type", intent.type);
    of.addText("identifier", intent.identifier);
    of.addIf(intent.flags != 0, "flags", QStringLiteral("0x%1").arg(intent.flags, 8, 16));
    of.addText("package", intent.package);
    of.addText("componentPackage", intent.componentPackage);
    of.addText("componentClass", intent.componentClass);
    of.addIf(intent.sourceBounds.isValid(), "sourceBounds", QString());
    of.addIf(!intent.categories.isEmpty(), "categories", listOf(intent.categories));
    of.addIf(bool(intent.selector), "selector", QString());
    of.addIf(bool(intent.clipData), "clipData", QString());
    of.addIf(!intent.extras.isEmpty(), "extras", mapOf(intent.extras));
    of.addIf(intent.contentUserHint != Intent::CurrentUser, "contentUserHint",
             QString::number(intent.contentUserHint));
    return of.lines;
}
