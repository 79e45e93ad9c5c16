#include "daemon/processowner.h"

#include <QFileInfo>

std::optional<ProcessOwner> ProcessOwner::of(uint processId)
{
    // One look serves all four: QFileInfo keeps what it has seen. A second look could be at the
    // next process with this number.
    const QFileInfo process(QStringLiteral("/proc/%1").arg(processId));
    if (!process.exists())
        return std::nullopt;
    return ProcessOwner{process.ownerId(), process.groupId(), process.owner(), process.group()};
}
