#pragma once

#include "runtime/controlserver.h"
#include "runtime/faults.h"
#include "runtime/options.h"
#include "runtime/recorder.h"
#include "runtime/system.h"

#include <QObject>

#include <memory>

namespace SimRuntime {

/// The whole program: one System at a time, and what outlives it (record, faults, control
/// socket).
class Runtime : public QObject
{
    Q_OBJECT

public:
    explicit Runtime(const Options &options);
    ~Runtime() override;

    /// False, with a line that says why, on failure.
    bool start();

private:
    bool boot();
    void restart();
    void onCommand(const QJsonObject &command, const ControlServer::Reply &reply);

    void apps(const QJsonObject &command, const ControlServer::Reply &reply);
    void state(const QJsonObject &command, const ControlServer::Reply &reply);
    void announce(const QJsonObject &command, const ControlServer::Reply &reply);
    void call(const QJsonObject &command, const ControlServer::Reply &reply);
    void observer(const QJsonObject &command, const ControlServer::Reply &reply);
    void flood(const QJsonObject &command, const ControlServer::Reply &reply);
    void mayflies(const QJsonObject &command, const ControlServer::Reply &reply);
    Parcel requestOf(const QJsonObject &command) const;
    void fault(const QJsonObject &command, const ControlServer::Reply &reply);
    void hold(const QJsonObject &command, const ControlServer::Reply &reply);
    void release(const QJsonObject &command, const ControlServer::Reply &reply);
    void closeApp(const QJsonObject &command, const ControlServer::Reply &reply);
    void restartOnCommand(const QJsonObject &command, const ControlServer::Reply &reply);
    void quit(const QJsonObject &command, const ControlServer::Reply &reply);

    Options m_options;
    Recorder m_recorder;
    Faults m_faults;
    std::unique_ptr<System> m_system;
    ControlServer m_control;
};

} // namespace SimRuntime
