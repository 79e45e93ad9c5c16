#include "launcher/sharetargets.h"

#include "config/runtimetext.h"
#include "launcher/apklauncher.h"
#include "launcher/jsontext.h"
#include "launcher/launcherpaths.h"

#include <QStringBuilder>

#include <cstring>

namespace {

constexpr char OneLevel[] = "    ";
constexpr char TwoLevels[] = "        ";

QByteArray jsonString(const QString &text)
{
    return JsonText::string(RuntimeText::wellFormed(text));
}

QByteArray mimeTypesText(const QStringList &types)
{
    QByteArray text = "[\n";
    for (const QString &type : types) {
        if (!text.endsWith("[\n"))
            text += ",\n";
        text += "                " + jsonString(type);
    }
    return text + "\n            ]";
}

/// In the order of the keys, and indented as what it is inside the whole text.
QByteArray targetText(const ApkLauncher &launcher)
{
    const QString icon = LauncherPaths::icon(LauncherPaths::desktopFile(launcher));
    return "{\n"
           "            \"caption\": " %
           jsonString(launcher.caption) %
           ",\n"
           "            \"icon\": " %
           jsonString(icon) %
           ",\n"
           "            \"label\": " %
           jsonString(launcher.label) %
           ",\n"
           "            \"mimetypes\": " %
           mimeTypesText(launcher.shareMimeTypes) %
           ",\n"
           "            \"multi\": " %
           (launcher.multi ? "true" : "false") %
           "\n"
           "        }";
}

/// Appends an object of these members, whose names are indented by `indent`.
template <typename Members, typename AppendValue>
void appendObject(QByteArray *text, const Members &members, const char *indent,
                  AppendValue appendValue)
{
    *text += "{";
    for (auto member = members.begin(); member != members.end(); ++member) {
        *text += member == members.begin() ? "\n" : ",\n";
        *text += indent;
        *text += JsonText::string(member.key());
        *text += ": ";
        appendValue(member.value());
    }
    *text += '\n';
    *text += indent + std::strlen(OneLevel);
    *text += '}';
}

} // namespace

bool ShareTargets::set(const ApkLauncher &launcher)
{
    const QByteArray text = targetText(launcher);
    if (m_packages.value(launcher.packageName).value(launcher.className) == text)
        return false;
    m_packages[launcher.packageName].insert(launcher.className, text);
    return true;
}

void ShareTargets::removePackage(const QString &packageName)
{
    m_packages.remove(packageName);
}

QByteArray ShareTargets::toJson() const
{
    QByteArray text;

    appendObject(&text, m_packages, OneLevel, [&text](const Package &package) {
        appendObject(&text, package, TwoLevels,
                     [&text](const QByteArray &target) { text += target; });
    });
    text += '\n';
    return text;
}
