#pragma once

#include "platform/binder/driver.h"
#include "sim/returns.h"

#include <QByteArray>
#include <QDataStream>

#include <memory>

enum class PartyRequest : quint32 { Open, Map, Control, Exchange, Poll, MakeFile, ReadFile, Close };

/// The inside of a Party: a process that uses the driver as the test tells it to.
class PartyProcess
{
public:
    /// Serves requests from the socket until the test closes it. Then the process is to end.
    static void serve(int socket);

    /// Framing of what goes over that socket, on both sides. False when the other side has gone.
    static bool writeFrame(int socket, const QByteArray &frame);
    static bool readFrame(int socket, QByteArray *frame);

private:
    void perform(PartyRequest request, QDataStream &in, QDataStream &out);
    void open(QDataStream &in, QDataStream &out);
    void map(QDataStream &in, QDataStream &out);
    void control(QDataStream &in, QDataStream &out);
    void exchange(QDataStream &in, QDataStream &out);

    std::unique_ptr<Binder::Driver> m_driver;
};
