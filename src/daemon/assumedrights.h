#pragma once

#include <QVector>

#include <sys/types.h>

struct UserRights;

/// While it exists, this thread finds and opens files with the rights of another user, and not with
/// root's: it has the user's ids on file systems, and none of the capabilities that overrule a
/// file's mode. In all else, such as who may send it signals, it stays root. Afterwards it is as
/// before; a process that cannot get back ends.
class AssumedRights
{
public:
    explicit AssumedRights(const UserRights &rights);
    AssumedRights(const AssumedRights &) = delete;
    AssumedRights &operator=(const AssumedRights &) = delete;
    ~AssumedRights();

    /// False when the thread may not assume them. Nothing is to be opened then.
    bool areAssumed() const { return m_areAssumed; }

private:
    bool assume(const UserRights &rights);
    bool restore() const;

    uid_t m_user;
    gid_t m_group;
    QVector<gid_t> m_groups;
    int m_dumpable;
    bool m_areAssumed;
};
