#include "daemon/assumedrights.h"

#include "daemon/userrights.h"

#include <QtGlobal>

#include <sys/fsuid.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// The numbers of the calls for groups of 32 bits. The C library's function would set the groups of
// all threads.
#ifdef SYS_setgroups32
constexpr long setGroupsCall = SYS_setgroups32;
#else
constexpr long setGroupsCall = SYS_setgroups;
#endif

constexpr uid_t noUser = static_cast<uid_t>(-1);
constexpr gid_t noGroup = static_cast<gid_t>(-1);

// setfsuid() and setfsgid() report no failure: they return what was before. An impossible number
// changes nothing, and so asks for the present one.
uid_t fileUser()
{
    return static_cast<uid_t>(::setfsuid(noUser));
}

gid_t fileGroup()
{
    return static_cast<gid_t>(::setfsgid(noGroup));
}

bool setFileUser(uid_t user)
{
    ::setfsuid(user);
    return fileUser() == user;
}

bool setFileGroup(gid_t group)
{
    ::setfsgid(group);
    return fileGroup() == group;
}

bool setGroups(const QVector<gid_t> &groups)
{
    return ::syscall(setGroupsCall, static_cast<size_t>(groups.size()), groups.constData()) == 0;
}

QVector<gid_t> groupsOfThread()
{
    QVector<gid_t> groups(qMax(::getgroups(0, nullptr), 0));
    groups.resize(qMax(::getgroups(groups.size(), groups.data()), 0));
    return groups;
}

} // namespace

AssumedRights::AssumedRights(const UserRights &rights)
    : m_user(fileUser())
    , m_group(fileGroup())
    , m_groups(groupsOfThread())
    , m_dumpable(::prctl(PR_GET_DUMPABLE))
    , m_areAssumed(assume(rights))
{
}

AssumedRights::~AssumedRights()
{
    if (!restore())
        qFatal("Cannot take back the rights of another user");
}

bool AssumedRights::assume(const UserRights &rights)
{
    // Which of the groups comes first makes no difference to what may be opened.
    const gid_t group = rights.groups.isEmpty() ? UserRights::nobody : rights.groups.first();
    // The user comes last: without root's, the other two would be refused.
    return setGroups(rights.groups) && setFileGroup(group) && setFileUser(rights.user);
}

bool AssumedRights::restore() const
{
    if (!setFileUser(m_user) || !setFileGroup(m_group))
        return false;
    // Who is not allowed to set groups has got this far with those from before.
    if (groupsOfThread() != m_groups && !setGroups(m_groups))
        return false;
    // The kernel has taken the process for one that has seen a secret of the user's and must not
    // leave it in a core file. It has not, and a crash next month should leave one.
    if (m_dumpable == 1)
        ::prctl(PR_SET_DUMPABLE, m_dumpable);
    return true;
}
