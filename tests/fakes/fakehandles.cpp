#include "fakes/fakehandles.h"

#include "fakes/fakebinder.h"

#include <algorithm>

bool FakeHandles::Reference::isUnused() const
{
    return std::all_of(counts.begin(), counts.end(),
                       [](const auto &entry) { return entry.second == 0; });
}

Binder::Handle FakeHandles::deliver(const std::shared_ptr<FakeObject> &object)
{
    Binder::Handle handle = 1;
    for (const auto &entry : m_references) {
        if (entry.second.object == object) {
            handle = entry.first;
            break;
        }
        if (entry.first == handle)
            ++handle;
    }
    Reference &reference = m_references[handle];
    reference.object = object;
    ++reference.counts[Kind::Buffer];
    return handle;
}

void FakeHandles::offerContextManager(const std::shared_ptr<FakeObject> &object)
{
    m_contextManager = object;
}

void FakeHandles::add(Binder::Handle handle, Kind kind)
{
    auto reference = m_references.find(handle);
    if (reference == m_references.end() && handle == Binder::ContextManagerHandle) {
        if (m_contextManager == nullptr)
            return; // the kernel says nothing
        reference = m_references.insert({handle, {m_contextManager, {}, 0}}).first;
    }
    if (reference == m_references.end()) {
        FakeBinder::violation(QStringLiteral("reference to unknown handle %1").arg(handle));
        return;
    }
    ++reference->second.counts[kind];
}

void FakeHandles::remove(Binder::Handle handle, Kind kind)
{
    const auto reference = m_references.find(handle);
    if (reference == m_references.end() || reference->second.counts[kind] == 0) {
        FakeBinder::violation(QStringLiteral("handle %1 was released too often").arg(handle));
        return;
    }
    --reference->second.counts[kind];
    if (!reference->second.isUnused())
        return;
    if (reference->second.deathCookie != 0)
        FakeBinder::violation(
            QStringLiteral("handle %1 was released before its death request").arg(handle));
    m_references.erase(reference);
}

std::shared_ptr<FakeObject> FakeHandles::target(Binder::Handle handle) const
{
    const auto reference = m_references.find(handle);
    if (reference == m_references.end())
        return nullptr;
    const auto strong = reference->second.counts.find(Kind::Strong);
    const bool held = strong != reference->second.counts.end() && strong->second > 0;
    return held ? reference->second.object : nullptr;
}

quint64 *FakeHandles::deathCookie(Binder::Handle handle)
{
    const auto reference = m_references.find(handle);
    return reference == m_references.end() ? nullptr : &reference->second.deathCookie;
}

std::shared_ptr<FakeObject> FakeHandles::object(Binder::Handle handle) const
{
    const auto reference = m_references.find(handle);
    return reference == m_references.end() ? nullptr : reference->second.object;
}

quint64 FakeHandles::deathCookieOf(const std::shared_ptr<FakeObject> &object) const
{
    for (const auto &entry : m_references) {
        if (entry.second.object == object)
            return entry.second.deathCookie;
    }
    return 0;
}

void FakeHandles::reportLeft() const
{
    for (const auto &entry : m_references)
        FakeBinder::violation(QStringLiteral("handle %1 was not released").arg(entry.first));
}
