#include "runtime/apkfile.h"

#include "runtime/lettericon.h"
#include "runtime/manifest.h"
#include "runtime/tool.h"

#include <QFile>

namespace SimRuntime {

namespace {

constexpr int DeepestDrawable = 4; // drawables that refer to drawables

const QByteArray PngSignature = QByteArrayLiteral("\x89PNG\r\n\x1a\n");

std::optional<QByteArray> dumpXml(const QString &apk, const QString &file)
{
    return runTool(QStringLiteral("aapt"),
                   {QStringLiteral("dump"), QStringLiteral("xmltree"), apk, file});
}

QByteArray extract(const QString &apk, const QString &file)
{
    return runTool(QStringLiteral("unzip"), {QStringLiteral("-p"), apk, file})
        .value_or(QByteArray());
}

// Whether there is a zip archive's end record, which a cut-off download lacks.
bool isZipArchive(const QString &path)
{
    constexpr qint64 LongestEnd = 22 + 0xffff; // the record and its comment
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray start = file.read(4);
    file.seek(qMax(qint64(0), file.size() - LongestEnd));
    return start == "PK\x03\x04" && file.readAll().contains("PK\x05\x06");
}

/// Finds pictures in one APK.
class Pictures
{
public:
    Pictures(const QString &apk, const ResourceTable &resources)
        : m_apk(apk)
        , m_resources(resources)
    {
    }

    QByteArray png(const XmlValue &drawable, int depth = 0) const;

private:
    QByteArray pngInside(const XmlElement &element, int depth) const;

    QString m_apk;
    const ResourceTable &m_resources;
};

// Icons may be pictures, or XML files that put pictures together. The largest PNG is what comes
// nearest to what Android shows, also where newer releases have an XML file in its place.
QByteArray Pictures::png(const XmlValue &drawable, int depth) const
{
    const QStringList files = drawable.kind == XmlValue::Kind::Reference
                                  ? m_resources.filesByDensity(drawable.number)
                                  : QStringList{drawable.text};
    for (const QString &file : files) {
        if (!file.endsWith(QLatin1String(".png")))
            continue;
        QByteArray picture = extract(m_apk, file);
        if (picture.startsWith(PngSignature))
            return picture;
    }
    for (const QString &file : files) {
        if (!file.endsWith(QLatin1String(".xml")) || depth == DeepestDrawable)
            continue;
        const auto tree = parseXmlTree(dumpXml(m_apk, file).value_or(QByteArray()));
        QByteArray picture = tree ? pngInside(*tree, depth + 1) : QByteArray();
        if (!picture.isEmpty())
            return picture;
    }
    return {};
}

// The uppermost layer that has one: the last child of a layer list, an adaptive icon's foreground.
QByteArray Pictures::pngInside(const XmlElement &element, int depth) const
{
    for (auto child = element.children.crbegin(); child != element.children.crend(); ++child) {
        QByteArray picture = pngInside(*child, depth);
        if (!picture.isEmpty())
            return picture;
    }
    for (const char *attribute : {"drawable", "src"}) {
        const XmlValue drawable = element.attribute(QLatin1String(attribute));
        QByteArray picture =
            drawable.kind == XmlValue::Kind::Reference ? png(drawable, depth) : QByteArray();
        if (!picture.isEmpty())
            return picture;
    }
    return {};
}

} // namespace

ApkReading readApk(const QString &path)
{
    if (!isZipArchive(path))
        return {InstallFailedInvalidApk, {}};
    const auto manifest = dumpXml(path, QStringLiteral("AndroidManifest.xml"));
    const auto tree = parseXmlTree(manifest.value_or(QByteArray()));
    if (!tree || tree->name != QLatin1String("manifest"))
        return {InstallParseFailedBadManifest, {}};
    if (!isValidPackageName(tree->text(QStringLiteral("package"))))
        return {InstallParseFailedBadPackageName, {}};
    const auto values =
        runTool(QStringLiteral("aapt"), {QStringLiteral("dump"), QStringLiteral("--values"),
                                         QStringLiteral("resources"), path});
    if (!values)
        return {InstallParseFailedUnexpectedException, {}};
    const ResourceTable resources = ResourceTable::parse(*values);
    const Pictures pictures(path, resources);
    const auto icon = [&](const XmlValue &drawable, const QString &label) {
        const QByteArray picture = pictures.png(drawable);
        return picture.isEmpty() ? letterIcon(label) : picture;
    };
    return {InstallSucceeded, readManifest(*tree, resources, icon)};
}

} // namespace SimRuntime
