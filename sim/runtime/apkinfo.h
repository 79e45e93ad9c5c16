#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

namespace SimRuntime {

/// An activity that the home screen shows.
struct LauncherActivity
{
    QString className;
    QString label;
    QByteArray icon; ///< PNG
};

/// An activity that others can open documents and links with, or share to.
struct HandlerActivity
{
    QString className;
    QString label;   ///< the app's
    QString caption; ///< the activity's own, or the app's
    QStringList mimeTypes;
    QStringList schemes;
    QStringList hosts;
    QStringList shareMimeTypes;
    bool multi = false; ///< several items can be shared at once
    QByteArray icon;    ///< PNG
};

/// What the runtime knows of an app: all of it is in the APK.
struct ApkInfo
{
    QString package;
    qint64 versionCode = 0;
    QString versionName;
    QString label;
    int minimumSdk = 1;
    QStringList authorities; ///< of its content providers
    QVector<LauncherActivity> launchers;
    QVector<HandlerActivity> handlers;
};

} // namespace SimRuntime
