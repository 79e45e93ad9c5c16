#include "tools/ctl/texttable.h"

#include "config/runtimetext.h"

#include <QLocale>

#include <algorithm>
#include <cwchar>

namespace TextTable {

int width(const QString &text)
{
    int columns = 0;
    const QVector<uint> characters = text.toUcs4();
    for (const uint character : characters) {
        const int known = wcwidth(static_cast<wchar_t>(character));
        columns += known < 0 ? 1 : known; // a locale that does not know it shows something
    }
    return columns;
}

QStringList lines(const QVector<QStringList> &rows)
{
    QVector<QStringList> cells;
    QVector<int> widths;
    for (const QStringList &row : rows) {
        QStringList clean;
        for (const QString &cell : row)
            clean.append(RuntimeText::singleLine(cell));
        cells.append(clean);
        widths.resize(std::max(widths.size(), row.size()));
        for (int column = 0; column < clean.size(); ++column)
            widths[column] = std::max(widths.at(column), width(clean.at(column)));
    }

    QStringList texts;
    for (const QStringList &row : cells) {
        QString line;
        for (int column = 0; column < row.size(); ++column) {
            line += row.at(column);
            if (column + 1 < row.size())
                line += QString(widths.at(column) - width(row.at(column)) + 2, QLatin1Char(' '));
        }
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        texts.append(line);
    }
    return texts;
}

QString bytes(quint64 number)
{
    constexpr quint64 Largest = Q_UINT64_C(0x7fffffffffffffff); // what QLocale can format
    return QLocale::c().formattedDataSize(static_cast<qint64>(std::min(number, Largest)), 1,
                                          QLocale::DataSizeSIFormat);
}

} // namespace TextTable
