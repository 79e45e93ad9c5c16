#include "fakes/fakebinder.h"
#include "fakes/fakeopenfile.h"
#include "fakes/pointer.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <linux/android/binder.h>
#include <utility>

namespace {

quint64 address(const void *pointer)
{
    return reinterpret_cast<std::uintptr_t>(pointer);
}

FakeTransaction sentTransaction(const binder_transaction_data &data)
{
    const auto *offsets = pointer<binder_size_t>(data.data.ptr.offsets);
    FakeTransaction transaction;
    transaction.code = data.code;
    transaction.flags = data.flags;
    transaction.data =
        QByteArray(pointer<char>(data.data.ptr.buffer), static_cast<int>(data.data_size));
    transaction.offsets.assign(offsets, offsets + data.offsets_size / sizeof *offsets);
    return transaction;
}

bool hasValidOffsets(const FakeTransaction &transaction)
{
    quint64 free = 0;
    for (const quint64 offset : transaction.offsets) {
        if (offset < free || offset % 4 != 0 ||
            offset + sizeof(flat_binder_object) > static_cast<quint64>(transaction.data.size())) {
            return false;
        }
        free = offset + sizeof(flat_binder_object);
    }
    return true;
}

} // namespace

void FakeOpenFile::onTransaction(const binder_transaction_data &data)
{
    const Binder::Handle handle = data.target.handle;
    const std::shared_ptr<FakeObject> target = handle == Binder::ContextManagerHandle
                                                   ? m_binder->m_contextManager
                                                   : m_handles.target(handle);
    const FakeTransaction transaction = sentTransaction(data);
    if ((target == nullptr && handle != Binder::ContextManagerHandle) ||
        !hasValidOffsets(transaction)) {
        FakeBinder::violation(QStringLiteral("malformed transaction to handle %1").arg(handle));
        fail(BR_FAILED_REPLY);
        return;
    }
    if (target == nullptr || target->isDead()) {
        fail(BR_DEAD_REPLY);
        return;
    }

    const FakeReply reply = target->answer(transaction);
    if (reply.kind == FakeReply::Kind::Failed || reply.kind == FakeReply::Kind::Frozen) {
        fail(reply.kind == FakeReply::Kind::Failed ? BR_FAILED_REPLY : BR_FROZEN_REPLY);
        return;
    }
    adoptObjects(transaction);
    m_threadWork.push_back({BR_TRANSACTION_COMPLETE});
    if (!transaction.isOneWay()) {
        m_stack.push_back({true, {}});
        m_calledJustNow = true;
        answerOutgoing(reply);
    }
}

void FakeOpenFile::answerOutgoing(const FakeReply &reply)
{
    Work work;
    switch (reply.kind) {
    case FakeReply::Kind::Call: {
        FakeCall call;
        call.object = reply.calledObject;
        call.code = reply.calledCode;
        call.request = reply.parcel;
        call.answer = std::make_shared<FakeAnswer>();
        call.then = reply.then;
        work.produce = [this, call] { return deliverCall(call); };
        break;
    }
    case FakeReply::Kind::Parcel:
    case FakeReply::Kind::Status:
        work.produce = [this, reply] { return deliverReply(reply); };
        break;
    default:
        work.produce = [this] {
            m_stack.pop_back();
            return encode(BR_DEAD_REPLY);
        };
    }
    work.endsRead = true;
    m_threadWork.push_back(work);
}

QByteArray FakeOpenFile::deliverReply(const FakeReply &reply)
{
    m_stack.pop_back();
    const bool isStatus = reply.kind == FakeReply::Kind::Status;
    binder_transaction_data data =
        deliver(isStatus ? FakeParcel().int32(reply.status) : reply.parcel, 0);
    data.flags = isStatus ? TF_STATUS_CODE : 0;
    return encode(BR_REPLY, data);
}

QByteArray FakeOpenFile::deliverCall(const FakeCall &call)
{
    const bool isOneWay = (call.flags & TF_ONE_WAY) != 0;
    if (!isOneWay)
        m_stack.push_back({false, call});
    binder_transaction_data data = deliver(call.request, isOneWay ? call.object : 0);
    data.target.ptr = call.object;
    data.cookie = call.object;
    data.code = call.code;
    data.flags = call.flags;
    return encode(BR_TRANSACTION, data);
}

binder_transaction_data FakeOpenFile::deliver(const FakeParcel &parcel, quint64 oneWayTarget)
{
    const auto size = static_cast<std::size_t>(parcel.data().size());
    const std::size_t offsetsAt = (size + 7) / 8 * 8;
    const std::size_t offsetsSize = parcel.offsets().size() * sizeof(binder_size_t);

    Buffer buffer;
    buffer.memory = std::make_unique<char[]>(std::max<std::size_t>(offsetsAt + offsetsSize, 1));
    buffer.oneWayTarget = oneWayTarget;
    char *memory = buffer.memory.get();
    std::memcpy(memory, parcel.data().constData(), size);
    if (offsetsSize > 0)
        std::memcpy(memory + offsetsAt, parcel.offsets().data(), offsetsSize);
    for (const auto &object : parcel.objects()) {
        const quint64 handle = m_handles.deliver(object.second);
        std::memcpy(memory + object.first + offsetof(flat_binder_object, binder), &handle,
                    sizeof handle);
        buffer.handles.push_back(static_cast<Binder::Handle>(handle));
    }
    m_buffers[address(memory)] = std::move(buffer);

    binder_transaction_data data = {};
    data.data_size = size;
    data.offsets_size = offsetsSize;
    data.data.ptr.buffer = address(memory);
    data.data.ptr.offsets = address(memory + offsetsAt);
    return data;
}

