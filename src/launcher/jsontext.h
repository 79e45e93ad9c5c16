#pragma once

#include <QByteArray>
#include <QString>

/// Pieces of JSON texts, spelled as QJsonDocument spells them. For files whose shape is fixed, that
/// is several times cheaper than to make a document first, and every announcement of every app
/// needs one.
namespace JsonText {

/// A string, in its quotes.
QByteArray string(const QString &text);

} // namespace JsonText
