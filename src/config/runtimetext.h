#pragma once

#include <QString>

/// Rules for text that the runtime sends, and for what else others have named, as files. It is
/// untrusted: apps choose their labels, and a broken runtime may send anything.
namespace RuntimeText {

/// Fit to be one line of a file or terminal: every control character (line breaks, the Unicode line
/// and paragraph separators and NUL included) becomes a space, so that a value can never add a
/// line. Halves of surrogate pairs become U+FFFD, which is what UTF-8 makes of them, so that the
/// value reads back as it was set.
QString singleLine(QString text);

/// Whether a package or class name can stand in file names and in lines: it is not empty and has
/// neither "/" nor any character that singleLine() replaces.
bool isUsableName(const QString &name);

} // namespace RuntimeText
