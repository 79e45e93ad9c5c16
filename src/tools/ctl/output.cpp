#include "tools/ctl/output.h"

#include "config/runtimetext.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

void Output::line(const QString &text)
{
    print(RuntimeText::singleLine(text).toUtf8() + '\n');
}

void Output::text(const QString &text)
{
    print(text.toUtf8() + '\n');
}

void Output::lines(const QStringList &texts)
{
    for (const QString &text : texts)
        line(text);
}

void Output::json(const QJsonValue &value)
{
    print((value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject()))
              .toJson());
}

void Output::jsonLine(const QJsonObject &object)
{
    print(QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n');
}

void Output::answer(bool inJson, const QJsonValue &value, const QStringList &texts)
{
    if (inJson)
        json(value);
    else
        lines(texts);
}

void Output::print(const QByteArray &text)
{
    if (m_written.isDone())
        m_written = writeToStandardOutput(text, m_lost);
}
