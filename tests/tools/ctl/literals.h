#pragma once

#include <QString>

/// Tables of texts read better with "text"_q than with a macro around each.
inline QString operator""_q(const char *text, std::size_t size)
{
    return QString::fromUtf8(text, static_cast<int>(size));
}
