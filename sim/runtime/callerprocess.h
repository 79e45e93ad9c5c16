#pragma once

#include "runtime/binderloop.h"
#include "runtime/options.h"

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
/// hex of the whole request; for floods "count", "objects", "files"; or "mayfly" and "count", see
/// Caller) and answers each, in order, with one on standard output ("id",
/// "status", "reply": hex). The end of the input ends the process.
class CallerProcess : public QObject
{
    Q_OBJECT

public:
    CallerProcess(std::unique_ptr<BinderLoop> loop, const Options &options);

private:
    void read();
    void next();
    void call(const QJsonObject &request, quint32 handle);
    void flood(quint32 handle, quint32 code, const Parcel &parcel, int count, qint32 status);
    void hatch(const QString &name, int count);
    Parcel parcelOf(const QJsonObject &request);
    void finish(qint32 status, const Parcel &reply);

    std::unique_ptr<BinderLoop> m_loop;
    std::unique_ptr<BinderLoop> m_mayfly; ///< the newest
    Options m_options;
    QSocketNotifier m_input;
    QByteArray m_received;
    QQueue<QJsonObject> m_waiting;
    bool m_busy = false;
};

} // namespace SimRuntime
