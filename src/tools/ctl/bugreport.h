#pragma once

#include <QJsonArray>
#include <QString>
#include <QStringList>
#include <QVector>

class Context;

namespace BugReport {

struct Section
{
    QString title;
    QStringList lines;
    QJsonArray objects; ///< the same for scripts, where there is more to know than the lines say
};

/// Versions, states, findings, apps, and the newest lines of the journal.
QVector<Section> write(Context &context);

/// For people, each section below its title.
QStringList inLines(const QVector<Section> &sections);

} // namespace BugReport
