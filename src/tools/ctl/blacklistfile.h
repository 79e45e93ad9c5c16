#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The lists of hidden apps that the daemon reads when it starts.
namespace BlacklistFile {

/// The administrator's list, the one that is changed here.
QString path();

/// The second list, which the daemon's environment may name; empty when it names none.
QString secondPath();

/// The value of BRAMD_PACKAGE_BLACKLIST_PATH in a file of environment assignments.
QString secondPathIn(const QByteArray &environmentFile);

/// The packages in a list, in its order.
QStringList packages(const QByteArray &content);

/// The list with the package at its end, unless it is there already. Other lines stay as they are.
QByteArray with(const QByteArray &content, const QString &packageName);

/// The list without every line that names the package.
QByteArray without(const QByteArray &content, const QString &packageName);

} // namespace BlacklistFile
