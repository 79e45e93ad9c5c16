#pragma once

#include "runtime/service.h"

#include <QMap>
#include <QObject>
#include <QSet>

namespace SimRuntime {

/// The service manager: handle 0 of every process. It keeps the rules of the C program that plays
/// this part in Android 8.1 to 10 (frameworks/native, cmds/servicemanager/service_manager.c): no
/// exception words, refusals as status −1, a missing name as a plain 0, at most 127 UTF-16 units
/// in a name, and a registration that lasts until its owner's process ends.
class ContextManager : public QObject, public Service
{
    Q_OBJECT

public:
    explicit ContextManager(const ServiceEnvironment &environment, QObject *parent = nullptr);
    ~ContextManager() override;

    /// Registers a service of this process.
    void addOwn(const QString &name, quint64 objectId);

    /// A held name is not found, although it can be registered.
    void hold(const QString &name);
    void releaseName(const QString &name);

    bool isRegistered(const QString &name) const { return m_names.contains(name); }

Q_SIGNALS:
    /// Another process registered a name, anew or again.
    void added(const QString &name);

protected:
    Answer answerToPing() const override;
    Answer answerToWrongToken() const override;
    Answer answerToUnknownCode() const override;
    Answer answerToBadRequest() const override;

private:
    struct Registration
    {
        ObjectReference object;
        quint64 watch = 0;
    };

    Answer find(const QString &name) const;
    Answer addService(const Request &request);
    Answer listServices(int index) const;
    void forget(const QString &name);

    QMap<QString, Registration> m_names;
    QSet<QString> m_held;
};

} // namespace SimRuntime
