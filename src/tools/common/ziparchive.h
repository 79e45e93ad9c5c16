#pragma once

#include <QByteArray>
#include <QString>

class QIODevice;

namespace ZipArchive {

/// The content of one file in a ZIP archive, stored or deflated. A null array when there is no such
/// file, when it takes more than `maxBytes`, or when the archive is damaged.
QByteArray readFile(QIODevice &archive, const QByteArray &name, int maxBytes);

} // namespace ZipArchive
