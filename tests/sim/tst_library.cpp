// The binder client library over a whole driver: this process and others talk to each other
// through the simulated device or, as tst_library_kernel, through a kernel's.

#include "platform/binder/client.h"
#include "platform/binder/localobject.h"
#include "platform/binder/remoteobject.h"
#include "platform/binder/servicemanager.h"
#include "platform/binder/servicename.h"
#include "sim/deviceundertest.h"
#include "sim/peer/testservice.h"
#include "support/testcase.h"

#include <QCoreApplication>
#include <QProcess>
#include <QtTest>

using namespace Binder;

namespace {

constexpr int PatienceMs = 10000;
constexpr const char *Name = "test.name";

// Another process; it is killed with this object.
class Peer
{
public:
    explicit Peer(const QStringList &arguments)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationDirPath() + QLatin1Char('/') +
                            QStringLiteral(LIBRARY_PEER),
                        arguments);
        m_ready = m_process.waitForReadyRead(PatienceMs) && m_process.readLine() == "ready\n";
    }
    ~Peer() { kill(); }

    bool isReady() const { return m_ready; }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
    bool m_ready = false;
};

} // namespace

class TestLibrary : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void aServiceIsFoundByItsName();
    void anUnknownNameIsNotFound();
    void aCallIsAnswered_data();
    void aCallIsAnswered();
    void aRefusalArrivesAsAStatus();
    void aCallBackIsServedInsideTheCall();
    void callBacksNest();
    void aFloodOfOneWayCallsArrivesInOrder();
    void oneWayCallsAreServedFromTheEventLoop();
    void aDeathIsTold();
    void aCalleeThatDiesEndsTheCall();
    void aDeadObjectIsToldAtOnce();
    void anOwnServiceCanBeCalledByOthers();
    void anObjectThatIsDroppedAnswersAsDead();
    void whoWaitsForANameIsTold();
    void namesAreRegisteredWithANewServiceManager();
    void withoutAServiceManagerNothingIsFound();

private:
    void startServiceManager();
    std::unique_ptr<Client> clientOfService();

    // Calls CallBack of the service with an object that calls on, `levels` deep.
    qint32 callBack(Client &client, const LocalObject &object, qint32 levels);

    std::unique_ptr<DeviceUnderTest> m_device;
    std::unique_ptr<Peer> m_manager;
    std::unique_ptr<Peer> m_service;
    std::unique_ptr<ServiceManager> m_names;
};

void TestLibrary::initTestCase()
{
    const QString reason = DeviceUnderTest::reasonToSkip();
    if (!reason.isEmpty())
        QSKIP(qPrintable(reason));
}

void TestLibrary::init()
{
    TestCase::init();
    m_device = std::make_unique<DeviceUnderTest>();
    QVERIFY(m_device->start());
    startServiceManager();
    m_service = std::make_unique<Peer>(QStringList{
        QStringLiteral("service"), QFile::decodeName(m_device->path()), QString::fromLatin1(Name)});
    QVERIFY(m_service->isReady());
    m_names = ServiceManager::open(m_device->path().constData());
    QVERIFY(m_names != nullptr);
}

void TestLibrary::cleanup()
{
    m_names.reset();
    m_service.reset();
    m_manager.reset();
    QString crash;
    const QStringList misuse = m_device->stop(&crash);
    QCOMPARE(crash, QString());
    QCOMPARE(misuse, QStringList());
    TestCase::cleanup();
}

void TestLibrary::startServiceManager()
{
    m_manager.reset();
    m_manager = std::make_unique<Peer>(
        QStringList{QStringLiteral("service-manager"), QFile::decodeName(m_device->path())});
    QVERIFY(m_manager->isReady());
}

std::unique_ptr<Client> TestLibrary::clientOfService()
{
    return Client::create(m_names->getService(Name), TestService::Descriptor);
}

qint32 TestLibrary::callBack(Client &client, const LocalObject &object, qint32 levels)
{
    const auto request = client.createRequest();
    request->writer().appendLocalObject(&object);
    request->writer().appendInt32(levels);
    const auto reply = client.transact(TestService::CallBack, *request);
    qint32 result = -1;
    if (reply != nullptr)
        reply->readInt32(&result);
    return result;
}

void TestLibrary::aServiceIsFoundByItsName()
{
    const auto first = m_names->getService(Name);
    QVERIFY(first != nullptr);
    QVERIFY(first->handle() != ContextManagerHandle);
    QCOMPARE(m_names->getService(Name), first);
}

