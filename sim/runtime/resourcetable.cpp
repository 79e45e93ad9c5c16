#include "runtime/resourcetable.h"

#include "runtime/xmltree.h"

#include <algorithm>

namespace SimRuntime {

namespace {

constexpr int LongestReferenceChain = 8;
constexpr int DefaultDensity = 160;

const QByteArray DefaultConfiguration = QByteArrayLiteral("(default)");

// The number behind `key` in a line like "resource 0x7f02 a.b:string/c: t=0x03 d=0x00 (s=...)".
quint32 numberBehind(const QByteArray &line, const char *key)
{
    const int start = line.indexOf(key);
    if (start < 0)
        return 0;
    const QByteArray rest = line.mid(start + int(qstrlen(key)));
    return rest.left(rest.indexOf(' ')).toUInt(nullptr, 16);
}

// Types of a value (AOSP frameworks/base, ResourceTypes.h: Res_value).
constexpr quint32 TypeReference = 0x01;

} // namespace

int densityOf(const QByteArray &configuration)
{
    static const QHash<QByteArray, int> named = {
        {"ldpi", 120},  {"mdpi", 160},   {"tvdpi", 213},   {"hdpi", 240},
        {"xhdpi", 320}, {"xxhdpi", 480}, {"xxxhdpi", 640},
    };
    for (const QByteArray &part : configuration.split('-')) {
        if (named.contains(part))
            return named.value(part);
        bool isNumber = false;
        const int dots = part.left(part.size() - 3).toInt(&isNumber);
        if (part.endsWith("dpi") && isNumber)
            return dots;
    }
    return DefaultDensity;
}

ResourceTable ResourceTable::parse(const QByteArray &dump)
{
    ResourceTable table;
    QByteArray configuration;
    Value *awaitingText = nullptr;
    for (const QByteArray &raw : dump.split('\n')) {
        const QByteArray line = raw.trimmed();
        if (awaitingText != nullptr && line.startsWith("(string"))
            awaitingText->text = unquoted(line);
        awaitingText = nullptr;
        if (line.startsWith("config ") && line.endsWith(':')) {
            configuration = line.mid(7, line.size() - 8);
        } else if (line.startsWith("resource 0x") && line.contains(" t=0x")) {
            Value value;
            value.configuration = configuration;
            value.isReference = numberBehind(line, " t=") == TypeReference;
            value.data = numberBehind(line, " d=");
            QVector<Value> &values = table.m_values[numberBehind(line, "resource ")];
            values.append(value);
            awaitingText = &values.last();
        }
    }
    return table;
}

// References are followed in every configuration of the resource referred to.
QVector<ResourceTable::Value> ResourceTable::values(quint32 resource) const
{
    QVector<Value> found = m_values.value(resource);
    for (int step = 0; step < LongestReferenceChain; ++step) {
        QVector<Value> next;
        for (const Value &value : qAsConst(found))
            next += value.isReference ? m_values.value(value.data) : QVector<Value>{value};
        found = next;
    }
    found.erase(std::remove_if(found.begin(), found.end(),
                               [](const Value &value) { return value.isReference; }),
                found.end());
    return found;
}

QString ResourceTable::text(quint32 resource) const
{
    const QVector<Value> found = values(resource);
    for (const char *preferred : {DefaultConfiguration.constData(), "en", "en-rUS", "en-rGB"}) {
        for (const Value &value : found) {
            if (value.configuration == preferred && !value.text.isNull())
                return value.text;
        }
    }
    return found.isEmpty() ? QString() : found.constFirst().text;
}

std::optional<bool> ResourceTable::boolean(quint32 resource) const
{
    const QVector<Value> found = values(resource);
    if (found.isEmpty())
        return std::nullopt;
    return found.constFirst().data != 0;
}

QStringList ResourceTable::filesByDensity(quint32 resource) const
{
    QVector<Value> found = values(resource);
    std::stable_sort(found.begin(), found.end(), [](const Value &a, const Value &b) {
        return densityOf(a.configuration) > densityOf(b.configuration);
    });
    QStringList files;
    for (const Value &value : qAsConst(found)) {
        if (!value.text.isEmpty() && !files.contains(value.text))
            files.append(value.text);
    }
    return files;
}

} // namespace SimRuntime
