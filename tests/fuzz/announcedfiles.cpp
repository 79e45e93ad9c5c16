#include "fuzz/announcedfiles.h"

#include "config/runtimetext.h"
#include "fuzz/fuzztarget.h"
#include "launcher/desktopfile.h"
#include "launcher/launcherhost.h"
#include "launcher/launcherpaths.h"
#include "launcher/settingsentry.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <climits>
#include <iterator>
#include <sys/stat.h>
#include <vector>

namespace {

constexpr char OtherEntry[] = "[Desktop Entry]\nName=Other\n";

QString otherPath()
{
    return QStringLiteral("/usr/share/applications/other.desktop");
}

QString blacklistedPackage()
{
    return QStringLiteral("blacklisted.app");
}

/// When something was last made or removed in each directory in which nothing has to be.
std::vector<qint64> changesElsewhere()
{
    std::vector<qint64> changes;
    for (const char *directory : {"/etc", "/etc/bramd", "/home", "/opt", "/opt/umbra", "/run",
                                  "/usr/share", "/usr/share/bramd", "/usr/share/bramd/partnerspace",
                                  "/usr/share/corvo-settings", "/var/lib"}) {
        struct stat status = {};
        expect(::stat(directory, &status) == 0, "directory", QString::fromLatin1(directory));
        changes.push_back(qint64(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec);
    }
    return changes;
}

std::vector<qint64> initialChanges;

bool canHaveFiles(const ApkLauncher &launcher)
{
    constexpr int TemporarySuffix = 7; // ".XXXXXX", beside each file while it is written
    const QString name = QFileInfo(LauncherPaths::desktopFile(launcher)).fileName();
    return RuntimeText::isUsableName(launcher.packageName) &&
           RuntimeText::isUsableName(launcher.className) &&
           name.toUtf8().size() + TemporarySuffix <= NAME_MAX;
}

QString singleLineValue(const QString &text)
{
    return RuntimeText::singleLine(text).replace(QLatin1String("\\"), QLatin1String("\\\\"));
}

QMap<QString, QString> expectedEntry(const QString &path, const ApkLauncher &launcher)
{
    const QString package = launcher.packageName;
    const bool partner = QFileInfo::exists(LauncherPaths::partnerSpaceMarker(package));
    const QString files = launcher.mimeTypes.isEmpty() ? QString() : QStringLiteral("-d %U ");
    QMap<QString, QString> entry{
        {QStringLiteral("Exec"), QStringLiteral("bramd-launcher ") + files + package +
                                     QStringLiteral(".apk ") + package + QLatin1Char('/') +
                                     launcher.className},
        {QStringLiteral("Icon"), LauncherPaths::icon(path)},
        {QStringLiteral("Name"), singleLineValue(launcher.label)},
        {QStringLiteral("Type"), QStringLiteral("Application")},
        {QStringLiteral("Version"), QStringLiteral("1.0")},
        {QStringLiteral("X-Orca-Application-Type"), QStringLiteral("no-invoker")},
        {QStringLiteral("X-bramd-apkfile"),
         QStringLiteral("/home/.android/data/app//") + package + QStringLiteral(".apk")},
        {QStringLiteral("X-bramd-packageName"), package},
    };
    if (!launcher.mimeTypes.isEmpty()) {
        entry.insert(QStringLiteral("MimeType"),
                     singleLineValue(launcher.mimeTypes.join(QLatin1Char(';'))));
    }
    if (launcher.isHandler() || partner || package == blacklistedPackage())
        entry.insert(QStringLiteral("NoDisplay"), QStringLiteral("true"));
    if (partner)
        entry.insert(QStringLiteral("Categories"), QStringLiteral("X-TidewaterPartnerSpace"));
    return entry;
}

QString differences(const QMap<QString, QString> &written, const QMap<QString, QString> &intended)
{
    QString text;
    QStringList keys = written.keys() + intended.keys();
    keys.removeDuplicates();
    for (const QString &key : qAsConst(keys)) {
        if (written.value(key) != intended.value(key)) {
            text += QStringLiteral("\n%1: written \"%2\", intended \"%3\"")
                        .arg(key, written.value(key), intended.value(key));
        }
    }
    return text;
}

} // namespace

void AnnouncedFiles::makeHost()
{
    LauncherHost::reset();
    HostFiles::write(QStringLiteral("/etc/bramd/app-blacklist"), "blacklisted.app\n");
    HostFiles::write(QStringLiteral("/usr/share/bramd/partnerspace/partner.app.apk"), "");
    initialChanges = changesElsewhere();
}

void AnnouncedFiles::clearHost()
{
    const QStringList files = LauncherHost::files();
    for (const QString &file : files)
        HostFiles::removeAll(file);
    HostFiles::write(otherPath(), OtherEntry);
}

void AnnouncedFiles::onDaemonStarted()
{
    m_received.clear();
    m_owners.clear();
    m_shareTargets.clear();
    m_sharingStarted = false;
}

void AnnouncedFiles::onAnnounced(const ApkLauncher &launcher)
{
    if (!canHaveFiles(launcher))
        return;
    const QString path = LauncherPaths::desktopFile(launcher);
    const Activity activity(launcher.packageName, launcher.className);
    if (launcher.isHandler() && launcher.packageName == blacklistedPackage()) {
        m_received.remove(activity);
        return;
    }
    // who came first keeps files for which others have the same name
    const QString name = LauncherPaths::escapedComponent(launcher.packageName, launcher.className);
    if (m_owners.value(name, launcher.packageName) != launcher.packageName)
        return;
    m_owners.insert(name, launcher.packageName);
    m_received.insert(activity, path);
    m_entries.insert(path, launcher);
    if (!launcher.shareMimeTypes.isEmpty()) {
        m_shareTargets.insert(activity, launcher);
        m_sharingStarted = true;
    }
}

void AnnouncedFiles::onPackageRemoved(const QString &packageName)
{
    for (auto entry = m_entries.begin(); entry != m_entries.end();)
        entry = entry->packageName == packageName ? m_entries.erase(entry) : std::next(entry);
    for (auto activity = m_received.begin(); activity != m_received.end();) {
        activity =
            activity.key().first == packageName ? m_received.erase(activity) : std::next(activity);
    }
    for (auto owner = m_owners.begin(); owner != m_owners.end();)
        owner = owner.value() == packageName ? m_owners.erase(owner) : std::next(owner);
    for (auto target = m_shareTargets.begin(); target != m_shareTargets.end();) {
        target =
            target.key().first == packageName ? m_shareTargets.erase(target) : std::next(target);
    }
}

void AnnouncedFiles::onComplete()
{
    const QStringList announced = m_received.values();
    for (auto entry = m_entries.begin(); entry != m_entries.end();)
        entry = announced.contains(entry.key()) ? std::next(entry) : m_entries.erase(entry);
    m_owners.clear();
    for (auto activity = m_received.constBegin(); activity != m_received.constEnd(); ++activity) {
        const auto &[package, className] = activity.key();
        m_owners.insert(LauncherPaths::escapedComponent(package, className), package);
    }
}

void AnnouncedFiles::expectOnHost(qint64 budget) const
{
    QStringList expected{otherPath(), LauncherHost::sharingPath()};
    for (auto entry = m_entries.constBegin(); entry != m_entries.constEnd(); ++entry) {
        const QString &path = entry.key();
        const ApkLauncher &launcher = entry.value();
        expected << path << LauncherPaths::icon(path);
        if (!launcher.isHandler())
            expected << LauncherPaths::settingsEntry(path);
    }
    QStringList files = LauncherHost::files();
    expected.sort();
    files.sort();
    expect(files == expected, "files", files.join(QLatin1Char(' ')));
    expect(changesElsewhere() == initialChanges, "no file elsewhere");
    expect(HostFiles::read(otherPath()) == OtherEntry, "other programs' entries stay");

    qint64 size = 0;
    for (const QString &file : qAsConst(files))
        size += QFileInfo(file).size();
    expect(size <= budget, "bounded size of files", QString::number(size));

    for (auto entry = m_entries.constBegin(); entry != m_entries.constEnd(); ++entry) {
        const QString &path = entry.key();
        const ApkLauncher &launcher = entry.value();
        QMap<QString, QString> written = HostFiles::desktopEntry(path);
        expect(DesktopFile::parse(HostFiles::read(path)) == written, "the entry can be read");
        QMap<QString, QString> intended = expectedEntry(path, launcher);
        // Of a package that had the entry before a restart: keys that are not set stay.
        const QString categories = QStringLiteral("Categories");
        if (!intended.contains(categories) && written.contains(categories))
            intended.insert(categories, QStringLiteral("X-TidewaterPartnerSpace"));
        expect(written == intended, "the entry", path + differences(written, intended));
        expect(HostFiles::read(LauncherPaths::icon(path)) == launcher.icon, "the icon", path);
        if (launcher.isHandler())
            continue;
        const QByteArray settings = HostFiles::read(LauncherPaths::settingsEntry(path));
        expect(QJsonDocument::fromJson(settings).isObject(), "the settings entry", path);
    }
    expectSharing();
}

void AnnouncedFiles::expectSharing() const
{
    const QByteArray content = HostFiles::read(LauncherHost::sharingPath());
    if (!m_sharingStarted) {
        expect(content.isEmpty(), "an empty sharing file");
        return;
    }
    const QJsonDocument document = QJsonDocument::fromJson(content);
    expect(document.isObject(), "the sharing file is an object");

    QMap<Activity, QJsonObject> targets;
    const QJsonObject packages = document.object();
    for (auto package = packages.begin(); package != packages.end(); ++package) {
        const QJsonObject classes = package.value().toObject();
        for (auto target = classes.begin(); target != classes.end(); ++target)
            targets.insert({package.key(), target.key()}, target.value().toObject());
    }
    expect(targets.keys() == m_shareTargets.keys(), "the targets in the sharing file");
    for (auto target = targets.constBegin(); target != targets.constEnd(); ++target) {
        const ApkLauncher launcher = m_shareTargets.value(target.key());
        expect(target->keys() == QStringList({QStringLiteral("caption"), QStringLiteral("icon"),
                                              QStringLiteral("label"), QStringLiteral("mimetypes"),
                                              QStringLiteral("multi")}),
               "the keys of a share target");
        expect(target->value(QLatin1String("multi")).toBool() == launcher.multi, "multi");
        expect(target->value(QLatin1String("icon")).toString() ==
                   LauncherPaths::icon(LauncherPaths::desktopFile(launcher)),
               "the icon of a share target");
    }
}
