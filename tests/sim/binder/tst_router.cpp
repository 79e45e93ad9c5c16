// The router as a process: its arguments, its end, and what it makes of programs that do not keep
// to the protocol. What it plays of the kernel is held to account by the driver tests.

#include "binder/filepassing.h"
#include "binder/protocol.h"
#include "binder/uniquefd.h"
#include "binder/unixaddress.h"
#include "platform/binder/driver.h"
#include "support/testcase.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <linux/android/binder.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>

using namespace SimBinder;

namespace {

constexpr int PatienceMs = 10000;

QByteArray bytesOf(quint32 value)
{
    return QByteArray(reinterpret_cast<const char *>(&value), sizeof value);
}

QByteArray frame(Operation operation, const QByteArray &body)
{
    const RequestHeader header = {static_cast<std::uint32_t>(sizeof header) + quint32(body.size()),
                                  operation};
    return QByteArray(reinterpret_cast<const char *>(&header), sizeof header) + body;
}

// A program that talks to the router on its own terms.
class RawClient
{
public:
    explicit RawClient(const QByteArray &path)
        : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        UnixAddress address;
        address.set(path.constData());
        m_isConnected = ::connect(m_socket.get(), address.get(), address.size()) == 0;
    }

    bool isConnected() const { return m_isConnected; }

    bool send(const QByteArray &bytes, const std::vector<int> &files = {})
    {
        return sendWithFiles(m_socket.get(), bytes.constData(),
                             static_cast<std::size_t>(bytes.size()), files) == bytes.size();
    }

    // Whether the router has closed the connection; waits until it has or an answer is there.
    bool isClosed()
    {
        char byte = 0;
        std::vector<UniqueFd> files;
        pollfd waiting = {m_socket.get(), POLLIN, 0};
        return ::poll(&waiting, 1, PatienceMs) == 1 &&
               receiveWithFiles(m_socket.get(), &byte, 1, &files) <= 0;
    }

    // The result of the next answer, whose body and files are dropped.
    int result()
    {
        AnswerHeader header;
        std::vector<UniqueFd> files;
        if (receiveWithFiles(m_socket.get(), &header, sizeof header, &files) !=
            ssize_t(sizeof header))
            return -EIO;
        QByteArray body(int(header.size - sizeof header), '\0');
        if (!body.isEmpty())
            receiveWithFiles(m_socket.get(), body.data(), std::size_t(body.size()), &files);
        return header.result;
    }

    int socket() const { return m_socket.get(); }

private:
    UniqueFd m_socket;
    bool m_isConnected = false;
};

} // namespace

class TestRouter : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void aWrongCommandLineIsRefused_data();
    void aWrongCommandLineIsRefused();
    void anyoneMayUseTheDevice();
    void theSocketGoesWithTheRouter();
    void aSocketLeftBehindIsReplaced();
    void aDeviceInUseIsNotTakenOver();
    void aFileThatIsNoSocketIsLeftAlone();
    void withoutMisuseItEndsWell();
    void misuseIsReportedAndFailsAStrictRouter();
    void misuseOfALenientRouterIsOnlyReported();
    void wrongRequestsEndTheConnection_data();
    void wrongRequestsEndTheConnection();
    void aHalfRequestHoldsNobodyUp();
    void severalRequestsAtOnceAreAnsweredInOrder();
    void aClientThatDoesNotReadHoldsNobodyUp();
    void tooManyFilesEndTheConnection();
    void payloadsThatLieFailTheMessage();
    void randomBytesDoNoHarm();
    void everyNthReadIsInterrupted();
    void everyNthReadIsEmpty();
    void whatIsKeptForAFileIsToldOnRequest();
    void aDriverNoticesThatTheRouterIsGone();
    void aPathThatIsTooLongIsNoDevice();

private:
    bool start(const QStringList &arguments);
    int stop();
    QStringList errorLines();

    // A driver that is mapped and in the loop.
    std::unique_ptr<Binder::Driver> openDriver();

    QString m_path;
    std::unique_ptr<QTemporaryDir> m_directory;
    std::unique_ptr<QProcess> m_router;
};

void TestRouter::init()
{
    TestCase::init();
    m_directory = std::make_unique<QTemporaryDir>();
    m_path = m_directory->filePath(QStringLiteral("device"));
}

