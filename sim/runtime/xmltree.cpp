#include "runtime/xmltree.h"

namespace SimRuntime {

namespace {

constexpr int DeepestNesting = 64;

struct Line
{
    int indentation = 0;
    QByteArray content;
};

QVector<Line> meaningfulLines(const QByteArray &dump)
{
    QVector<Line> lines;
    for (const QByteArray &raw : dump.split('\n')) {
        Line line;
        line.content = raw.trimmed();
        while (line.indentation < raw.size() && raw.at(line.indentation) == ' ')
            ++line.indentation;
        if (line.content.startsWith("E: ") || line.content.startsWith("A: "))
            lines.append(line);
    }
    return lines;
}

// "android:name(0x01010003)" and "package" are called "name" and "package" here.
QString localName(const QByteArray &name)
{
    const int end = name.indexOf('(');
    const QByteArray withoutId = end < 0 ? name : name.left(end);
    return QString::fromUtf8(withoutId.mid(withoutId.lastIndexOf(':') + 1));
}

XmlValue parseValue(const QByteArray &value)
{
    XmlValue result;
    if (value.startsWith('"')) {
        result.kind = XmlValue::Kind::Text;
        result.text = unquoted(value);
    } else if (value.startsWith('@')) {
        result.kind = XmlValue::Kind::Reference;
        result.number = value.mid(1).toUInt(nullptr, 16);
    } else if (value.startsWith("(type ")) {
        const QByteArray number = value.mid(value.indexOf(')') + 1);
        result.kind = XmlValue::Kind::Number;
        result.number = number.split(' ').constFirst().toUInt(nullptr, 16);
    }
    return result;
}

// Takes all lines that are indented deeper than the element's own.
XmlElement takeElement(const QVector<Line> &lines, int *next, int depth)
{
    const Line &start = lines.at((*next)++);
    XmlElement element;
    element.name = localName(start.content.mid(3).split(' ').constFirst());
    while (*next < lines.size() && lines.at(*next).indentation > start.indentation) {
        const Line &line = lines.at(*next);
        if (line.content.startsWith("E: ") && depth < DeepestNesting) {
            element.children.append(takeElement(lines, next, depth + 1));
            continue;
        }
        const int equals = line.content.indexOf('=');
        if (line.content.startsWith("A: ") && equals > 0)
            element.attributes.insert(localName(line.content.mid(3, equals - 3)),
                                      parseValue(line.content.mid(equals + 1)));
        ++*next;
    }
    return element;
}

} // namespace

QVector<XmlElement> XmlElement::childrenNamed(const QString &childName) const
{
    QVector<XmlElement> matching;
    for (const XmlElement &child : children) {
        if (child.name == childName)
            matching.append(child);
    }
    return matching;
}

std::optional<XmlElement> parseXmlTree(const QByteArray &dump)
{
    const QVector<Line> lines = meaningfulLines(dump);
    if (lines.isEmpty() || !lines.constFirst().content.startsWith("E: "))
        return std::nullopt;
    int next = 0;
    return takeElement(lines, &next, 0);
}

QString unquoted(const QByteArray &quoted)
{
    QByteArray text;
    for (int i = quoted.indexOf('"') + 1; i < quoted.size() && quoted.at(i) != '"'; ++i) {
        if (quoted.at(i) != '\\' || i + 1 == quoted.size()) {
            text.append(quoted.at(i));
            continue;
        }
        const char escaped = quoted.at(++i);
        text.append(escaped == 'n'   ? '\n'
                    : escaped == 't' ? '\t'
                    : escaped == 'r' ? '\r'
                                     : escaped);
    }
    return text.isEmpty() ? QStringLiteral("") : QString::fromUtf8(text);
}

} // namespace SimRuntime
