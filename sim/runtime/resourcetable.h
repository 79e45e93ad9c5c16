#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace SimRuntime {

/// The values of an APK's resources in every configuration (language, screen density, ...).
class ResourceTable
{
public:
    /// Reads what `aapt dump --values resources APK` prints.
    static ResourceTable parse(const QByteArray &dump);

    /// The text for an English-speaking user: that of the default configuration if it has one.
    QString text(quint32 resource) const;

    std::optional<bool> boolean(quint32 resource) const;

    /// The files that hold a picture, the one for the densest screen first.
    QStringList filesByDensity(quint32 resource) const;

private:
    struct Value
    {
        QByteArray configuration;
        bool isReference = false;
        quint32 data = 0; ///< the resource it refers to, or its number
        QString text;
    };

    QVector<Value> values(quint32 resource) const;

    QHash<quint32, QVector<Value>> m_values;
};

/// Dots per inch that a configuration such as "xhdpi-v4" is made for; a configuration that names
/// no density is made for 160.
int densityOf(const QByteArray &configuration);

} // namespace SimRuntime
