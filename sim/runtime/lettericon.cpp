#include "runtime/lettericon.h"

#include "runtime/png.h"

namespace SimRuntime {

namespace {

constexpr int IconSize = 192; // a launcher icon at 640 dpi
constexpr int Cell = 20;      // one dot of the letter
constexpr int Columns = 5;
constexpr int Rows = 7;
constexpr quint32 White = 0xffffffff;

// Letters of five by seven dots; each row's bits from the left.
struct Glyph
{
    char letter;
    quint8 rows[Rows];
};

constexpr Glyph Glyphs[] = {
    {'0', {14, 17, 19, 21, 25, 17, 14}}, {'1', {4, 12, 4, 4, 4, 4, 14}},
    {'2', {14, 17, 1, 2, 4, 8, 31}},     {'3', {31, 2, 4, 2, 1, 17, 14}},
    {'4', {2, 6, 10, 18, 31, 2, 2}},     {'5', {31, 16, 30, 1, 1, 17, 14}},
    {'6', {6, 8, 16, 30, 17, 17, 14}},   {'7', {31, 1, 2, 4, 8, 8, 8}},
    {'8', {14, 17, 17, 14, 17, 17, 14}}, {'9', {14, 17, 17, 15, 1, 2, 12}},
    {'A', {14, 17, 17, 31, 17, 17, 17}}, {'B', {30, 17, 17, 30, 17, 17, 30}},
    {'C', {14, 17, 16, 16, 16, 17, 14}}, {'D', {28, 18, 17, 17, 17, 18, 28}},
    {'E', {31, 16, 16, 30, 16, 16, 31}}, {'F', {31, 16, 16, 30, 16, 16, 16}},
    {'G', {14, 17, 16, 23, 17, 17, 15}}, {'H', {17, 17, 17, 31, 17, 17, 17}},
    {'I', {14, 4, 4, 4, 4, 4, 14}},      {'J', {7, 2, 2, 2, 2, 18, 12}},
    {'K', {17, 18, 20, 24, 20, 18, 17}}, {'L', {16, 16, 16, 16, 16, 16, 31}},
    {'M', {17, 27, 21, 21, 17, 17, 17}}, {'N', {17, 17, 25, 21, 19, 17, 17}},
    {'O', {14, 17, 17, 17, 17, 17, 14}}, {'P', {30, 17, 17, 30, 16, 16, 16}},
    {'Q', {14, 17, 17, 17, 21, 18, 13}}, {'R', {30, 17, 17, 30, 20, 18, 17}},
    {'S', {15, 16, 16, 14, 1, 1, 30}},   {'T', {31, 4, 4, 4, 4, 4, 4}},
    {'U', {17, 17, 17, 17, 17, 17, 14}}, {'V', {17, 17, 17, 17, 17, 10, 4}},
    {'W', {17, 17, 17, 21, 21, 21, 10}}, {'X', {17, 17, 10, 4, 10, 17, 17}},
    {'Y', {17, 17, 17, 10, 4, 4, 4}},    {'Z', {31, 1, 2, 4, 8, 16, 31}},
};

constexpr Glyph Ring = {'\0', {14, 31, 27, 17, 27, 31, 14}};

constexpr quint32 Colours[] = {0xffc2185b, 0xff7b1fa2, 0xff303f9f, 0xff0277bd,
                               0xff00796b, 0xff558b2f, 0xffe65100, 0xff5d4037};

const Glyph &glyphOf(const QString &label)
{
    // Accents are taken off: "É" is drawn as "E".
    const QString plain = label.trimmed().normalized(QString::NormalizationForm_KD).toUpper();
    for (const Glyph &glyph : Glyphs) {
        if (plain.startsWith(QLatin1Char(glyph.letter)))
            return glyph;
    }
    return Ring;
}

quint32 colourOf(const QString &label)
{
    quint32 sum = 0;
    for (const QChar unit : label)
        sum = sum * 31 + unit.unicode();
    return Colours[sum % (sizeof Colours / sizeof *Colours)];
}

} // namespace

QByteArray letterIcon(const QString &label)
{
    constexpr int Left = (IconSize - Columns * Cell) / 2;
    constexpr int Top = (IconSize - Rows * Cell) / 2;
    const Glyph &glyph = glyphOf(label);
    QVector<quint32> pixels(IconSize * IconSize, colourOf(label));
    for (int y = 0; y < Rows * Cell; ++y) {
        for (int x = 0; x < Columns * Cell; ++x) {
            if ((glyph.rows[y / Cell] >> (Columns - 1 - x / Cell) & 1) != 0)
                pixels[(Top + y) * IconSize + Left + x] = White;
        }
    }
    return encodePng(IconSize, pixels);
}

} // namespace SimRuntime
