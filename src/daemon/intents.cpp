#include "daemon/intents.h"

#include "config/daemonconfig.h"
#include "config/runtimetext.h"
#include "platform/host/logging.h"

namespace Intents {

namespace {

// AOSP frameworks/base, core/java/android/content/Intent.java: FLAG_ACTIVITY_NEW_TASK,
// FLAG_ACTIVITY_TASK_ON_HOME, FLAG_ACTIVITY_CLEAR_TASK
constexpr int NewTask = 0x10000000;
constexpr int TaskOnHome = 0x00004000;
constexpr int ClearTask = 0x00008000;

Intent settingsPage(const QString &action)
{
    Intent intent;
    intent.action = action;
    intent.package = QStringLiteral("com.android.settings");
    intent.flags = NewTask | ClearTask;
    return intent;
}

} // namespace

QUrl runtimeUrl(const QString &location)
{
    QUrl url = DaemonConfig::toAndroidUrl(location);
    if (!url.isValid()) {
        // Unset: the runtime would be handed a URL that nothing can open.
        qCWarning(daemonLog) << "Neither a path nor a URL, left out:"
                             << RuntimeText::excerpt(location);
        return QUrl();
    }
    return url;
}

Intent launch(const QString &action, const QString &data, const QString &type,
              const QString &packageName, const QString &className, const QString &category,
              const QVariantMap &extras)
{
    const QString mainAction = QStringLiteral("android.intent.action.MAIN");
    Intent intent;
    intent.action = action.isEmpty() ? mainAction : action;
    if (intent.action == mainAction)
        intent.flags = NewTask | TaskOnHome;
    if (!data.isEmpty())
        intent.data = runtimeUrl(data);
    if (!type.isEmpty())
        intent.type = type;
    if (!packageName.isEmpty()) {
        intent.package = packageName;
        if (!className.isEmpty()) {
            intent.componentPackage = packageName;
            intent.componentClass = className;
        }
    }
    if (!category.isEmpty())
        intent.categories = QStringList{category};
    intent.extras = extras;
    return intent;
}

Intent appSettings(const QString &packageName)
{
    Intent intent = settingsPage(QStringLiteral("android.settings.APPLICATION_DETAILS_SETTINGS"));
    intent.data.setScheme(QStringLiteral("package"));
    intent.data.setPath(packageName);
    if (!intent.data.isValid()) {
        qCWarning(daemonLog) << "Cannot be a package name, left out:"
                             << RuntimeText::excerpt(packageName);
        intent.data.clear();
    }
    return intent;
}

Intent licenses()
{
    return settingsPage(QStringLiteral("android.settings.LEGAL_INFO"));
}

} // namespace Intents
