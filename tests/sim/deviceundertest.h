#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>

/// The device that the driver tests run against: the simulated one or a kernel's. The tests are
/// the same; each of the two sources is linked with the Driver that belongs to it.
class DeviceUnderTest
{
public:
    DeviceUnderTest();
    ~DeviceUnderTest();

    /// Why no test can run here; empty when they can.
    static QString reasonToSkip();

    /// Makes the device ready, new if it can be. False on failure.
    bool start();

    /// Ends it. Returns what it noted as misuse since start(), one text each; a kernel's driver
    /// tells nobody. `crash` is set to what else was wrong with its end.
    QStringList stop(QString *crash = nullptr);

    /// Whether stop() can tell.
    static bool notesMisuse();

    const QByteArray &path() const;

private:
    class Private;
    std::unique_ptr<Private> m_private;
};
