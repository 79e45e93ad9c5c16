#include "platform/host/privatebus.h"

#include <QFile>

namespace {

const char configuration[] = R"(<!DOCTYPE busconfig PUBLIC
 "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>%1</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    %2
  </policy>
</busconfig>
)";

const char openPolicy[] =
    R"(<allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/>)";
const char mutePolicy[] = R"(<deny send_destination="*"/>)";

} // namespace

PrivateBus::~PrivateBus()
{
    stop();
}

bool PrivateBus::start(Traffic traffic)
{
    const QString text =
        QString(QLatin1String(configuration))
            .arg(address(), QLatin1String(traffic == Traffic::Allowed ? openPolicy : mutePolicy));
    QFile file(m_directory.filePath(QStringLiteral("bus.conf")));
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
        return false;
    file.close();
    m_daemon.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_daemon.start(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--nofork"), QStringLiteral("--print-address"),
                    QStringLiteral("--config-file=") + file.fileName()});
    // It prints the address once it listens there.
    return m_daemon.waitForReadyRead();
}

void PrivateBus::stop()
{
    if (m_daemon.state() == QProcess::NotRunning)
        return;
    m_daemon.kill();
    m_daemon.waitForFinished();
}

QString PrivateBus::address() const
{
    return QStringLiteral("unix:path=") + m_directory.filePath(QStringLiteral("socket"));
}
