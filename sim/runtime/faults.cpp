#include "runtime/faults.h"

#include <algorithm>

namespace SimRuntime {

std::optional<Fault::Kind> faultKind(const QString &name)
{
    static const struct
    {
        QLatin1String name;
        Fault::Kind kind;
    } kinds[] = {
        {QLatin1String("refuse"), Fault::Kind::Refuse},
        {QLatin1String("status"), Fault::Kind::Status},
        {QLatin1String("short"), Fault::Kind::Short},
        {QLatin1String("long"), Fault::Kind::Long},
        {QLatin1String("objects"), Fault::Kind::Objects},
        {QLatin1String("files"), Fault::Kind::Files},
        {QLatin1String("hang"), Fault::Kind::Hang},
        {QLatin1String("die"), Fault::Kind::Die},
    };
    for (const auto &entry : kinds) {
        if (name == entry.name)
            return entry.kind;
    }
    return std::nullopt;
}

void Faults::add(const QString &service, std::optional<quint32> code, const Fault &fault, int count)
{
    if (count > 0)
        m_waiting.append({service, code, fault, count});
}

void Faults::clear(const QString &service)
{
    m_waiting.erase(
        std::remove_if(m_waiting.begin(), m_waiting.end(),
                       [&](const Waiting &waiting) { return waiting.service == service; }),
        m_waiting.end());
}

std::optional<Fault> Faults::take(const QString &service, quint32 code)
{
    for (int i = 0; i < m_waiting.size(); ++i) {
        Waiting &waiting = m_waiting[i];
        if (waiting.service != service || (waiting.code && *waiting.code != code))
            continue;
        const Fault fault = waiting.fault;
        if (--waiting.count == 0)
            m_waiting.remove(i);
        return fault;
    }
    return std::nullopt;
}

} // namespace SimRuntime
