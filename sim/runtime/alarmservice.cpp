#include "runtime/alarmservice.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace SimRuntime {

AlarmService::AlarmService(const ServiceEnvironment &environment, const QString &dataRoot)
    : Service(environment, QStringLiteral("alarm"), QStringLiteral("android.app.IAlarmManager"))
    , m_path(dataRoot + QStringLiteral("/data/property/persist.sys.timezone"))
{
    add({"setTimeZone",
         everyLevel(3),
         {{"zone", FieldKind::String}},
         [this](const Request &request) { return setTimeZone(request.string("zone")); }});
}

QString AlarmService::timeZone() const
{
    QFile file(m_path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

Answer AlarmService::setTimeZone(const QString &zone)
{
    QDir().mkpath(QFileInfo(m_path).path());
    QSaveFile file(m_path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(zone.toUtf8());
        if (file.commit())
            return voidAnswer();
    }
    return exceptionAnswer(ExceptionIllegalState, file.errorString(), environment().sdk);
}

} // namespace SimRuntime
