#include "runtime/manifest.h"

#include <QRegularExpression>

#include <algorithm>

namespace SimRuntime {

namespace {

constexpr char ActionMain[] = "android.intent.action.MAIN";
constexpr char ActionView[] = "android.intent.action.VIEW";
constexpr char ActionSend[] = "android.intent.action.SEND";
constexpr char ActionSendMultiple[] = "android.intent.action.SEND_MULTIPLE";
constexpr char CategoryLauncher[] = "android.intent.category.LAUNCHER";
constexpr char CategoryDefault[] = "android.intent.category.DEFAULT";

class Reader
{
public:
    Reader(const XmlElement &manifest, const ResourceTable &resources, const IconSource &icons)
        : m_manifest(manifest)
        , m_application(manifest.childrenNamed(QStringLiteral("application")).value(0))
        , m_resources(resources)
        , m_icons(icons)
    {
    }

    ApkInfo read();

private:
    QString text(const XmlElement &element, const QString &attribute) const;
    bool flag(const XmlElement &element, const QString &attribute, bool otherwise) const;
    QString className(const XmlElement &activity) const;
    QByteArray icon(const XmlElement &activity, const QString &label) const;
    void readActivity(const XmlElement &activity);
    void readHandler(const XmlElement &activity, const QVector<XmlElement> &filters);
    void readData(const XmlElement &filter, HandlerActivity *handler) const;

