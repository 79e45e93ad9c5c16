#include "daemon/sharerequest.h"

#include "config/runtimetext.h"
#include "daemon/intents.h"
#include "daemon/plainvalue.h"
#include "platform/host/logging.h"

#include <QStringList>
#include <QUrl>

namespace {

// AOSP frameworks/base, core/java/android/content/Intent.java
const char *const actionSend = "android.intent.action.SEND";
const char *const actionSendMultiple = "android.intent.action.SEND_MULTIPLE";
const char *const extraSubject = "android.intent.extra.SUBJECT";
const char *const extraText = "android.intent.extra.TEXT";
const char *const extraStream = "android.intent.extra.STREAM";

/// More do not fit into the mebibyte that Android takes of a request, even if their URLs have one
/// letter: a caller that names millions would get a line of the log for each, and fill the memory.
constexpr int maxFiles = 1024 * 1024 / 48;

QString text(const char *literal)
{
    return QString::fromLatin1(literal);
}

QString joined(const QVariantList &items)
{
    QStringList texts;
    for (const QVariant &item : items)
        texts.append(item.toString());
    return texts.join(QStringLiteral(", "));
}

/// The first of two entries of a map that is not empty.
QString either(const QVariantMap &map, const QString &first, const QString &second)
{
    const QString value = map.value(first).toString();
    return value.isEmpty() ? map.value(second).toString() : value;
}

void addText(Intent &intent, const QVariantMap &item)
{
    intent.type = QStringLiteral("text/plain");
    const QString subject = either(item, QStringLiteral("name"), QStringLiteral("linkTitle"));
    // Without a subject the text stays behind, too: the apps that the sharing framework offers for
    // text take it as the body to a subject.
    if (!subject.isEmpty()) {
        intent.extras.insert(text(extraSubject), subject);
        intent.extras.insert(text(extraText),
                             either(item, QStringLiteral("data"), QStringLiteral("status")));
    }
    qCDebug(daemonLog) << "Share Text:" << intent.extras;
}

void addFiles(Intent &intent, const QVariantList &resources)
{
    QVariantList urls;
    for (const QVariant &resource : resources) {
        const QUrl url = Intents::runtimeUrl(resource.toString());
        if (!url.isEmpty())
            urls.append(url);
    }
    if (urls.size() > 1) {
        intent.action = text(actionSendMultiple);
        intent.extras.insert(text(extraStream), urls);
    } else if (!urls.isEmpty()) {
        intent.extras.insert(text(extraStream), urls.first());
    }
}

void addTarget(Intent &intent, const QString &methodId)
{
    const QStringList parts = methodId.split(QLatin1Char('/'));
    // An empty package would not do as one: the runtime reads a component wherever the package is
    // not null, and would find none behind it.
    if (parts.size() < 2 || parts.first().isEmpty()) {
        qCWarning(daemonLog) << "Sharing with no app in particular, methodId names none:"
                             << RuntimeText::excerpt(methodId);
        return;
    }
    intent.componentPackage = parts.at(0);
    intent.componentClass = parts.at(1);
    intent.package = intent.componentPackage;
}

} // namespace

ShareRequest ShareRequest::fromConfiguration(const QVariantMap &configuration)
{
    ShareRequest request;
    for (auto entry = configuration.begin(); entry != configuration.end(); ++entry) {
        const QString &key = entry.key();
        const QVariant value = plainValue(entry.value());
        if (key == QLatin1String("resources")) {
            request.resources = value.toList();
            qCDebug(daemonLog) << "Resources:" << joined(request.resources);
        } else if (key == QLatin1String("mimeType")) {
            request.mimeType = value.toString();
            qCDebug(daemonLog) << "MimeType:" << request.mimeType;
        } else if (key == QLatin1String("selectedTransferMethodInfo")) {
            request.transferMethod = value.toMap();
            qCDebug(daemonLog) << "SelectedTransferMethodInfo:" << request.transferMethod;
        } else if (key == QLatin1String("title")) {
            qCDebug(daemonLog) << "Title:" << value.toString();
        } else {
            qCWarning(daemonLog) << "Unrecognized key '" << key << "' with value:" << value;
        }
    }
    return request;
}

std::optional<Intent> ShareRequest::toIntent() const
{
    if (resources.isEmpty())
        return std::nullopt;
    Intent intent;
    intent.action = text(actionSend);
    if (mimeType.startsWith(QLatin1String("text/"))) {
        addText(intent, resources.first().toMap());
    } else if (resources.size() > maxFiles) {
        qCWarning(daemonLog) << "Too many files to share, sharing none:" << resources.size();
        return std::nullopt;
    } else {
        if (!mimeType.isEmpty())
            intent.type = mimeType;
        addFiles(intent, resources);
    }
    addTarget(intent, transferMethod.value(QStringLiteral("methodId")).toString());
    return intent;
}
