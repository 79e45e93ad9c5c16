#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// Whole files that every user of the host may read (mode 0644, whatever the umask). They are
/// replaced atomically: when writing fails the old file stays as it was. Nothing is logged here.
namespace PublicFile {

enum class WriteResult {
    Written,
    CannotOpen, ///< no temporary file beside the target: directory missing, read-only, ...
    CannotWrite ///< disk full, I/O error, target not replaceable, ...
};

WriteResult write(const QString &path, const QByteArray &content);

/// What is in the file; nothing when it cannot be read.
std::optional<QByteArray> read(const QString &path);

/// Whether the file can be read and holds exactly `content`.
bool hasContent(const QString &path, const QByteArray &content);

/// Writes unless the file has the content already; false when writing failed.
bool writeIfChanged(const QString &path, const QByteArray &content);

/// The name of the file for which one of this name was being written, as an interrupted write()
/// leaves it; the name itself when it does not look like that.
QString withoutTemporarySuffix(const QString &name);

/// The longest name, in bytes, of a file that write() can replace: beside the file a temporary
/// one with a longer name must fit.
int maxNameBytes();

} // namespace PublicFile
