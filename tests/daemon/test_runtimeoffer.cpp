#include "daemon/runtimeoffer.h"
#include "support/testcase.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QtTest>

#include <csignal>
#include <unistd.h>

namespace {

/// What this process and its children write to standard error while the object lives.
class CapturedErrors
{
public:
    CapturedErrors()
    {
        if (m_file.open())
            ::dup2(m_file.handle(), STDERR_FILENO);
    }
    ~CapturedErrors()
    {
        ::dup2(m_previous, STDERR_FILENO);
        ::close(m_previous);
    }
    CapturedErrors(const CapturedErrors &) = delete;
    CapturedErrors &operator=(const CapturedErrors &) = delete;

    QByteArray text() const
    {
        QFile written(m_file.fileName());
        return written.open(QIODevice::ReadOnly) ? written.readAll() : QByteArray();
    }

private:
    int m_previous = ::dup(STDERR_FILENO);
    QTemporaryFile m_file;
};

} // namespace

class TestRuntimeOffer : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void the_image_tells_whether_the_runtime_is_installed();
    void the_launcher_opens_the_runtimes_page_in_the_store_client();
    void the_launchers_exit_status_is_the_result();
    void a_launcher_that_is_killed_is_a_failure();
    void a_child_that_cannot_become_the_launcher_returns_as_well();
    void a_launcher_that_cannot_be_waited_for_is_a_failure();

private:
    QByteArray writeLauncher(const QByteArray &script) const;

    QScopedPointer<QTemporaryDir> m_directory;
};

void TestRuntimeOffer::init()
{
    TestCase::init();
    m_directory.reset(new QTemporaryDir);
}

QByteArray TestRuntimeOffer::writeLauncher(const QByteArray &script) const
{
    QFile file(m_directory->filePath(QStringLiteral("invoker")));
    if (file.open(QIODevice::WriteOnly))
        file.write("#!/bin/sh\n" + script);
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return QFile::encodeName(file.fileName());
}

void TestRuntimeOffer::the_image_tells_whether_the_runtime_is_installed()
{
    QVERIFY(!isRuntimeInstalled());

    QVERIFY(QDir().mkpath(QStringLiteral("/opt/umbra")));
    QFile image(QStringLiteral("/opt/umbra/system.img"));
    QVERIFY(image.open(QIODevice::WriteOnly));

    QVERIFY(isRuntimeInstalled());
}

void TestRuntimeOffer::the_launcher_opens_the_runtimes_page_in_the_store_client()
{
    QFile arguments(m_directory->filePath(QStringLiteral("arguments")));
    const QByteArray launcher =
        writeLauncher("printf '%s\\n' \"$@\" > " + QFile::encodeName(arguments.fileName()) + '\n');

    QCOMPARE(offerRuntime(launcher.constData()), 0);

    QVERIFY(arguments.open(QIODevice::ReadOnly));
    QCOMPARE(arguments.readAll(), QByteArray("--type=quartz-qt5\n--no-wait\n"
                                             "/usr/bin/store-client\nshowApp\numbravm\n"));
}

void TestRuntimeOffer::the_launchers_exit_status_is_the_result()
{
    QCOMPARE(offerRuntime(writeLauncher("exit 7\n").constData()), 7);
}

void TestRuntimeOffer::a_launcher_that_is_killed_is_a_failure()
{
    const CapturedErrors errors;

    QCOMPARE(offerRuntime(writeLauncher("kill -9 $$\n").constData()), 1);

    QCOMPARE(errors.text(), QByteArray("Could not install QRT package: umbravm\n"));
}

void TestRuntimeOffer::a_child_that_cannot_become_the_launcher_returns_as_well()
{
    constexpr int returnedInChild = 42;
    const pid_t self = ::getpid();
    const CapturedErrors errors;

    const int result = offerRuntime("/nonexistent/invoker");
    if (::getpid() != self)
        ::_exit(result == 1 ? returnedInChild : 0);

    QCOMPARE(result, returnedInChild);
    QCOMPARE(errors.text(), QByteArray("Could not install QRT package: umbravm\n"));
}

void TestRuntimeOffer::a_launcher_that_cannot_be_waited_for_is_a_failure()
{
    const auto previous = std::signal(SIGCHLD, SIG_IGN); // the kernel then keeps no exit status
    const CapturedErrors errors;

    const int result = offerRuntime(writeLauncher("exit 0\n").constData());

    std::signal(SIGCHLD, previous);
    QCOMPARE(result, 1);
    QCOMPARE(errors.text(),
             QByteArray("Could not install QRT package: umbravm (No child processes)\n"));
}

QTEST_GUILESS_MAIN(TestRuntimeOffer)
#include "test_runtimeoffer.moc"
