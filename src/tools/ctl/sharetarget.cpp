#include "tools/ctl/sharetarget.h"

#include "launcher/launcherpaths.h"
#include "tools/ctl/regularfile.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace {

ShareTarget targetOf(const QString &packageName, const QString &className,
                     const QJsonObject &object)
{
    ShareTarget target;
    target.packageName = packageName;
    target.className = className;
    target.label = object.value(QLatin1String("label")).toString();
    target.caption = object.value(QLatin1String("caption")).toString();
    target.iconPath = object.value(QLatin1String("icon")).toString();
    const QJsonArray types = object.value(QLatin1String("mimetypes")).toArray();
    for (const QJsonValue &type : types)
        target.mimeTypes.append(type.toString());
    target.takesSeveral = object.value(QLatin1String("multi")).toBool();
    return target;
}

} // namespace

bool ShareTarget::takes(const QString &mimeType) const
{
    return std::any_of(mimeTypes.cbegin(), mimeTypes.cend(), [&mimeType](const QString &accepted) {
        if (!accepted.endsWith(QLatin1String("/*")))
            return accepted == mimeType;
        const QString beginning = accepted.chopped(1);
        return beginning == QLatin1String("*/") || mimeType.startsWith(beginning);
    });
}

RegisteredTargets RegisteredTargets::parse(const QByteArray &content)
{
    RegisteredTargets parsed;
    if (content.trimmed().isEmpty()) {
        parsed.state = State::Empty;
        return parsed;
    }
    const QJsonDocument document = QJsonDocument::fromJson(content);
    if (!document.isObject()) {
        parsed.state = State::Damaged;
        return parsed;
    }

    const QJsonObject packages = document.object();
    for (auto package = packages.begin(); package != packages.end(); ++package) {
        const QJsonObject classes = package.value().toObject();
        for (auto target = classes.begin(); target != classes.end(); ++target) {
            if (target.value().isObject())
                parsed.targets.append(
                    targetOf(package.key(), target.key(), target.value().toObject()));
        }
    }
    parsed.state = parsed.targets.isEmpty() ? State::Empty : State::Filled;
    return parsed;
}

RegisteredTargets RegisteredTargets::read()
{
    const RegularFile file = RegularFile::read(LauncherPaths::sharingFile());
    switch (file.state) {
    case RegularFile::State::Read:
        return parse(file.content);
    case RegularFile::State::Missing:
        return {State::Missing, {}};
    case RegularFile::State::Unreadable:
        return {State::Unreadable, {}};
    case RegularFile::State::Unusable:
        break;
    }
    return {State::Damaged, {}};
}