void TestLibrary::anUnknownNameIsNotFound()
{
    QCOMPARE(m_names->getService("no.such.name"), nullptr);
}

void TestLibrary::aCallIsAnswered_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {0, 1, 4096, 500000})
        QTest::newRow(qPrintable(QString::number(size))) << size;
}

void TestLibrary::aCallIsAnswered()
{
    QFETCH(int, size);
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 31 + i / 257);
    const auto client = clientOfService();
    QVERIFY(client != nullptr);

    const auto request = client->createRequest();
    request->writer().appendByteArray(bytes);
    Status status = StatusRefused;
    const auto reply = client->transact(TestService::Echo, *request, &status);

    QCOMPARE(status, StatusOk);
    QVERIFY(reply != nullptr);
    const char *echoed = nullptr;
    int echoedSize = -1;
    QVERIFY(reply->reader().readByteArray(&echoed, &echoedSize));
    QCOMPARE(QByteArray(echoed, echoedSize), bytes);
}

void TestLibrary::aRefusalArrivesAsAStatus()
{
    const auto client = clientOfService();
    Status status = StatusOk;
    QCOMPARE(client->transact(TestService::Refuse, *client->createRequest(), &status), nullptr);
    QCOMPARE(status, StatusRefused);
}

void TestLibrary::aCallBackIsServedInsideTheCall()
{
    const auto client = clientOfService();
    std::unique_ptr<LocalObject> object;
    object = m_names->createLocalObject(TestService::ObjectDescriptor,
                                        [&](IncomingRequest &request, quint32, quint32, Status *) {
                                            qint32 levels = 0;
                                            request.reader().readInt32(&levels);
                                            auto reply = object->createReply();
                                            reply->writer().appendInt32(levels + 100);
                                            return reply;
                                        });

    QCOMPARE(callBack(*client, *object, 1), 101);
}

void TestLibrary::callBacksNest()
{
    const auto client = clientOfService();
    std::unique_ptr<LocalObject> object;
    object = m_names->createLocalObject(
        TestService::ObjectDescriptor, [&](IncomingRequest &request, quint32, quint32, Status *) {
            qint32 levels = 0;
            request.reader().readInt32(&levels);
            auto reply = object->createReply();
            reply->writer().appendInt32(levels == 0 ? 0
                                                    : callBack(*client, *object, levels - 1) + 1);
            return reply;
        });

    QCOMPARE(callBack(*client, *object, 10), 10);
}

void TestLibrary::aFloodOfOneWayCallsArrivesInOrder()
{
    constexpr qint32 Count = 3000;
    const auto client = clientOfService();
    for (qint32 number = 1; number <= Count; ++number) {
        const auto request = client->createRequest();
        request->writer().appendInt32(number);
        QCOMPARE(client->transactOneWay(TestService::Count, *request), StatusOk);
    }

    qint32 counted = 0;
    qint32 outOfOrder = -1;
    const auto ask = [&] {
        const auto reply = client->transact(TestService::Counted, *client->createRequest());
        Reader reader = reply->reader();
        reader.readInt32(&counted);
        reader.readInt32(&outOfOrder);
        return counted == Count;
    };
    QTRY_VERIFY_WITH_TIMEOUT(ask(), PatienceMs);
    QCOMPARE(outOfOrder, 0);
}

void TestLibrary::oneWayCallsAreServedFromTheEventLoop()
{
    constexpr qint32 Count = 1000;
    const auto client = clientOfService();
    QVector<qint32> received;
    const auto object = m_names->createLocalObject(
        TestService::ObjectDescriptor, [&](IncomingRequest &request, quint32, quint32, Status *) {
            qint32 number = 0;
            request.reader().readInt32(&number);
            received.append(number);
            return nullptr;
        });
    const auto request = client->createRequest();
    request->writer().appendLocalObject(object.get());
    request->writer().appendInt32(Count);

    const auto reply = client->transact(TestService::Flood, *request);

    qint32 failures = -1;
    QVERIFY(reply != nullptr && reply->readInt32(&failures));
    QCOMPARE(failures, 0);
    QVERIFY(received.isEmpty());
    QTRY_COMPARE_WITH_TIMEOUT(received.size(), Count, PatienceMs);
    for (int i = 0; i < Count; ++i)
        QCOMPARE(received.at(i), i + 1);
}

