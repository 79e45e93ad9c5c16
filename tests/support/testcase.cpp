#include "support/testcase.h"

#include <QtTest>

#include <mutex>

namespace {

std::mutex logMutex; // the lines of helper threads, such as a private bus's, arrive here too
QVector<TestCase::LogLine> lines;
QtMessageHandler previousHandler = nullptr;

void keepLine(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    {
        const std::lock_guard<std::mutex> lock(logMutex);
        lines.append({type, QString::fromUtf8(context.category), text});
    }
    if (type == QtFatalMsg && previousHandler != nullptr)
        previousHandler(type, context, text);
}

template <typename Predicate>
QStringList takeIf(Predicate matches)
{
    const std::lock_guard<std::mutex> lock(logMutex);
    QStringList taken;
    QVector<TestCase::LogLine> kept;
    for (const TestCase::LogLine &line : lines) {
        if (matches(line))
            taken.append(line.text);
        else
            kept.append(line);
    }
    lines = kept;
    return taken;
}

} // namespace

QStringList TestCase::takeLog(QtMsgType type)
{
    return takeIf([type](const LogLine &line) { return line.type == type; });
}

QStringList TestCase::takeLog(QtMsgType type, const QString &category)
{
    return takeIf([type, &category](const LogLine &line) {
        return line.type == type && line.category == category;
    });
}

bool TestCase::takeLogLine(QtMsgType type, const QString &text)
{
    const std::lock_guard<std::mutex> lock(logMutex);
    for (int i = 0; i < lines.size(); ++i) {
        if (lines.at(i).type == type && lines.at(i).text == text) {
            lines.remove(0, i + 1);
            return true;
        }
    }
    return false;
}

const QVector<TestCase::LogLine> &TestCase::log() const
{
    return lines;
}

void TestCase::init()
{
    lines.clear();
    previousHandler = qInstallMessageHandler(keepLine);
}

void TestCase::cleanup()
{
    qInstallMessageHandler(previousHandler);
    QStringList unexpected;
    for (const LogLine &line : qAsConst(lines)) {
        if (line.type == QtWarningMsg || line.type == QtCriticalMsg)
            unexpected.append(line.category + QStringLiteral(": ") + line.text);
    }
    QCOMPARE(unexpected, QStringList());
}
