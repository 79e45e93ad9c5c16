#pragma once

#include <QMetaType>
#include <QString>

namespace Fjord {
namespace Timed {
namespace WallClock {

/// What the time daemon says about the host's wall clock. A plain value; default-constructed it
/// says nothing.
class Info
{
public:
    Info() = default;
    explicit Info(const QString &humanReadableTz)
        : m_humanReadableTz(humanReadableTz)
    {
    }

    /// The host's time zone as an Olson name ("Europe/Helsinki", "UTC"); empty when not known.
    QString humanReadableTz() const { return m_humanReadableTz; }

private:
    QString m_humanReadableTz;
};

} // namespace WallClock
} // namespace Timed
} // namespace Fjord

Q_DECLARE_METATYPE(Fjord::Timed::WallClock::Info)