void TestLibrary::aDeathIsTold()
{
    const auto object = m_names->getService(Name);
    int deaths = 0;
    int others = 0;
    object->addDeathHandler([&] { ++deaths; });
    const HandlerId removed = object->addDeathHandler([&] { ++others; });
    object->removeHandler(removed);

    m_service->kill();

    QTRY_COMPARE_WITH_TIMEOUT(deaths, 1, PatienceMs);
    QCOMPARE(others, 0);
    const auto client = Client::create(object, TestService::Descriptor);
    Status status = StatusOk;
    QCOMPARE(client->transact(TestService::Counted, *client->createRequest(), &status), nullptr);
    QCOMPARE(status, StatusDeadObject);
}

void TestLibrary::aCalleeThatDiesEndsTheCall()
{
    const auto client = clientOfService();
    Status status = StatusOk;
    QCOMPARE(client->transact(TestService::Die, *client->createRequest(), &status), nullptr);
    QCOMPARE(status, StatusDeadObject);
}

void TestLibrary::aDeadObjectIsToldAtOnce()
{
    const auto object = m_names->getService(Name);
    int deaths = 0;
    object->addDeathHandler([&] { ++deaths; });
    m_service->kill();
    QTRY_COMPARE_WITH_TIMEOUT(deaths, 1, PatienceMs);

    object->addDeathHandler([&] { deaths += 10; });

    QTRY_COMPARE_WITH_TIMEOUT(deaths, 11, PatienceMs);
}

void TestLibrary::anOwnServiceCanBeCalledByOthers()
{
    std::unique_ptr<LocalObject> object;
    object = m_names->createLocalObject(TestService::ObjectDescriptor,
                                        [&](IncomingRequest &request, quint32, quint32, Status *) {
                                            qint32 number = 0;
                                            request.reader().readInt32(&number);
                                            auto reply = object->createReply();
                                            reply->writer().appendInt32(number + 100);
                                            return reply;
                                        });
    const auto name = m_names->registerName("own.name", *object);
    QVERIFY(name != nullptr);
    // Found by this process itself it is no remote object.
    QCOMPARE(m_names->getService("own.name"), nullptr);

    const auto client = clientOfService();
    const auto request = client->createRequest();
    request->writer().appendByteArray("own.name");
    request->writer().appendInt32(7);
    const auto reply = client->transact(TestService::CallName, *request);

    qint32 result = -1;
    QVERIFY(reply != nullptr && reply->readInt32(&result));
    QCOMPARE(result, 107);
}

void TestLibrary::anObjectThatIsDroppedAnswersAsDead()
{
    const auto client = clientOfService();
    std::unique_ptr<LocalObject> object;
    object = m_names->createLocalObject(TestService::ObjectDescriptor,
                                        [&](IncomingRequest &, quint32, quint32, Status *) {
                                            auto reply = object->createReply();
                                            object.reset();
                                            return reply;
                                        });

    QCOMPARE(callBack(*client, *object, 1), -1);
    QCOMPARE(object, nullptr);
}

void TestLibrary::whoWaitsForANameIsTold()
{
    int told = 0;
    const HandlerId handler = m_names->addRegistrationHandler("late.name", [&] { ++told; });
    QCoreApplication::processEvents();
    QCOMPARE(told, 0);

    const Peer late({QStringLiteral("service"), QFile::decodeName(m_device->path()),
                     QStringLiteral("late.name")});
    QVERIFY(late.isReady());

    QTRY_VERIFY_WITH_TIMEOUT(told > 0, PatienceMs);
    m_names->removeHandler(handler);
    QVERIFY(m_names->getService("late.name") != nullptr);
}

void TestLibrary::namesAreRegisteredWithANewServiceManager()
{
    const auto before = m_names->getService(Name);
    QVERIFY(before != nullptr);

    startServiceManager();

    QTRY_VERIFY_WITH_TIMEOUT(m_names->getService(Name) != nullptr, PatienceMs);
    // The service itself has not changed.
    QCOMPARE(m_names->getService(Name), before);
}

void TestLibrary::withoutAServiceManagerNothingIsFound()
{
    m_manager->kill();
    QTRY_COMPARE_WITH_TIMEOUT(m_names->getService(Name), nullptr, PatienceMs);
    m_names.reset();
    QVERIFY(ServiceManager::open(m_device->path().constData()) != nullptr);
}

QTEST_GUILESS_MAIN(TestLibrary)
#include "tst_library.moc"
