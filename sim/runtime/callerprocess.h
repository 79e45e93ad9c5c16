#pragma once

#include "runtime/binderloop.h"

#include <QByteArray>
#include <QJsonObject>
#include <QObject>
#include <QQueue>
#include <QSocketNotifier>

#include <memory>

namespace SimRuntime {

/// The runtime's calls to other processes, made from a process of its own as they are in Android:
/// there too the service manager serves on one thread and must never wait for an answer.
///
/// Reads one JSON object per line from standard input ("id", "service", "code", "oneway", "data":
/// hex of the whole request) and answers each, in order, with one on standard output ("id",
/// "status", "reply": hex). The end of the input ends the process.
class CallerProcess : public QObject
{
    Q_OBJECT

public:
    CallerProcess(std::unique_ptr<BinderLoop> loop, int sdk);

private:
    void read();
    void next();
    void call(const QJsonObject &request, quint32 handle);
    void finish(qint32 status, const Parcel &reply);

    std::unique_ptr<BinderLoop> m_loop;
    int m_sdk;
    QSocketNotifier m_input;
    QByteArray m_received;
    QQueue<QJsonObject> m_waiting;
    bool m_busy = false;
};

} // namespace SimRuntime
