#pragma once

#include "fakes/fakeanswers.h"
#include "fakes/fakehandles.h"
#include "platform/binder/driver.h"

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

struct binder_transaction_data;
struct binder_write_read;
class FakeBinder;

/// A call of an object of the process under test.
struct FakeCall
{
    quint64 object = 0;
    quint32 code = 0;
    quint32 flags = 0;
    FakeParcel request;
    std::shared_ptr<FakeAnswer> answer;
    bool callerDies = false;
    std::function<FakeReply(const FakeAnswer &)> then; ///< set for a nested call
};

/// The process under test's open file of a FakeBinder: does what the kernel's driver does with
/// each command, and says so when the kernel would note a mistake in its log.
class FakeOpenFile : public Binder::Driver
{
public:
    static std::unique_ptr<Binder::Driver> open(FakeBinder *binder, const char *device);
    ~FakeOpenFile() override;

    int control(unsigned long request, void *argument) override;
    const void *map(std::size_t size) override;
    int descriptor() const override { return m_descriptor; }

    void call(const FakeCall &call);
    void onDeath(const std::shared_ptr<FakeObject> &object);
    void dropReferences(quint64 object);
    void breakDown();
    bool isIdle() const;
    void detach() { m_binder = nullptr; }

private:
    explicit FakeOpenFile(FakeBinder *binder);

    template <typename... Payload>
    static QByteArray encode(quint32 code, const Payload &...payload)
    {
        QByteArray bytes(reinterpret_cast<const char *>(&code), sizeof code);
        (bytes.append(reinterpret_cast<const char *>(&payload), int(sizeof payload)), ...);
        return bytes;
    }

    /// Something to be read; some takes effect only when it is.
    struct Work
    {
        Work() = default;
        template <typename... Payload>
        Work(quint32 code, const Payload &...payload)
            : produce([bytes = encode(code, payload...)] { return bytes; })
        {
        }

        std::function<QByteArray()> produce;
        bool endsRead = false;
        bool isError = false;    ///< nothing more is written until it has been read
        quint64 deathCookie = 0; ///< of a BR_DEAD_BINDER
    };
    struct Buffer
    {
        std::unique_ptr<char[]> memory;
        std::vector<Binder::Handle> handles;
        quint64 oneWayTarget = 0;
    };
    struct Frame ///< of the thread's transaction stack
    {
        bool outgoing = false;
        FakeCall incoming;
    };

    int writeRead(binder_write_read *exchange);
    std::size_t write(const char *bytes, std::size_t size);
    void execute(quint32 command, const char *payload);
    int read(char *bytes, std::size_t size, quint64 *consumed);
    void updateReadiness();

    void onTransaction(const binder_transaction_data &data);
    void onReply(const binder_transaction_data &data);
    void onFreeBuffer(quint64 address);
    void onRequestDeath(Binder::Handle handle, quint64 cookie);
    void onClearDeath(Binder::Handle handle, quint64 cookie);
    void onDeadBinderDone(quint64 cookie);

    void adoptObjects(const FakeTransaction &transaction);
    void answerOutgoing(const FakeReply &reply);
    void queueCall(const FakeCall &call);
    QByteArray deliverCall(const FakeCall &call);
    QByteArray deliverReply(const FakeReply &reply);
    binder_transaction_data deliver(const FakeParcel &parcel, quint64 oneWayTarget);
    void fail(quint32 code);
    void queueDeath(quint64 cookie);

    FakeBinder *m_binder;
    int m_descriptor;
    char m_mapping = 0;
    bool m_looping = false;
    bool m_calledJustNow = false; // with the same ioctl; nobody answers as fast as that
    bool m_broken = false;
    std::deque<Work> m_threadWork;
    std::deque<Work> m_processWork;
    std::vector<Frame> m_stack;
    std::map<quint64, Buffer> m_buffers;
    FakeHandles m_handles;
    FakeAnswers m_owed;
    std::set<quint64> m_knownObjects;                      // of the process under test
    std::map<quint64, std::deque<FakeCall>> m_oneWayCalls; // by object, the first under way
    std::map<quint64, bool> m_deliveredDeaths;             // value: cleared meanwhile
    std::set<quint64> m_clearedQueuedDeaths;
};
