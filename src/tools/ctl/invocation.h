#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

/// The arguments of one call of a command, checked against its row in the command table.
struct Invocation
{
    QStringList arguments;
    QMap<QString, QStringList> options; ///< values by name; a flag that is given has none

    bool has(const QString &option) const { return options.contains(option); }

    /// The last value given, or an empty string.
    QString value(const QString &option) const
    {
        const QStringList values = options.value(option);
        return values.isEmpty() ? QString() : values.last();
    }
};
