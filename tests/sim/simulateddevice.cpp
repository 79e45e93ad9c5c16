#include "sim/deviceundertest.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <csignal>
#include <sys/prctl.h>

namespace {

constexpr int StartTimeoutMs = 10000;

// Ends with the test, however that ends.
class RouterProcess : public QProcess
{
protected:
    void setupChildProcess() override { ::prctl(PR_SET_PDEATHSIG, SIGTERM); }
};

} // namespace

class DeviceUnderTest::Private
{
public:
    QTemporaryDir directory;
    QByteArray path = QFile::encodeName(directory.filePath(QStringLiteral("device")));
    RouterProcess router;
};

DeviceUnderTest::DeviceUnderTest()
    : m_private(std::make_unique<Private>())
{
}

DeviceUnderTest::~DeviceUnderTest()
{
    stop();
}

QString DeviceUnderTest::reasonToSkip()
{
    return QString();
}

bool DeviceUnderTest::start()
{
    QProcess &router = m_private->router;
    QStringList arguments =
        qEnvironmentVariable("SIM_BINDER_ARGUMENTS").split(QLatin1Char(' '), Qt::SkipEmptyParts);
    arguments << QStringLiteral("--strict") << QFile::decodeName(m_private->path);
    router.start(QStringLiteral(SIM_BINDER_PROGRAM), arguments);
    return router.waitForReadyRead(StartTimeoutMs) &&
           router.readLine().startsWith("bramd-sim-binder: listening at ");
}

QStringList DeviceUnderTest::stop(QString *crash)
{
    QProcess &router = m_private->router;
    if (router.state() == QProcess::NotRunning)
        return {};
    router.terminate();
    router.waitForFinished();
    const bool ok = router.exitStatus() == QProcess::NormalExit;
    const QString output = QString::fromUtf8(router.readAllStandardError());

    static const QRegularExpression misuse(
        QStringLiteral("^bramd-sim-binder: misuse: pid \\d+: (.*)$"),
        QRegularExpression::MultilineOption);
    QStringList texts;
    for (auto match = misuse.globalMatch(output); match.hasNext();)
        texts.append(match.next().captured(1));
    // The router's own word for it must agree with the lines.
    const int expectedExit = texts.isEmpty() ? 0 : 3;
    if ((!ok || router.exitCode() != expectedExit) && crash != nullptr)
        *crash = QStringLiteral("router ended with %1: %2").arg(router.exitCode()).arg(output);
    return texts;
}

bool DeviceUnderTest::notesMisuse()
{
    return true;
}

const QByteArray &DeviceUnderTest::path() const
{
    return m_private->path;
}
