#pragma once

#include <QString>

/// Something to open, as it was named on a command line.
struct Location
{
    QString address;     ///< a file's absolute path, or a URL as it was given
    bool isFile = false; ///< on this host, whether or not it exists
};

bool operator==(const Location &left, const Location &right);

/// `argument` is a path, relative ones being looked up in `directory`, or a URL. What begins like a
/// URL ("word:") is one; a file of such a name is written "./word:...". File URLs of this host
/// become paths, so that the daemon needs no second reading of what is escaped in them.
Location locationOf(const QString &argument, const QString &directory);

/// A file's MIME type, by its name and, where that does not tell, its content. Empty for other
/// URLs: what is behind "https://example.org/a.pdf" is up to the server, and a wrong type would
/// make the app refuse what it could have opened.
QString mimeTypeOf(const Location &location);
