#pragma once

#include <QJsonValue>
#include <QString>
#include <QStringList>

/// Standard output, in UTF-8, each piece at once, so that a reader at the other end of a pipe sees
/// it as it comes.
class Output
{
public:
    void line(const QString &text);
    void lines(const QStringList &texts);

    /// An object or array, indented.
    void json(const QJsonValue &value);

    /// An object on one line, for a stream of them.
    void jsonLine(const QJsonObject &object);

    /// json() when the answer is asked for in JSON, otherwise lines().
    void answer(bool inJson, const QJsonValue &value, const QStringList &texts);
};