void TestRouter::cleanup()
{
    if (m_router != nullptr) {
        m_router->kill();
        m_router->waitForFinished();
        m_router.reset();
    }
    TestCase::cleanup();
}

bool TestRouter::start(const QStringList &arguments)
{
    m_router = std::make_unique<QProcess>();
    m_router->start(QStringLiteral(SIM_BINDER_PROGRAM), arguments + QStringList{m_path});
    return m_router->waitForReadyRead(PatienceMs) &&
           m_router->readLine() ==
               "bramd-sim-binder: listening at " + QFile::encodeName(m_path) + '\n';
}

int TestRouter::stop()
{
    m_router->terminate();
    if (!m_router->waitForFinished(PatienceMs) || m_router->exitStatus() != QProcess::NormalExit)
        return -1;
    return m_router->exitCode();
}

QStringList TestRouter::errorLines()
{
    return QString::fromUtf8(m_router->readAllStandardError())
        .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

std::unique_ptr<Binder::Driver> TestRouter::openDriver()
{
    auto driver = Binder::Driver::open(QFile::encodeName(m_path).constData());
    if (driver == nullptr || driver->map(1040384) == nullptr)
        return nullptr;
    const quint32 enter = BC_ENTER_LOOPER;
    binder_write_read written = {};
    written.write_buffer = reinterpret_cast<binder_uintptr_t>(&enter);
    written.write_size = sizeof enter;
    return driver->control(BINDER_WRITE_READ, &written) == 0 ? std::move(driver) : nullptr;
}

void TestRouter::aWrongCommandLineIsRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("no device") << QStringList();
    QTest::newRow("two devices") << QStringList{QStringLiteral("a"), QStringLiteral("b")};
    QTest::newRow("unknown option") << QStringList{QStringLiteral("--fast"), QStringLiteral("a")};
    for (const char *period : {"0", "1", "-3", "x", "3x", "", "99999999999999999999"}) {
        QTest::newRow(period) << QStringList{QStringLiteral("--empty-reads"),
                                             QString::fromLatin1(period), QStringLiteral("a")};
    }
}

void TestRouter::aWrongCommandLineIsRefused()
{
    QFETCH(QStringList, arguments);
    QProcess router;
    router.setWorkingDirectory(m_directory->path());
    router.start(QStringLiteral(SIM_BINDER_PROGRAM), arguments);
    QVERIFY(router.waitForFinished(PatienceMs));
    QCOMPARE(router.exitCode(), 2);
    QVERIFY(router.readAllStandardError().contains("usage: bramd-sim-binder"));
}

void TestRouter::anyoneMayUseTheDevice()
{
    QVERIFY(start({}));
    struct stat status = {};
    QCOMPARE(::stat(QFile::encodeName(m_path).constData(), &status), 0);
    QCOMPARE(uint(status.st_mode & 0777), 0666u);
}

void TestRouter::theSocketGoesWithTheRouter()
{
    QVERIFY(start({}));
    QCOMPARE(stop(), 0);
    QVERIFY(!QFile::exists(m_path));
    errno = 0;
    QCOMPARE(Binder::Driver::open(QFile::encodeName(m_path).constData()), nullptr);
    QCOMPARE(errno, ENOENT);
}

void TestRouter::aSocketLeftBehindIsReplaced()
{
    QVERIFY(start({}));
    m_router->kill();
    m_router->waitForFinished();
    errno = 0;
    QCOMPARE(Binder::Driver::open(QFile::encodeName(m_path).constData()), nullptr);
    QCOMPARE(errno, ECONNREFUSED);

    QVERIFY(start({}));
    QVERIFY(openDriver() != nullptr);
}

void TestRouter::aDeviceInUseIsNotTakenOver()
{
    QVERIFY(start({}));
    QProcess second;
    second.start(QStringLiteral(SIM_BINDER_PROGRAM), {m_path});
    QVERIFY(second.waitForFinished(PatienceMs));
    QCOMPARE(second.exitCode(), 1);
    QVERIFY(second.readAllStandardError().contains("Address already in use"));
    QVERIFY(openDriver() != nullptr);
}

void TestRouter::aFileThatIsNoSocketIsLeftAlone()
{
    QFile file(m_path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("precious");
    file.close();
    QVERIFY(!start({}));
    QTRY_COMPARE_WITH_TIMEOUT(m_router->state(), QProcess::NotRunning, PatienceMs);
    QCOMPARE(m_router->exitCode(), 1);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("precious"));
}

