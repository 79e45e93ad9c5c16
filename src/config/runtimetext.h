#pragma once

#include <QString>

/// Rules for text that the runtime sends, and for what else others have named, as files. It is
/// untrusted: apps choose their labels, and a broken runtime may send anything.
namespace RuntimeText {

/// Halves of surrogate pairs become U+FFFD, which is what UTF-8 makes of them: the text reads back
/// as it was written, and strict readers, of JSON for example, do not refuse a file for its sake.
QString wellFormed(QString text);

/// Fit to be one line of a file or terminal: well-formed, and every control character (line breaks,
/// the Unicode line and paragraph separators and NUL included) becomes a space, so that a value can
/// never add a line.
QString singleLine(QString text);

/// Enough of a text to know it by in a line of the log: whoever sent it may have sent a million
/// letters.
QString excerpt(const QString &text);

/// Whether a package or class name is one by Android's rules for names in apps: not empty, and of
/// letters, digits and "_", "$", ".", "-" only, beyond ASCII of anything but blanks, marks without
/// a shape and what singleLine() replaces. Such a name can stand in the name of a file, in a line,
/// and without quotes in a command, where it is one argument and no option ("-" never comes first).
bool isUsableName(const QString &name);

} // namespace RuntimeText
