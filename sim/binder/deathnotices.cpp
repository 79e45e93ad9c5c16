#include "binder/deathnotices.h"

#include "binder/client.h"
#include "binder/death.h"
#include "binder/node.h"
#include "binder/referencetable.h"

#include <algorithm>
#include <linux/android/binder.h>

namespace SimBinder {

namespace {

// A program that never answers may not make the router remember its cookies for ever.
constexpr std::size_t MaxCookiesToAnswer = 65536;

} // namespace

const char *DeathNotices::request(std::uint32_t handle, std::uint64_t cookie)
{
    Reference *reference = m_client.references().find(handle);
    if (reference == nullptr)
        return "BC_REQUEST_DEATH_NOTIFICATION for a handle that it does not have";
    if (reference->death != nullptr)
        return "BC_REQUEST_DEATH_NOTIFICATION for a handle that has one";
    reference->death = std::make_shared<Death>();
    reference->death->cookie = cookie;
    if (reference->node->owner() == nullptr)
        nodeDied(*reference);
    return nullptr;
}

const char *DeathNotices::clear(std::uint32_t handle, std::uint64_t cookie)
{
    Reference *reference = m_client.references().find(handle);
    if (reference == nullptr)
        return "BC_CLEAR_DEATH_NOTIFICATION for a handle that it does not have";
    if (reference->death == nullptr)
        return "BC_CLEAR_DEATH_NOTIFICATION for a handle that has none";
    if (reference->death->cookie != cookie)
        return "BC_CLEAR_DEATH_NOTIFICATION with another cookie";
    const std::shared_ptr<Death> death = std::move(reference->death);
    if (death->stage == Death::Stage::Due)
        death->stage = Death::Stage::DueThenCleared;
    else
        confirmClearing(death);
    return nullptr;
}

const char *DeathNotices::done(std::uint64_t cookie)
{
    const auto unanswered =
        std::find_if(m_unanswered.begin(), m_unanswered.end(),
                     [cookie](const auto &death) { return death->cookie == cookie; });
    const auto toAnswer = m_cookiesToAnswer.find(cookie);
    if (toAnswer != m_cookiesToAnswer.end())
        m_cookiesToAnswer.erase(toAnswer);
    else if (unanswered == m_unanswered.end())
        return "BC_DEAD_BINDER_DONE with a cookie that was not delivered";
    if (unanswered == m_unanswered.end())
        return nullptr;

    const std::shared_ptr<Death> death = *unanswered;
    m_unanswered.erase(unanswered);
    if (death->stage == Death::Stage::DueThenCleared)
        confirmClearing(death);
    else
        death->stage = Death::Stage::Told;
    return nullptr;
}

void DeathNotices::nodeDied(Reference &reference)
{
    if (reference.death == nullptr)
        return;
    reference.death->stage = Death::Stage::Due;
    m_client.queueForProcess(DeathWork{reference.death});
}

void DeathNotices::forget(Reference &reference)
{
    const std::shared_ptr<Death> death = std::move(reference.death);
    if (death == nullptr)
        return;
    m_client.withdrawDeath(death.get());
    m_unanswered.erase(std::remove(m_unanswered.begin(), m_unanswered.end(), death),
                       m_unanswered.end());
}

DeathNotices::Notice DeathNotices::read(const std::shared_ptr<Death> &death)
{
    if (death->stage == Death::Stage::Cleared)
        return {BR_CLEAR_DEATH_NOTIFICATION_DONE, death->cookie};
    m_unanswered.push_back(death);
    if (m_cookiesToAnswer.size() < MaxCookiesToAnswer)
        m_cookiesToAnswer.insert(death->cookie);
    return {BR_DEAD_BINDER, death->cookie};
}

void DeathNotices::confirmClearing(const std::shared_ptr<Death> &death)
{
    death->stage = Death::Stage::Cleared;
    if (m_client.isLooper())
        m_client.queueForThread(DeathWork{death});
    else
        m_client.queueForProcess(DeathWork{death});
}

} // namespace SimBinder
