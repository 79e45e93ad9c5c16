#include "sim/commands.h"

Message &Message::object(quint32 type, quint64 number, quint64 cookie, quint32 flags)
{
    flat_binder_object object = {};
    object.hdr.type = type;
    object.flags = flags;
    object.binder = number;
    object.cookie = cookie;
    offsets.append(static_cast<quint64>(data.size()));
    data.append(reinterpret_cast<const char *>(&object), sizeof object);
    return *this;
}

Commands &Commands::call(quint32 handle, quint32 code, const Message &sent, quint32 flags)
{
    return message(BC_TRANSACTION, handle, code, flags, sent);
}

Commands &Commands::oneWay(quint32 handle, quint32 code, const Message &sent)
{
    return message(BC_TRANSACTION, handle, code, TF_ONE_WAY, sent);
}

Commands &Commands::reply(const Message &sent, quint32 flags)
{
    return message(BC_REPLY, 0, 0, flags, sent);
}

Commands &Commands::incRefsDone(quint64 id)
{
    return add(BC_INCREFS_DONE, binder_ptr_cookie{id, Message::cookieOf(id)});
}

Commands &Commands::acquireDone(quint64 id)
{
    return add(BC_ACQUIRE_DONE, binder_ptr_cookie{id, Message::cookieOf(id)});
}

Commands &Commands::requestDeath(quint32 handle, quint64 cookie)
{
    return add(BC_REQUEST_DEATH_NOTIFICATION, binder_handle_cookie{handle, cookie});
}

Commands &Commands::clearDeath(quint32 handle, quint64 cookie)
{
    return add(BC_CLEAR_DEATH_NOTIFICATION, binder_handle_cookie{handle, cookie});
}

Commands &Commands::enterLooper()
{
    const quint32 code = BC_ENTER_LOOPER;
    m_bytes.append(reinterpret_cast<const char *>(&code), sizeof code);
    return *this;
}

Commands &Commands::message(quint32 command, quint32 handle, quint32 code, quint32 flags,
                            const Message &sent)
{
    binder_transaction_data data = {};
    data.target.handle = handle;
    data.code = code;
    data.flags = flags;
    data.data_size = static_cast<binder_size_t>(sent.data.size());
    data.offsets_size = static_cast<binder_size_t>(sent.offsets.size()) * sizeof(binder_size_t);
    m_messages.append(sent);
    return add(command, data);
}
