#include "binder/objecttranslator.h"

#include "binder/client.h"
#include "binder/context.h"

#include <cstring>
#include <linux/android/binder.h>
#include <string>

namespace SimBinder {

namespace {

Strength strengthOf(std::uint32_t type)
{
    return type == BINDER_TYPE_BINDER || type == BINDER_TYPE_HANDLE ? Strength::Strong
                                                                    : Strength::Weak;
}

} // namespace

ObjectTranslator::ObjectTranslator(Client &sender, Client &receiver, Buffer &buffer,
                                   bool filesAllowed)
    : m_sender(sender)
    , m_receiver(receiver)
    , m_buffer(buffer)
    , m_filesAllowed(filesAllowed)
{
}

bool ObjectTranslator::translate(Payload &payload, std::vector<PassedFile> *files)
{
    std::uint64_t lowest = 0;
    for (const std::uint64_t offset : payload.offsets) {
        flat_binder_object object;
        const std::uint64_t dataSize = payload.data.size();
        if (offset < lowest || offset % sizeof(std::uint32_t) != 0 || dataSize < sizeof object ||
            offset > dataSize - sizeof object)
            return refuse("a message with a bad object offset");
        std::uint8_t *bytes = payload.data.data() + offset;
        std::memcpy(&object, bytes, sizeof object);

        bool ok = false;
        switch (object.hdr.type) {
        case BINDER_TYPE_BINDER:
        case BINDER_TYPE_WEAK_BINDER:
            ok = translateOwn(object);
            break;
        case BINDER_TYPE_HANDLE:
        case BINDER_TYPE_WEAK_HANDLE:
            ok = translateHandle(object);
            break;
        case BINDER_TYPE_FD:
            ok = takeFile(object, offset, payload, files);
            break;
        default:
            ok = refuse("a message with an object of unknown type");
        }
        if (!ok)
            return false;
        std::memcpy(bytes, &object, sizeof object);
        lowest = offset + sizeof object;
    }
    return true;
}

bool ObjectTranslator::refuse(const char *reason) const
{
    m_sender.context().misuse().report(m_sender.pid(), reason);
    return false;
}

bool ObjectTranslator::translateOwn(flat_binder_object &object)
{
    std::shared_ptr<Node> node = m_sender.findNode(object.binder);
    if (node == nullptr)
        node = m_sender.addNode(object);
    if (node == nullptr)
        return refuse("more objects than the simulated device keeps");
    if (node->cookie() != object.cookie)
        return refuse("a message with an object whose cookie is another than before");
    const Strength strength = strengthOf(object.hdr.type);
    const Reference *reference = m_receiver.holdNode(node, strength, &m_sender);
    if (reference == nullptr)
        return refuse("more objects than the simulated device keeps");
    m_buffer.objects.push_back({node, false, strength == Strength::Strong});
    object.hdr.type = strength == Strength::Strong ? BINDER_TYPE_HANDLE : BINDER_TYPE_WEAK_HANDLE;
    object.binder = 0;
    object.handle = reference->handle;
    object.cookie = 0;
    return true;
}

bool ObjectTranslator::translateHandle(flat_binder_object &object)
{
    const Strength strength = strengthOf(object.hdr.type);
    const Reference *held = m_sender.references().find(object.handle);
    if (held == nullptr || (strength == Strength::Strong && held->strong == 0))
        return refuse("a message with a handle that it does not have");
    const std::shared_ptr<Node> node = held->node;
    if (node->owner() == &m_receiver) {
        node->hold(strength, Holder::Owner);
        m_buffer.objects.push_back({node, true, strength == Strength::Strong});
        object.hdr.type =
            strength == Strength::Strong ? BINDER_TYPE_BINDER : BINDER_TYPE_WEAK_BINDER;
        object.binder = node->id();
        object.cookie = node->cookie();
        return true;
    }
    const Reference *reference = m_receiver.holdNode(node, strength, nullptr);
    if (reference == nullptr)
        return refuse("more objects than the simulated device keeps");
    m_buffer.objects.push_back({node, false, strength == Strength::Strong});
    object.binder = 0;
    object.handle = reference->handle;
    object.cookie = 0;
    return true;
}

bool ObjectTranslator::takeFile(flat_binder_object &object, std::uint64_t offset, Payload &payload,
                                std::vector<PassedFile> *files) const
{
    if (!m_filesAllowed)
        return refuse("a file descriptor for a receiver that accepts none");
    const std::uint32_t index = object.handle;
    if (payload.files == nullptr || index >= payload.files->size() ||
        !(*payload.files)[index].isValid())
        return refuse("a message with a bad file descriptor");
    object.binder = 0;
    const std::uint64_t position = m_buffer.offset + offset + offsetof(flat_binder_object, handle);
    files->push_back({position, std::move((*payload.files)[index])});
    return true;
}

} // namespace SimBinder
