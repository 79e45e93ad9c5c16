#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QVector>

#include <optional>

namespace SimRuntime {

/// An attribute's value in a compiled XML file: a text, or a number that may name a resource.
struct XmlValue
{
    enum class Kind { None, Text, Number, Reference };

    Kind kind = Kind::None;
    QString text;
    quint32 number = 0;
};

struct XmlElement
{
    QString name;
    QHash<QString, XmlValue> attributes; ///< by name without namespace
    QVector<XmlElement> children;

    XmlValue attribute(const QString &attributeName) const
    {
        return attributes.value(attributeName);
    }

    /// The text of an attribute; the null string when it is not there or no text.
    QString text(const QString &attributeName) const { return attribute(attributeName).text; }

    QVector<XmlElement> childrenNamed(const QString &childName) const;
};

/// Reads what `aapt dump xmltree APK FILE` prints. None when there is no element in it.
std::optional<XmlElement> parseXmlTree(const QByteArray &dump);

/// The text between the first two quotes that no backslash protects, its escapes undone.
QString unquoted(const QByteArray &quoted);

} // namespace SimRuntime
