#include "config/runtimetext.h"

namespace RuntimeText {

namespace {

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

} // namespace

QString singleLine(QString text)
{
    for (int position = 0; position < text.size(); ++position) {
        if (breaksLines(text.at(position)))
            text[position] = QLatin1Char(' ');
        else if (isHalfPair(text, position))
            text[position] = QChar::ReplacementCharacter;
    }
    return text;
}

bool isUsableName(const QString &name)
{
    return !name.isEmpty() && !name.contains(QLatin1Char('/')) && singleLine(name) == name;
}

} // namespace RuntimeText
