#pragma once

#include "daemon/requestsize.h"

#include <deque>
#include <utility>

/// How much may wait for the runtime in one list. Every program of the host can make requests, and
/// a runtime that does not start would have them all wait, so there is a limit that no user gets
/// to; requests beyond it are not accepted, nor is a single one that is larger.
class WaitingLimit
{
public:
    static constexpr int MaxRequests = 4096;
    static constexpr qint64 MaxBytes = qint64(16) * 1024 * 1024;

    /// Whether a request of this size would be accepted.
    bool hasRoomFor(qint64 bytes) const
    {
        return m_requests < MaxRequests && m_bytes + bytes <= MaxBytes;
    }

protected:
    /// False when there is no room, with one warning until the list is empty again.
    bool enter(qint64 bytes);
    void enterAgain(qint64 bytes);
    void leave(qint64 bytes);

private:
    int m_requests = 0;
    qint64 m_bytes = 0;
    bool m_fullTold = false;
};

/// Requests that wait for the runtime, oldest first. They live in memory only.
template <typename Request>
class WaitingList : public WaitingLimit
{
public:
    bool isEmpty() const { return m_requests.empty(); }
    int size() const { return static_cast<int>(m_requests.size()); }

    /// False, with a warning now and then, when the request is not accepted.
    bool add(const Request &request)
    {
        if (!enter(requestSize(request)))
            return false;
        m_requests.push_back(request);
        return true;
    }

    Request takeFirst()
    {
        Request request = std::move(m_requests.front());
        m_requests.pop_front();
        leave(requestSize(request));
        return request;
    }

    /// Undoes takeFirst(), also when there is no room any more.
    void putBack(const Request &request)
    {
        enterAgain(requestSize(request));
        m_requests.push_front(request);
    }

private:
    std::deque<Request> m_requests;
};
