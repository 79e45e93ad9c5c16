#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

/// Base of every test class. Between init() and cleanup() of a test function it keeps each log
/// line; a warning or critical line that the test has not taken fails the test function.
///
/// A derived class that has its own init() or cleanup() calls these.
class TestCase : public QObject
{
    Q_OBJECT

public:
    struct LogLine
    {
        QtMsgType type = QtDebugMsg;
        QString category;
        QString text;
    };

    /// Removes and returns the texts of all kept lines of this type, oldest first.
    QStringList takeLog(QtMsgType type);

    /// The same for one category only.
    QStringList takeLog(QtMsgType type, const QString &category);

    /// Removes all kept lines up to and including the first one that has this type and text;
    /// false when there is none (nothing is removed then).
    bool takeLogLine(QtMsgType type, const QString &text);

    const QVector<LogLine> &log() const;

protected Q_SLOTS:
    void init();
    void cleanup();
};