void TestRouter::withoutMisuseItEndsWell()
{
    QVERIFY(start({QStringLiteral("--strict")}));
    QVERIFY(openDriver() != nullptr);
    QCOMPARE(stop(), 0);
    QCOMPARE(errorLines(), QStringList());
}

void TestRouter::misuseIsReportedAndFailsAStrictRouter()
{
    QVERIFY(start({QStringLiteral("--strict")}));
    RawClient client(QFile::encodeName(m_path));
    client.send(frame(Operation::Map, QByteArray(16, '\0')));
    QVERIFY(client.isClosed());

    QCOMPARE(stop(), 3);
    QCOMPARE(errorLines(), (QStringList{QStringLiteral("bramd-sim-binder: misuse: pid %1: "
                                                       "a request before the opening one")
                                            .arg(QCoreApplication::applicationPid()),
                                        QStringLiteral("bramd-sim-binder: 1 cases of misuse")}));
}

void TestRouter::misuseOfALenientRouterIsOnlyReported()
{
    QVERIFY(start({}));
    RawClient client(QFile::encodeName(m_path));
    client.send(frame(Operation::Map, QByteArray(16, '\0')));
    QVERIFY(client.isClosed());

    QCOMPARE(stop(), 0);
    QCOMPARE(errorLines().size(), 2);
}

void TestRouter::wrongRequestsEndTheConnection_data()
{
    QTest::addColumn<QByteArray>("request");
    const QByteArray open = frame(Operation::Open, bytesOf(ProtocolVersion));
    QTest::newRow("another version") << frame(Operation::Open, bytesOf(ProtocolVersion + 1));
    QTest::newRow("opening without a version") << frame(Operation::Open, QByteArray());
    QTest::newRow("opened twice") << open + open;
    QTest::newRow("an unknown request") << open + frame(static_cast<Operation>(77), QByteArray());
    QTest::newRow("a short Map") << open + frame(Operation::Map, QByteArray(15, '\0'));
    QTest::newRow("a short Control") << open + frame(Operation::Control, QByteArray(3, '\0'));
    QTest::newRow("a Control without its argument")
        << open + frame(Operation::Control, bytesOf(BINDER_SET_MAX_THREADS));
    QTest::newRow("a short WriteRead") << open + frame(Operation::WriteRead, QByteArray(23, '\0'));
    QTest::newRow("more commands than there are")
        << open + frame(Operation::WriteRead, QByteArray(1, '\x08') + QByteArray(30, '\0'));
    QTest::newRow("a size below the header's") << bytesOf(7) + bytesOf(1);
    QTest::newRow("a size that nothing has") << bytesOf(0xffffffff) + bytesOf(1);
}

void TestRouter::wrongRequestsEndTheConnection()
{
    QFETCH(QByteArray, request);
    QVERIFY(start({QStringLiteral("--strict")}));
    RawClient client(QFile::encodeName(m_path));
    QVERIFY(client.isConnected());

    QVERIFY(client.send(request));

    if (request.startsWith(frame(Operation::Open, bytesOf(ProtocolVersion))))
        QCOMPARE(client.result(), 0);
    QVERIFY(client.isClosed());
    QVERIFY(openDriver() != nullptr);
    QCOMPARE(stop(), 3);
}

void TestRouter::aHalfRequestHoldsNobodyUp()
{
    QVERIFY(start({QStringLiteral("--strict")}));
    const QByteArray open = frame(Operation::Open, bytesOf(ProtocolVersion));
    RawClient client(QFile::encodeName(m_path));
    QVERIFY(client.send(open.left(5)));

    QVERIFY(openDriver() != nullptr);

    QVERIFY(client.send(open.mid(5)));
    QCOMPARE(client.result(), 0);
    QCOMPARE(stop(), 0);
}

void TestRouter::severalRequestsAtOnceAreAnsweredInOrder()
{
    QVERIFY(start({}));
    RawClient client(QFile::encodeName(m_path));
    QVERIFY(client.send(frame(Operation::Open, bytesOf(ProtocolVersion)) +
                        frame(Operation::Control, bytesOf(_IO('b', 99))) +
                        frame(Operation::Control, bytesOf(BINDER_VERSION) + bytesOf(0))));
    QCOMPARE(client.result(), 0);
    QCOMPARE(client.result(), -EINVAL);
    QCOMPARE(client.result(), 0);
}

