#pragma once

#include "runtime/binderloop.h"

#include <QByteArray>
#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <functional>

namespace SimRuntime {

/// How often a call is repeated, and what each carries besides its parcel.
struct Flood
{
    int count = 1;
    int objects = 0;
    int files = 0;
    int zeros = 0;
};

/// Calls services by name, one call after the other, through a process of its own (CallerProcess).
class Caller : public QObject
{
    Q_OBJECT

public:
    /// `arguments` start this program as a CallerProcess.
    explicit Caller(const QStringList &arguments, QObject *parent = nullptr);
    ~Caller() override;

    /// `parcel` is the whole request. Told of the outcome from the event loop: StatusNameNotFound
    /// when there is no such service, StatusDeadObject when this object goes first.
    void call(const QString &service, quint32 code, const Parcel &parcel, CallMode mode,
              const BinderLoop::Completion &completion);

    /// Makes the call one-way, so many times and as fast as the driver takes it, with so many
    /// zeros, objects and descriptors behind the parcel. Told of the last failure, if there was
    /// one.
    void flood(const QString &service, quint32 code, const Parcel &parcel, const Flood &flood,
               const BinderLoop::Completion &completion);

    /// Registers so many objects under the name, one after the other. Each belongs to an open file
    /// of its own that is closed when the next is registered, the last with this object.
    void registerMayflies(const QString &name, int count, const BinderLoop::Completion &completion);

private:
    void send(QJsonObject request, const BinderLoop::Completion &completion);
    void onOutput();
    void onFinished();
    void failPending();

    QStringList m_arguments;
    QProcess m_process;
    QHash<int, BinderLoop::Completion> m_pending;
    int m_lastId = 0;
};

} // namespace SimRuntime
