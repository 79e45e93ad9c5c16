#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/// Text for people, in columns.
namespace TextTable {

/// The number of terminal columns that a text takes: wide characters take two, marks that stand
/// above others none.
int width(const QString &text);

/// One line per row: columns as wide as their widest cell and two spaces apart, no space at the
/// end of a line. Control characters in cells become spaces, so that no cell can break its line or
/// command the terminal.
QStringList lines(const QVector<QStringList> &rows);

/// A number of bytes with three digits at most, e.g. "17 kB" or "1.4 GB".
QString bytes(quint64 number);

} // namespace TextTable
