#include "runtime/deviceidleservice.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

namespace SimRuntime {

DeviceIdleService::DeviceIdleService(const ServiceEnvironment &environment, const QString &dataRoot,
                                     const PackageStore *store)
    : Service(environment, QStringLiteral("deviceidle"),
              QStringLiteral("android.os.IDeviceIdleController"))
    , m_path(dataRoot + QStringLiteral("/data/system/deviceidle.json"))
    , m_store(store)
{
    const QVector<Field> packageName = {{"packageName", FieldKind::String}};
    add({"addPowerSaveWhitelistApp", everyLevel(1), packageName, [this](const Request &request) {
             const QString package = request.string("packageName");
             if (m_store->contains(package) && !m_whitelist.contains(package))
                 m_whitelist.append(package);
             return save();
         }});
    add({"removePowerSaveWhitelistApp", everyLevel(2), packageName, [this](const Request &request) {
             m_whitelist.removeAll(request.string("packageName"));
             return save();
         }});
    add({"isPowerSaveWhitelistApp", {13, 16, 16}, packageName, [this](const Request &request) {
             return int32Answer(m_whitelist.contains(request.string("packageName")) ? 1 : 0);
         }});
    load();
}

void DeviceIdleService::load()
{
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QJsonArray packages = QJsonDocument::fromJson(file.readAll()).array();
    for (const QJsonValue package : packages)
        m_whitelist.append(package.toString());
}

Answer DeviceIdleService::save() const
{
    QDir().mkpath(QFileInfo(m_path).path());
    QSaveFile file(m_path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(QJsonDocument(QJsonArray::fromStringList(m_whitelist)).toJson());
        if (file.commit())
            return voidAnswer();
    }
    return exceptionAnswer(ExceptionIllegalState, file.errorString(), environment().sdk);
}

} // namespace SimRuntime
