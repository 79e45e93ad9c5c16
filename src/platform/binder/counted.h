#pragma once

namespace Binder {

/// Counts a call on the stack while it lives.
class Counted
{
public:
    explicit Counted(int *count)
        : m_count(count)
    {
        ++*m_count;
    }
    ~Counted() { --*m_count; }
    Counted(const Counted &) = delete;
    Counted &operator=(const Counted &) = delete;

private:
    int *m_count;
};

} // namespace Binder
