#pragma once

#include <QByteArray>
#include <QString>

/// The apps that every program here works with: names as long as those of real apps, icons of 20 KB
/// that differ. Number n is always the same app.
namespace Sample {

constexpr int IconBytes = 20 * 1024;

QString packageName(int number);
QString className(int number);
QString label(int number);
QString version();
QByteArray icon(int number);

/// "bramd_launcher_..." as the files of app `number` are called, without directory and suffix.
QString fileName(int number);

/// The files of app `number` as they have to lie there in the end, 353 bytes of entry.
QByteArray desktopEntry(int number);
QByteArray settingsEntry(int number);

} // namespace Sample
