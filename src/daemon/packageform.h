#pragma once

#include <QString>

/// The part of a path after its last "/".
QString fileName(const QString &path);

/// The package that an APK file's path or name stands for: its file name without ".apk".
/// "/x/y/com.example.app.apk" gives "com.example.app", and so does "com.example.app".
QString packageForm(const QString &name);
