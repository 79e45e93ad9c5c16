#pragma once

#include <QByteArray>
#include <QString>

/// What an APK says about itself.
struct ApkFile
{
    QString packageName; ///< empty when the file is no APK that can be read
    QString versionName; ///< empty when the manifest leaves it to a resource

    bool isApk() const { return !packageName.isEmpty(); }

    static ApkFile read(const QString &path);
};

/// A manifest in Android's binary XML: the package and version that its first element names.
ApkFile parseManifest(const QByteArray &xml);
