#pragma once

#include "binder/transaction.h"
#include "binder/uniquefd.h"

#include <cstdint>
#include <vector>

struct flat_binder_object;

namespace SimBinder {

class Client;

/// The part of a message that has meaning only for the sender, and what came with it.
struct Payload
{
    std::vector<std::uint8_t> data;
    std::vector<std::uint64_t> offsets;
    std::vector<UniqueFd> *files = nullptr; ///< of the whole frame; file objects hold indexes
};

/// Rewrites the objects in a message's data from the sender's numbers to the receiver's: own
/// objects become handles, handles other handles or, at home, own objects again, files are put
/// aside for delivery. Every object is then held by the buffer.
class ObjectTranslator
{
public:
    ObjectTranslator(Client &sender, Client &receiver, Buffer &buffer, bool filesAllowed);

    /// False at the first object that is wrong: what was translated is held by the buffer, the
    /// reason is noted as misuse.
    bool translate(Payload &payload, std::vector<PassedFile> *files);

private:
    bool refuse(const char *reason) const;
    bool translateOwn(flat_binder_object &object);
    bool translateHandle(flat_binder_object &object);
    bool takeFile(flat_binder_object &object, std::uint64_t offset, Payload &payload,
                  std::vector<PassedFile> *files) const;

    Client &m_sender;
    Client &m_receiver;
    Buffer &m_buffer;
    bool m_filesAllowed;
};

} // namespace SimBinder
