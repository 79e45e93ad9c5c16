#pragma once

#include <QString>

#include <optional>

/// Who owns a process, as its directory below "/proc" has it: its effective user and group. That
/// holds for processes that are not dumpable too; only what is inside the directory becomes root's
/// then.
struct ProcessOwner
{
    uint userId = 0;
    uint groupId = 0;
    QString user; ///< names, empty for a number without one
    QString group;

    /// Nothing when there is no such process.
    static std::optional<ProcessOwner> of(uint processId);
};
