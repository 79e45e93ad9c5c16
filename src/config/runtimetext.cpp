#include "config/runtimetext.h"

#include <QVector>

#include <algorithm>

namespace RuntimeText {

namespace {

constexpr int MaxExcerpt = 255;

/// Nearly every character of nearly every text; to look up what the others are takes longer.
bool isPrintableAscii(QChar character)
{
    return character >= QLatin1Char(' ') && character <= QLatin1Char('~');
}

bool breaksLines(QChar character)
{
    return character.category() == QChar::Other_Control || character == QChar::LineSeparator ||
           character == QChar::ParagraphSeparator;
}

bool isHalfPair(const QString &text, int position)
{
    const QChar character = text.at(position);
    if (character.isHighSurrogate())
        return position + 1 == text.size() || !text.at(position + 1).isLowSurrogate();
    if (character.isLowSurrogate())
        return position == 0 || !text.at(position - 1).isHighSurrogate();
    return false;
}

bool isNameCharacter(uint character)
{
    if (character < 0x80) {
        return QChar::isLetterOrNumber(character) || character == '_' || character == '$' ||
               character == '.' || character == '-';
    }
    return !QChar::isSpace(character) && QChar::category(character) != QChar::Other_Format;
}

} // namespace

QString wellFormed(QString text)
{
    if (std::all_of(text.cbegin(), text.cend(), isPrintableAscii))
        return text;
    for (int position = 0; position < text.size(); ++position) {
        if (isHalfPair(text, position))
            text[position] = QChar::ReplacementCharacter;
    }
    return text;
}

QString singleLine(QString text)
{
    if (std::all_of(text.cbegin(), text.cend(), isPrintableAscii))
        return text;
    text = wellFormed(text);
    for (int position = 0; position < text.size(); ++position) {
        if (breaksLines(text.at(position)))
            text[position] = QLatin1Char(' ');
    }
    return text;
}

QString excerpt(const QString &text)
{
    return text.left(MaxExcerpt);
}

bool isUsableName(const QString &name)
{
    if (name.isEmpty() || name.startsWith(QLatin1Char('-')) || singleLine(name) != name)
        return false;
    const QVector<uint> characters = name.toUcs4();
    return std::all_of(characters.begin(), characters.end(), isNameCharacter);
}

} // namespace RuntimeText