void TestRouter::aClientThatDoesNotReadHoldsNobodyUp()
{
    QVERIFY(start({}));
    RawClient client(QFile::encodeName(m_path));
    QVERIFY(client.send(frame(Operation::Open, bytesOf(ProtocolVersion))));
    // Until the router stops reading because it cannot write.
    QVERIFY(::fcntl(client.socket(), F_SETFL, O_NONBLOCK) == 0);
    const QByteArray version = frame(Operation::Control, bytesOf(BINDER_VERSION) + bytesOf(0));
    const QByteArray many = version.repeated(4096);
    qint64 sent = 0;
    pollfd writable = {client.socket(), POLLOUT, 0};
    while (::poll(&writable, 1, 200) == 1 && sent < 256 * 1024 * 1024) {
        const ssize_t count = ::send(client.socket(), many.constData() + sent % version.size(),
                                     std::size_t(many.size() / 2), MSG_NOSIGNAL);
        if (count <= 0)
            break;
        sent += count;
    }
    QVERIFY(sent < 256 * 1024 * 1024);

    QVERIFY(openDriver() != nullptr);
}

void TestRouter::tooManyFilesEndTheConnection()
{
    QVERIFY(start({}));
    RawClient client(QFile::encodeName(m_path));
    const UniqueFd file(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    const std::vector<int> files(MaxFiles, file.get());
    // In front of a request that never becomes complete.
    QVERIFY(client.send(bytesOf(1000), files));
    client.send(bytesOf(1), files);
    QVERIFY(client.isClosed());
    QVERIFY(openDriver() != nullptr);
}

void TestRouter::payloadsThatLieFailTheMessage()
{
    QVERIFY(start({}));
    binder_transaction_data call = {};
    call.data_size = 8;
    const quint32 code = BC_TRANSACTION;
    const QByteArray command =
        bytesOf(code) + QByteArray(reinterpret_cast<const char *>(&call), sizeof call);
    WriteReadRequest header;
    header.writeSize = std::uint64_t(command.size());
    const QByteArray request =
        QByteArray(reinterpret_cast<const char *>(&header), sizeof header) + command;
    // No payload, a shorter one, and a count beyond the frame.
    for (const QByteArray &payload :
         {QByteArray(), bytesOf(4) + bytesOf(0) + bytesOf(0), bytesOf(0xffffffff) + bytesOf(7)}) {
        RawClient client(QFile::encodeName(m_path));
        QVERIFY(client.send(frame(Operation::Open, bytesOf(ProtocolVersion))));
        QCOMPARE(client.result(), 0);
        QVERIFY(client.send(frame(Operation::WriteRead, request + payload)));
        QCOMPARE(client.result(), 0);
    }
    QVERIFY(openDriver() != nullptr);
}

void TestRouter::randomBytesDoNoHarm()
{
    QVERIFY(start({}));
    quint32 state = 12345;
    const auto next = [&state] { return state = state * 1664525u + 1013904223u; };
    for (int round = 0; round < 300; ++round) {
        RawClient client(QFile::encodeName(m_path));
        QVERIFY(client.send(frame(Operation::Open, bytesOf(ProtocolVersion))));
        QCOMPARE(client.result(), 0);
        // Commands of the right kinds with nonsense in them.
        QByteArray commands;
        for (int i = 0; i < 20; ++i) {
            const quint32 number = (next() >> 8) % 19;
            static constexpr quint32 sizes[] = {64, 64, 4, 8, 4,  4,  4, 4,  16, 16,
                                                8,  0,  0, 0, 12, 12, 8, 72, 72};
            commands +=
                bytesOf(_IOC(sizes[number] > 0 ? _IOC_WRITE : 0U, 'c', number, sizes[number]));
            for (quint32 byte = 0; byte < sizes[number]; ++byte)
                commands += static_cast<char>((next() >> 16) % 7 == 0 ? next() >> 24 : 0);
        }
        WriteReadRequest header;
        header.writeSize = std::uint64_t(commands.size());
        header.readSize = next() >> 20;
        header.readBegins = 1;
        QByteArray payload(int(next() >> 22), '\0');
        for (char &byte : payload)
            byte = static_cast<char>((next() >> 16) % 3 == 0 ? next() >> 24 : 0);
        client.send(frame(Operation::WriteRead,
                          QByteArray(reinterpret_cast<const char *>(&header), sizeof header) +
                              commands + payload));
        client.result();
    }
    QVERIFY(openDriver() != nullptr);
    QCOMPARE(stop(), 0);
}

void TestRouter::everyNthReadIsInterrupted()
{
    QVERIFY(start({QStringLiteral("--interrupted-reads"), QStringLiteral("3")}));
    const auto driver = openDriver();
    QVERIFY(driver != nullptr);
    QList<int> results;
    for (int i = 0; i < 6; ++i) {
        char buffer[256];
        const quint32 command = BC_ENTER_LOOPER;
        binder_write_read exchange = {};
        exchange.write_buffer = reinterpret_cast<binder_uintptr_t>(&command);
        exchange.write_size = sizeof command;
        exchange.read_buffer = reinterpret_cast<binder_uintptr_t>(buffer);
        exchange.read_size = sizeof buffer;
        results.append(driver->control(BINDER_WRITE_READ, &exchange));
        QCOMPARE(quint64(exchange.write_consumed), quint64(sizeof command));
        QCOMPARE(quint64(exchange.read_consumed), quint64(0));
    }
    QCOMPARE(results, (QList<int>{-EAGAIN, -EAGAIN, -EINTR, -EAGAIN, -EAGAIN, -EINTR}));
}

void TestRouter::everyNthReadIsEmpty()
{
    QVERIFY(start({QStringLiteral("--empty-reads"), QStringLiteral("2")}));
    const auto driver = openDriver();
    QVERIFY(driver != nullptr);
    QList<QByteArray> reads;
    for (int i = 0; i < 4; ++i) {
        QByteArray buffer(256, '\0');
        binder_write_read exchange = {};
        exchange.read_buffer = reinterpret_cast<binder_uintptr_t>(buffer.data());
        exchange.read_size = binder_size_t(buffer.size());
        const int result = driver->control(BINDER_WRITE_READ, &exchange);
        QCOMPARE(result, i % 2 == 0 ? -EAGAIN : 0);
        reads.append(buffer.left(int(exchange.read_consumed)));
    }
    QCOMPARE(reads, (QList<QByteArray>{{}, bytesOf(BR_NOOP), {}, bytesOf(BR_NOOP)}));
}

void TestRouter::whatIsKeptForAFileIsToldOnRequest()
{
    QVERIFY(start({QStringLiteral("--strict")}));
    const auto manager = openDriver();
    QVERIFY(manager != nullptr);
    quint32 unused = 0;
    QCOMPARE(manager->control(BINDER_SET_CONTEXT_MGR, &unused), 0);
    const QByteArray line = "bramd-sim-binder: pid " +
                            QByteArray::number(QCoreApplication::applicationPid()) +
                            ": nodes 1, references 0, deaths 0, buffers 0\n";
    for (int told = 1; told <= 2; ++told) {
        QCOMPARE(::kill(pid_t(m_router->processId()), SIGUSR1), 0);
        QTRY_VERIFY_WITH_TIMEOUT(m_router->bytesAvailable() > line.size(), PatienceMs);
        QCOMPARE(m_router->readLine(), line);
        QTRY_VERIFY_WITH_TIMEOUT(m_router->canReadLine(), PatienceMs);
        QCOMPARE(m_router->readLine(),
                 "bramd-sim-binder: books told: " + QByteArray::number(told) + '\n');
    }
    QCOMPARE(stop(), 0);
}

void TestRouter::aDriverNoticesThatTheRouterIsGone()
{
    QVERIFY(start({}));
    const auto driver = openDriver();
    pollfd descriptor = {driver->descriptor(), POLLIN, 0};
    QCOMPARE(::poll(&descriptor, 1, 0), 0);

    QCOMPARE(stop(), 0);

    QCOMPARE(::poll(&descriptor, 1, PatienceMs), 1);
    binder_version version = {};
    QCOMPARE(driver->control(BINDER_VERSION, &version), -ECONNREFUSED);
    QCOMPARE(driver->control(BINDER_VERSION, &version), -ECONNREFUSED);
}

void TestRouter::aPathThatIsTooLongIsNoDevice()
{
    errno = 0;
    QCOMPARE(Binder::Driver::open(QByteArray(200, 'x').constData()), nullptr);
    QCOMPARE(errno, ENAMETOOLONG);
}

QTEST_GUILESS_MAIN(TestRouter)
#include "tst_router.moc"
