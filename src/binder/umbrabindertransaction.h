#pragma once

#include "binder/binderparcel.h"

#include <QObject>

#include <memory>

namespace Binder {
class Client;
class IncomingReply;
class OutgoingRequest;
} // namespace Binder

/// One outgoing call: fill request() in the order of the call's fields, execute(), read reply().
class UmbraBinderTransaction : public QObject
{
    Q_OBJECT

public:
    UmbraBinderTransaction(std::shared_ptr<Binder::Client> client, quint32 code, bool oneWay,
                           QObject *parent = nullptr);
    ~UmbraBinderTransaction() override;

    BinderParcel &request() { return m_requestParcel; }

    /// Sends the request; a two-way call blocks until the runtime answers. Returns 0 on success,
    /// the binder library's status on failure, and −1, with nothing sent, when the connection has
    /// gone down or the call has been made already.
    qint32 execute();

    /// Empty, so that every read gives its default, until execute() has received a reply.
    BinderParcel &reply() { return m_replyParcel; }

public Q_SLOTS:
    /// Forgets the client when the connection goes down.
    void onConnectionChanged(bool connected);

private:
    std::shared_ptr<Binder::Client> m_client;
    quint32 m_code;
    bool m_oneWay;
    bool m_executed = false;
    std::shared_ptr<Binder::OutgoingRequest> m_request;
    std::unique_ptr<Binder::IncomingReply> m_reply;
    BinderParcel m_requestParcel;
    BinderParcel m_replyParcel;
};
