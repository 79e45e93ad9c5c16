#pragma once

#include <QVariantMap>
#include <QVector>

#include <optional>

/// What the bus daemon knows of the process that made a connection: what the kernel told it at that
/// moment, and what nobody can change afterwards.
struct BusCredentials
{
    std::optional<uint> processId;
    std::optional<uint> user; ///< the effective one
    QVector<uint> groups;     ///< all of them, in no order; empty when they are not known

    /// Reads the reply of "GetConnectionCredentials". What it lacks is not known.
    static BusCredentials fromReply(const QVariantMap &reply);
};
