#pragma once

#include "tools/common/outcome.h"
#include "tools/common/standardoutput.h"

#include <QJsonValue>
#include <QString>
#include <QStringList>

/// Standard output, in UTF-8, each piece at once, so that a reader at the other end of a pipe sees
/// it as it comes.
class Output
{
public:
    /// One line, whatever the names in it hold: they come from apps and files, and must neither
    /// break it nor command the terminal.
    void line(const QString &text);

    /// Text of this program's own making, with line breaks and tabs.
    void text(const QString &text);

    void lines(const QStringList &texts);

    /// An object or array, indented.
    void json(const QJsonValue &value);

    /// An object on one line, for a stream of them.
    void jsonLine(const QJsonObject &object);

    /// json() when the answer is asked for in JSON, otherwise lines().
    void answer(bool inJson, const QJsonValue &value, const QStringList &texts);

    /// What is said of output that cannot be written; unless told, that it was all there was to do.
    void setLost(LostOutput lost) { m_lost = lost; }

    /// Done unless something could not be written. From then on nothing more is.
    const Outcome &written() const { return m_written; }

private:
    void print(const QByteArray &text);

    Outcome m_written;
    LostOutput m_lost = LostOutput::AskAgain;
};