    const XmlElement &m_manifest;
    const XmlElement m_application;
    const ResourceTable &m_resources;
    const IconSource &m_icons;
    ApkInfo m_info;
};

bool names(const XmlElement &filter, const char *kind, const char *name)
{
    const auto children = filter.childrenNamed(QLatin1String(kind));
    return std::any_of(children.cbegin(), children.cend(), [name](const XmlElement &child) {
        return child.text(QStringLiteral("name")) == QLatin1String(name);
    });
}

void addOnce(QStringList *list, const QString &item)
{
    if (!item.isEmpty() && !list->contains(item))
        list->append(item);
}

QString Reader::text(const XmlElement &element, const QString &attribute) const
{
    const XmlValue value = element.attribute(attribute);
    if (value.kind == XmlValue::Kind::Reference)
        return m_resources.text(value.number);
    return value.kind == XmlValue::Kind::Number ? QString::number(value.number) : value.text;
}

bool Reader::flag(const XmlElement &element, const QString &attribute, bool otherwise) const
{
    const XmlValue value = element.attribute(attribute);
    if (value.kind == XmlValue::Kind::Reference)
        return m_resources.boolean(value.number).value_or(otherwise);
    return value.kind == XmlValue::Kind::Number ? value.number != 0 : otherwise;
}

QString Reader::className(const XmlElement &activity) const
{
    const QString name = activity.text(QStringLiteral("name"));
    if (name.startsWith(QLatin1Char('.')))
        return m_info.package + name;
    return name.contains(QLatin1Char('.')) ? name : m_info.package + QLatin1Char('.') + name;
}

QByteArray Reader::icon(const XmlElement &activity, const QString &label) const
{
    const XmlValue own = activity.attribute(QStringLiteral("icon"));
    return m_icons(
        own.kind == XmlValue::Kind::None ? m_application.attribute(QStringLiteral("icon")) : own,
        label);
}

ApkInfo Reader::read()
{
    m_info.package = m_manifest.text(QStringLiteral("package"));
    const auto major = m_manifest.attribute(QStringLiteral("versionCodeMajor")).number;
    const auto minor = m_manifest.attribute(QStringLiteral("versionCode")).number;
    m_info.versionCode = qint64(quint64(major) << 32 | minor);
    m_info.versionName = text(m_manifest, QStringLiteral("versionName"));
    m_info.label = text(m_application, QStringLiteral("label"));
    if (m_info.label.isEmpty())
        m_info.label = m_info.package;
    const auto uses = m_manifest.childrenNamed(QStringLiteral("uses-sdk"));
    if (!uses.isEmpty())
        m_info.minimumSdk =
            int(std::max(1U, uses.constFirst().attribute(QStringLiteral("minSdkVersion")).number));
    for (const XmlElement &provider : m_application.childrenNamed(QStringLiteral("provider")))
        m_info.authorities += text(provider, QStringLiteral("authorities"))
                                  .split(QLatin1Char(';'), Qt::SkipEmptyParts);
    if (!flag(m_application, QStringLiteral("enabled"), true))
        return m_info;
    for (const XmlElement &component : qAsConst(m_application.children)) {
        if (component.name == QLatin1String("activity") ||
            component.name == QLatin1String("activity-alias"))
            readActivity(component);
    }
    return m_info;
}

void Reader::readActivity(const XmlElement &activity)
{
    if (!flag(activity, QStringLiteral("enabled"), true) ||
        !flag(activity, QStringLiteral("exported"), true))
        return;
    const auto filters = activity.childrenNamed(QStringLiteral("intent-filter"));
    const bool launchable =
        std::any_of(filters.cbegin(), filters.cend(), [](const XmlElement &filter) {
            return names(filter, "action", ActionMain) &&
                   names(filter, "category", CategoryLauncher);
        });
    if (launchable) {
        LauncherActivity launcher;
        launcher.className = className(activity);
        const QString own = text(activity, QStringLiteral("label"));
        launcher.label = own.isEmpty() ? m_info.label : own;
        launcher.icon = icon(activity, launcher.label);
        m_info.launchers.append(launcher);
    }
    readHandler(activity, filters);
}

void Reader::readHandler(const XmlElement &activity, const QVector<XmlElement> &filters)
{
    HandlerActivity handler;
    for (const XmlElement &filter : filters) {
        if (!names(filter, "category", CategoryDefault))
            continue;
        if (names(filter, "action", ActionView))
            readData(filter, &handler);
        const bool several = names(filter, "action", ActionSendMultiple);
        if (!several && !names(filter, "action", ActionSend))
            continue;
        handler.multi = handler.multi || several;
        for (const XmlElement &data : filter.childrenNamed(QStringLiteral("data")))
            addOnce(&handler.shareMimeTypes, text(data, QStringLiteral("mimeType")));
    }
    if (handler.mimeTypes.isEmpty() && handler.schemes.isEmpty() && handler.hosts.isEmpty() &&
        handler.shareMimeTypes.isEmpty())
        return;
    handler.className = className(activity);
    handler.label = m_info.label;
    const QString own = text(activity, QStringLiteral("label"));
    handler.caption = own.isEmpty() ? m_info.label : own;
    handler.icon = icon(activity, m_info.label);
    m_info.handlers.append(handler);
}

// The data elements of one filter count together, in any combination. A filter for MIME types says
// with its schemes only how the document reaches the app, not which links it opens.
void Reader::readData(const XmlElement &filter, HandlerActivity *handler) const
{
    QStringList schemes;
    bool hasMimeTypes = false;
    for (const XmlElement &data : filter.childrenNamed(QStringLiteral("data"))) {
        const QString mimeType = text(data, QStringLiteral("mimeType"));
        hasMimeTypes = hasMimeTypes || !mimeType.isEmpty();
        addOnce(&handler->mimeTypes, mimeType);
        addOnce(&schemes, text(data, QStringLiteral("scheme")));
        addOnce(&handler->hosts, text(data, QStringLiteral("host")));
    }
    if (hasMimeTypes)
        return;
    for (const QString &scheme : qAsConst(schemes))
        addOnce(&handler->schemes, scheme);
}

} // namespace

ApkInfo readManifest(const XmlElement &manifest, const ResourceTable &resources,
                     const IconSource &icons)
{
    return Reader(manifest, resources, icons).read();
}

bool isValidPackageName(const QString &name)
{
    static const QRegularExpression valid(
        QStringLiteral("\\A[A-Za-z][A-Za-z0-9_]*(\\.[A-Za-z][A-Za-z0-9_]*)+\\z"));
    return name.size() <= 255 && valid.match(name).hasMatch();
}

} // namespace SimRuntime
