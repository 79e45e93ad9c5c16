#include "sim/deviceundertest.h"

#include <QFile>

#include <unistd.h>

class DeviceUnderTest::Private
{
public:
    QByteArray path = qEnvironmentVariableIsSet("BINDER_DEVICE") ? qgetenv("BINDER_DEVICE")
                                                                 : QByteArray("/dev/marshhopper");
};

DeviceUnderTest::DeviceUnderTest()
    : m_private(std::make_unique<Private>())
{
}

DeviceUnderTest::~DeviceUnderTest() = default;

QString DeviceUnderTest::reasonToSkip()
{
    const DeviceUnderTest device;
    if (::access(device.path().constData(), R_OK | W_OK) == 0)
        return QString();
    return QFile::decodeName(device.path()) + QStringLiteral(" is no device that can be opened");
}

bool DeviceUnderTest::start()
{
    return true;
}

QStringList DeviceUnderTest::stop(QString *)
{
    return {};
}

bool DeviceUnderTest::notesMisuse()
{
    return false;
}

const QByteArray &DeviceUnderTest::path() const
{
    return m_private->path;
}
