#pragma once

#include <QString>
#include <QVector>

#include <optional>

namespace SimRuntime {

/// One way in which a service misbehaves on demand.
struct Fault
{
    enum class Kind {
        Refuse,  ///< answers with the exception `value` (0: security exception)
        Status,  ///< answers with the status `value` in place of a reply
        Short,   ///< answers with the first `value` bytes of its reply
        Long,    ///< answers with `value` bytes more than its reply has
        Objects, ///< answers with `value` objects more that can be called
        Files,   ///< answers with `value` descriptors more
        Hang,    ///< answers after `value` milliseconds (0: never)
        Die      ///< the whole runtime is killed
    };

    Kind kind = Kind::Refuse;
    int value = 0;
};

std::optional<Fault::Kind> faultKind(const QString &name);

/// The faults that wait for calls.
class Faults
{
public:
    /// The next `count` calls of this service (and code, when given) meet the fault.
    void add(const QString &service, std::optional<quint32> code, const Fault &fault, int count);

    /// Forgets the faults of a service.
    void clear(const QString &service);

    /// The fault that this call meets; the oldest that fits, counted down.
    std::optional<Fault> take(const QString &service, quint32 code);

private:
    struct Waiting
    {
        QString service;
        std::optional<quint32> code;
        Fault fault;
        int count;
    };

    QVector<Waiting> m_waiting;
};

} // namespace SimRuntime
