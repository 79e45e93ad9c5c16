#include "launcher/jsontext.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace JsonText {

namespace {

/// Whether it is written as it is. What has halves of surrogate pairs is not for us to decide.
bool isPlain(QChar character)
{
    return character.unicode() >= 0x20 && character != QLatin1Char('"') &&
           character != QLatin1Char('\\') && !character.isSurrogate();
}

} // namespace

QByteArray string(const QString &text)
{
    if (std::all_of(text.begin(), text.end(), isPlain))
        return '"' + text.toUtf8() + '"';
    const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    return array.mid(1, array.size() - 2);
}

} // namespace JsonText
