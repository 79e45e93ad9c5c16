#pragma once

#include <QVector>

/// By which files may be opened: a user and the groups it is in. By default those of nobody in
/// particular, for whom there is what everybody may open.
struct UserRights
{
    static constexpr uint nobody = 65534; // user and group, on every system

    uint user = nobody;
    QVector<uint> groups;
};
