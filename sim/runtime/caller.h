#pragma once

#include "runtime/binderloop.h"

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <functional>

namespace SimRuntime {

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

private:
    void onOutput();
    void onFinished();
    void failPending();

    QStringList m_arguments;
    QProcess m_process;
    QHash<int, BinderLoop::Completion> m_pending;
    int m_lastId = 0;
};

} // namespace SimRuntime
