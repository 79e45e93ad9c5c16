#include "launcher/publicfile.h"

#include <QFile>
#include <QSaveFile>

#include <climits>

namespace PublicFile {

namespace {

constexpr QFileDevice::Permissions ReadableByAll = QFileDevice::ReadOwner |
                                                   QFileDevice::WriteOwner |
                                                   QFileDevice::ReadGroup | QFileDevice::ReadOther;

/// What QSaveFile appends to the name of a file for its temporary file.
constexpr int TemporarySuffixBytes = sizeof(".XXXXXX") - 1;

} // namespace

WriteResult write(const QString &path, const QByteArray &content)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return WriteResult::CannotOpen;
    // commit() alone would not notice a write that fails only when the buffer is flushed.
    if (!file.setPermissions(ReadableByAll) || file.write(content) != content.size() ||
        !file.flush())
        file.cancelWriting();
    return file.commit() ? WriteResult::Written : WriteResult::CannotWrite;
}

bool hasContent(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.size() == content.size() &&
           file.readAll() == content;
}

bool writeIfChanged(const QString &path, const QByteArray &content)
{
    return hasContent(path, content) || write(path, content) == WriteResult::Written;
}

int maxNameBytes()
{
    return NAME_MAX - TemporarySuffixBytes;
}

} // namespace PublicFile
