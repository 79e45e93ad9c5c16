#pragma once

#include "fakes/fakeobject.h"
#include "platform/binder/types.h"

#include <map>
#include <memory>

/// The references that an open file holds to objects of the runtime, with the kernel's rules: one
/// handle for each object, the smallest free number, kept while anything refers to it.
class FakeHandles
{
public:
    enum class Kind { Strong, Weak, Buffer };

    /// The handle under which the object is delivered; counted as held by the buffer.
    Binder::Handle deliver(const std::shared_ptr<FakeObject> &object);

    /// The handle 0, which can be referred to while there is a context manager.
    void offerContextManager(const std::shared_ptr<FakeObject> &object);

    void add(Binder::Handle handle, Kind kind);
    void remove(Binder::Handle handle, Kind kind);

    /// Null without a strong reference.
    std::shared_ptr<FakeObject> target(Binder::Handle handle) const;

    /// Null when the handle is not known. What requestDeath() said for it.
    quint64 *deathCookie(Binder::Handle handle);
    std::shared_ptr<FakeObject> object(Binder::Handle handle) const;

    /// The death cookie of the file's reference to this object; 0 for none.
    quint64 deathCookieOf(const std::shared_ptr<FakeObject> &object) const;

    /// Reports what is still held when the file is closed.
    void reportLeft() const;

private:
    struct Reference
    {
        std::shared_ptr<FakeObject> object;
        std::map<Kind, int> counts;
        quint64 deathCookie = 0;

        bool isUnused() const;
    };

    std::map<Binder::Handle, Reference> m_references;
    std::shared_ptr<FakeObject> m_contextManager;
};