void FakeOpenFile::onReply(const binder_transaction_data &data)
{
    if (m_stack.empty() || m_stack.back().outgoing) {
        FakeBinder::violation(QStringLiteral("reply without a call"));
        fail(BR_FAILED_REPLY);
        return;
    }
    const FakeCall call = m_stack.back().incoming;
    m_stack.pop_back();

    const FakeTransaction reply = sentTransaction(data);
    ++call.answer->count;
    if ((data.flags & TF_STATUS_CODE) != 0) {
        std::memcpy(&call.answer->status, reply.data.constData(), sizeof call.answer->status);
    } else {
        call.answer->data = reply.data;
        call.answer->offsets = reply.offsets;
        adoptObjects(reply);
    }
    m_threadWork.push_back({BR_TRANSACTION_COMPLETE});
    m_threadWork.back().isError = call.callerDies;
    if (call.then)
        answerOutgoing(call.then(*call.answer));
}

void FakeOpenFile::onFreeBuffer(quint64 address)
{
    const auto found = m_buffers.find(address);
    if (found == m_buffers.end()) {
        FakeBinder::violation(QStringLiteral("freed what is not a buffer"));
        return;
    }
    const Buffer buffer = std::move(found->second);
    m_buffers.erase(found);
    for (const Binder::Handle handle : buffer.handles)
        m_handles.remove(handle, FakeHandles::Kind::Buffer);
    if (buffer.oneWayTarget == 0)
        return;
    std::deque<FakeCall> &waiting = m_oneWayCalls[buffer.oneWayTarget];
    waiting.pop_front();
    if (!waiting.empty())
        queueCall(waiting.front());
}

void FakeOpenFile::call(const FakeCall &call)
{
    if (!m_looping)
        FakeBinder::violation(QStringLiteral("the thread has not said that it takes calls"));
    bool isNext = true;
    if ((call.flags & TF_ONE_WAY) != 0) { // one at a time for each object
        std::deque<FakeCall> &waiting = m_oneWayCalls[call.object];
        waiting.push_back(call);
        isNext = waiting.size() == 1;
    }
    if (isNext)
        queueCall(call);
    updateReadiness();
}

void FakeOpenFile::queueCall(const FakeCall &call)
{
    Work work;
    work.produce = [this, call] { return deliverCall(call); };
    work.endsRead = true;
    m_processWork.push_back(work);
}

void FakeOpenFile::adoptObjects(const FakeTransaction &transaction)
{
    for (const quint64 object : transaction.sentObjects()) {
        if (!m_knownObjects.insert(object).second)
            continue;
        const binder_ptr_cookie pair = {object, object};
        m_threadWork.push_back({BR_INCREFS, pair});
        m_threadWork.push_back({BR_ACQUIRE, pair});
        m_owed.expect(BC_INCREFS_DONE, object);
        m_owed.expect(BC_ACQUIRE_DONE, object);
    }
}

void FakeOpenFile::dropReferences(quint64 object)
{
    const binder_ptr_cookie pair = {object, object};
    m_processWork.push_back({BR_RELEASE, pair});
    m_processWork.push_back({BR_DECREFS, pair});
    m_knownObjects.erase(object);
    updateReadiness();
}

void FakeOpenFile::fail(quint32 code)
{
    m_threadWork.push_back({code});
    m_threadWork.back().isError = true;
}

void FakeOpenFile::onRequestDeath(Binder::Handle handle, quint64 cookie)
{
    quint64 *present = m_handles.deathCookie(handle);
    if (present == nullptr || *present != 0) {
        FakeBinder::violation(QStringLiteral("death request refused for handle %1").arg(handle));
        return;
    }
    *present = cookie;
    if (m_handles.object(handle)->isDead())
        queueDeath(cookie);
}

void FakeOpenFile::onClearDeath(Binder::Handle handle, quint64 cookie)
{
    quint64 *present = m_handles.deathCookie(handle);
    if (present == nullptr || *present != cookie) {
        FakeBinder::violation(QStringLiteral("nothing to clear for handle %1").arg(handle));
        return;
    }
    *present = 0;
    const bool queued =
        std::any_of(m_processWork.begin(), m_processWork.end(),
                    [cookie](const Work &work) { return work.deathCookie == cookie; });
    if (const auto delivered = m_deliveredDeaths.find(cookie); delivered != m_deliveredDeaths.end())
        delivered->second = true;
    else if (queued)
        m_clearedQueuedDeaths.insert(cookie);
    else
        m_threadWork.push_back({BR_CLEAR_DEATH_NOTIFICATION_DONE, cookie});
}

void FakeOpenFile::onDeadBinderDone(quint64 cookie)
{
    const auto delivered = m_deliveredDeaths.find(cookie);
    if (delivered == m_deliveredDeaths.end()) {
        FakeBinder::violation(QStringLiteral("confirmed a death that was not reported"));
        return;
    }
    if (delivered->second)
        m_threadWork.push_back({BR_CLEAR_DEATH_NOTIFICATION_DONE, cookie});
    m_deliveredDeaths.erase(delivered);
}

void FakeOpenFile::onDeath(const std::shared_ptr<FakeObject> &object)
{
    if (const quint64 cookie = m_handles.deathCookieOf(object))
        queueDeath(cookie);
    updateReadiness();
}

void FakeOpenFile::queueDeath(quint64 cookie)
{
    Work work;
    work.produce = [this, cookie] {
        m_deliveredDeaths[cookie] = m_clearedQueuedDeaths.erase(cookie) > 0;
        return encode(BR_DEAD_BINDER, cookie);
    };
    work.endsRead = true;
    work.deathCookie = cookie;
    m_processWork.push_back(work);
}
