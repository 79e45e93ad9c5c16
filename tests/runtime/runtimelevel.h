#pragma once

#include "fakes/fakeparcel.h"

#include <QString>
#include <QStringList>

#include <limits>

/// The runtime's SDK level under test and what depends on it.
namespace RuntimeLevel {

inline int sdk()
{
    return qEnvironmentVariableIntValue("TEST_SDK_LEVEL");
}

/// The value for the level under test: 27, 28, 29, any other.
inline quint32 code(quint32 at27, quint32 at28, quint32 at29, quint32 other)
{
    switch (sdk()) {
    case 27:
        return at27;
    case 28:
        return at28;
    case 29:
        return at29;
    default:
        return other;
    }
}

/// The critical lines for one call whose code depends on the level.
inline QStringList levelLines()
{
    if (sdk() >= 27 && sdk() <= 29)
        return {};
    return {QStringLiteral("Unsupported android SDK version!")};
}

inline FakeParcel token(const char *descriptor)
{
    const QString name = QString::fromLatin1(descriptor);
    if (sdk() < 29)
        return FakeParcel().token(name, {0x00400000});
    return FakeParcel().token(name, {std::numeric_limits<qint32>::min(), -1});
}

} // namespace RuntimeLevel
