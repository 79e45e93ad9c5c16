#include "fakes/fakeobject.h"

#include <cstring>
#include <linux/android/binder.h>
#include <utility>

std::vector<quint64> FakeTransaction::sentObjects() const
{
    std::vector<quint64> ids;
    for (const quint64 offset : offsets) {
        flat_binder_object object = {};
        std::memcpy(&object, data.constData() + offset, sizeof object);
        if (object.hdr.type == BINDER_TYPE_BINDER)
            ids.push_back(object.binder);
    }
    return ids;
}

FakeReply FakeReply::data(const FakeParcel &parcel)
{
    FakeReply reply;
    reply.parcel = parcel;
    return reply;
}

FakeReply FakeReply::statusCode(Binder::Status status)
{
    FakeReply reply;
    reply.kind = Kind::Status;
    reply.status = status;
    return reply;
}

FakeReply FakeReply::dead()
{
    FakeReply reply;
    reply.kind = Kind::Dead;
    return reply;
}

FakeReply FakeReply::failed()
{
    FakeReply reply;
    reply.kind = Kind::Failed;
    return reply;
}

FakeReply FakeReply::frozen()
{
    FakeReply reply;
    reply.kind = Kind::Frozen;
    return reply;
}

FakeReply FakeReply::afterCall(quint64 object, quint32 code, const FakeParcel &request,
                               std::function<FakeReply(const FakeAnswer &)> then)
{
    FakeReply reply;
    reply.kind = Kind::Call;
    reply.calledObject = object;
    reply.calledCode = code;
    reply.parcel = request;
    reply.then = std::move(then);
    return reply;
}

void FakeObject::setReply(quint32 code, const FakeReply &reply)
{
    m_replies[code] = reply;
}

std::vector<FakeTransaction> FakeObject::takeTransactions()
{
    return std::exchange(m_transactions, {});
}

FakeReply FakeObject::answer(const FakeTransaction &transaction)
{
    m_transactions.push_back(transaction);
    const auto reply = m_replies.find(transaction.code);
    if (reply != m_replies.end())
        return reply->second;
    return m_handler ? m_handler(transaction) : FakeReply();
}
