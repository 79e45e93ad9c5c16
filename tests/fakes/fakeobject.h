#pragma once

#include "fakes/fakeparcel.h"
#include "platform/binder/types.h"

#include <functional>
#include <map>
#include <memory>
#include <vector>

/// A transaction as it was sent: the bytes are exactly those of the sender, with its own objects
/// still under their own numbers.
struct FakeTransaction
{
    quint32 code = 0;
    quint32 flags = 0;
    QByteArray data;
    std::vector<quint64> offsets;

    bool isOneWay() const { return (flags & Binder::FlagOneWay) != 0; }

    /// The numbers of the sender's own objects in it.
    std::vector<quint64> sentObjects() const;
};

/// What the process under test answered to a call that it was sent.
struct FakeAnswer
{
    int count = 0; ///< answers given; more than one is reported as a violation
    Binder::Status status = Binder::StatusOk;
    QByteArray data;
    std::vector<quint64> offsets;
};

/// What the runtime's side answers to a transaction.
struct FakeReply
{
    enum class Kind { Parcel, Status, Dead, Failed, Frozen, Call };

    Kind kind = Kind::Parcel;
    FakeParcel parcel;
    Binder::Status status = Binder::StatusOk;

    // Kind::Call: first this object of the sender is called back
    quint64 calledObject = 0;
    quint32 calledCode = 0;
    std::function<FakeReply(const FakeAnswer &)> then;

    static FakeReply data(const FakeParcel &parcel);
    static FakeReply statusCode(Binder::Status status);
    static FakeReply dead();   ///< the target dies while it serves the call
    static FakeReply failed(); ///< the driver refuses the transaction
    static FakeReply frozen();

    /// Calls an object of the sender back while serving; `then` makes the reply of its answer.
    static FakeReply afterCall(quint64 object, quint32 code, const FakeParcel &request,
                               std::function<FakeReply(const FakeAnswer &)> then);
};

/// An object of the runtime: keeps every transaction that it is sent and answers as it is told,
/// with an empty parcel unless told otherwise.
class FakeObject
{
public:
    using Handler = std::function<FakeReply(const FakeTransaction &)>;

    void setReply(quint32 code, const FakeReply &reply);
    void setHandler(const Handler &handler) { m_handler = handler; }

    const std::vector<FakeTransaction> &transactions() const { return m_transactions; }
    std::vector<FakeTransaction> takeTransactions();

    /// For the driver.
    FakeReply answer(const FakeTransaction &transaction);
    bool isDead() const { return m_dead; }
    void markDead() { m_dead = true; }

private:
    bool m_dead = false;
    Handler m_handler;
    std::map<quint32, FakeReply> m_replies;
    std::vector<FakeTransaction> m_transactions;
};
