#include "tools/ctl/regularfile.h"

#include <QFile>
#include <QFileInfo>

namespace {

/// Icons are the largest files that the daemon writes: at most what one message of the runtime
/// holds.
constexpr qint64 MaxBytes = Q_INT64_C(8) * 1024 * 1024;

} // namespace

RegularFile RegularFile::read(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return {info.isSymLink() ? State::Unusable : State::Missing, QByteArray()};
    if (!info.isFile() || info.size() > MaxBytes)
        return {State::Unusable, QByteArray()};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {State::Unreadable, QByteArray()};
    return {State::Read, file.read(MaxBytes)};
}
