#include "platform/binder/phone.h"
#include "platform/binder/sdklevel.h"
#include "platform/binder/servicename.h"
#include "support/testcase.h"

#include <QElapsedTimer>
#include <QtTest>

using namespace Binder;

namespace {

const QByteArray OneWord = QByteArrayLiteral("00004000");
const QByteArray TwoWords = QByteArrayLiteral("00000080ffffffff");

// "android.os.IServiceManager"
const QByteArray DescriptorHex =
    QByteArrayLiteral("1a000000"
                      "61006e00640072006f00690064002e006f0073002e00490053006500"
                      "720076006900630065004d0061006e0061006700650072000000"
                      "0000");

// "package"
const QByteArray PackageHex = QByteArrayLiteral("07000000 7000610063006b00610067006500 0000");

// "umbra.launcher"
const QByteArray LauncherHex = QByteArrayLiteral(
    "0e000000 75006d006200720061002e006c00610075006e006300680065007200 0000 0000");

QByteArray bytes(const QByteArray &hex)
{
    return QByteArray::fromHex(hex);
}

} // namespace

class TestServiceManager : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void thereMayBeNoDevice();
    void otherProtocolsAreRefused();
    void theMappingMayFail();
    void theDeviceIsOpenedOnce();
    void aRuntimeWithoutServiceManagerIsNoFailure();

    void lookupsAreWrittenAsAndroidDoes_data();
    void lookupsAreWrittenAsAndroidDoes();
    void unknownNamesGiveNothing();
    void oddAnswersGiveNothing_data();
    void oddAnswersGiveNothing();

    void aRegisteredNameIsToldAtOnce();
    void namesAreLookedUpOnceASecondWhileSomebodyWaits();
    void handlersThatComeAndGoDoNotHurryTheLooks();
    void withoutHandlersNothingWakesUp();
    void handlersMayRemoveThemselvesAndOneAnother();
    void handlersMayReleaseEverything();
    void handlersEndWithTheirServiceManager();
    void aServiceManagerMayComeUpLater();

    void registrationsAreWrittenAsAndroidDoes_data();
    void registrationsAreWrittenAsAndroidDoes();
    void registeredObjectsCanBeCalled();
    void namesAreRegisteredWhenAServiceManagerComes();
    void namesAreRegisteredAnewAfterARestart();
    void releasedNamesAreNotRegisteredAnew();
    void namesOfDeletedObjectsAreNotRegisteredAnew();
    void refusalsAreNotTriedAgain();
    void aRegisteredNameWakesNobodyUp();
    void openFilesEndWithTheLastHolder();
};

void TestServiceManager::cleanup()
{
    setSdkLevelSource(nullptr);
    TestCase::cleanup();
}

void TestServiceManager::thereMayBeNoDevice()
{
    QVERIFY(ServiceManager::open(Phone::Device) == nullptr);
    QVERIFY(takeLogLine(QtDebugMsg,
                        QStringLiteral("Cannot use binder device \"/dev/marshhopper\" \"No such "
                                       "file or directory\"")));
    QVERIFY(ServiceManager::open(nullptr) == nullptr);
}

void TestServiceManager::otherProtocolsAreRefused()
{
    FakeBinder binder;
    binder.quirks.protocolVersion = 7;
    QVERIFY(ServiceManager::open(Phone::Device) == nullptr);
    QVERIFY(!binder.isOpen());
}

void TestServiceManager::theMappingMayFail()
{
    FakeBinder binder;
    binder.quirks.mapFails = true;
    QVERIFY(ServiceManager::open(Phone::Device) == nullptr);
    QVERIFY(!binder.isOpen());
}

void TestServiceManager::theDeviceIsOpenedOnce()
{
    FakeBinder binder;
    auto first = ServiceManager::open(Phone::Device);
    auto second = ServiceManager::open(Phone::Device);
    QVERIFY(first != nullptr && second != nullptr);
    QCOMPARE(binder.timesOpened(), 1);
    QCOMPARE(binder.mappedSize(), 4 * 1024 * 1024);

    first.reset();
    QVERIFY(binder.isOpen());
    second.reset();
    QVERIFY(!binder.isOpen());
    first = ServiceManager::open(Phone::Device);
    QCOMPARE(binder.timesOpened(), 2);
}

void TestServiceManager::aRuntimeWithoutServiceManagerIsNoFailure()
{
    FakeBinder binder;
    binder.killContextManager();
    const auto manager = ServiceManager::open(Phone::Device);
    QVERIFY(manager != nullptr);
    QVERIFY(manager->getService("thing") == nullptr);
}

void TestServiceManager::lookupsAreWrittenAsAndroidDoes_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QByteArray>("words");
    QTest::addColumn<int>("size");

    QTest::newRow("unknown") << 0 << OneWord << 84;
    QTest::newRow("27") << 27 << OneWord << 84;
    QTest::newRow("28") << 28 << OneWord << 84;
    QTest::newRow("29") << 29 << TwoWords << 88;
    QTest::newRow("30") << 30 << TwoWords << 88;
}

void TestServiceManager::lookupsAreWrittenAsAndroidDoes()
{
    QFETCH(int, level);
    QFETCH(QByteArray, words);
    QFETCH(int, size);
    FakeBinder binder;
    binder.setSdkLevel(level);
    binder.addService("package");
    setSdkLevelSource([level] { return level; });
    const auto manager = ServiceManager::open(Phone::Device);

    QVERIFY(manager->getService("package") != nullptr);

    const std::vector<FakeTransaction> sent = binder.contextManager()->transactions();
    QCOMPARE(sent.size(), std::size_t(1));
    QCOMPARE(sent.front().code, 2u);
    QCOMPARE(sent.front().flags, 0u);
    QVERIFY(sent.front().offsets.empty());
    QCOMPARE(sent.front().data.toHex(), bytes(words + DescriptorHex + PackageHex).toHex());
    QCOMPARE(sent.front().data.size(), size);
}

void TestServiceManager::unknownNamesGiveNothing()
{
    Phone phone;
    QVERIFY(phone.manager->getService("nothing") == nullptr);
    QVERIFY(phone.manager->getService("") == nullptr);
    QVERIFY(phone.manager->getService(nullptr) == nullptr);
}

Q_DECLARE_METATYPE(FakeReply)

void TestServiceManager::oddAnswersGiveNothing_data()
{
    QTest::addColumn<FakeReply>("answer");

    QTest::newRow("empty") << FakeReply();
    QTest::newRow("short") << FakeReply::data(FakeParcel(QByteArray(20, '\0')));
    QTest::newRow("null object") << FakeReply::data(FakeParcel().nullObject());
    QTest::newRow("object not at the start")
        << FakeReply::data(FakeParcel().int32(0).object(std::make_shared<FakeObject>()));
    QTest::newRow("object not listed") << FakeReply::data(
        FakeParcel(bytes("852a6873 7f010000 0500000000000000 0000000000000000")));
    QTest::newRow("object claimed outside")
        << FakeReply::data(FakeParcel().int32(0).listObjectAt(4096).listObjectAt(2));
    QTest::newRow("refused") << FakeReply::statusCode(-1);
    QTest::newRow("failed") << FakeReply::failed();
    QTest::newRow("died") << FakeReply::dead();
}

void TestServiceManager::oddAnswersGiveNothing()
{
    QFETCH(FakeReply, answer);
    FakeBinder binder;
    binder.contextManager()->setReply(2, answer);
    const auto manager = ServiceManager::open(Phone::Device);

    QVERIFY(manager->getService("package") == nullptr);
    if (QByteArray(QTest::currentDataTag()) == "failed")
        QVERIFY(isOneRefusal(takeLog(QtWarningMsg), 2));
}

void TestServiceManager::aRegisteredNameIsToldAtOnce()
{
    Phone phone;
    int told = 0;
    const HandlerId id = phone.manager->addRegistrationHandler("thing", [&] { ++told; });
    QVERIFY(id != NoHandler);
    QCOMPARE(told, 0);
    QVERIFY(phone.binder.contextManager()->transactions().empty());

    QCoreApplication::processEvents();
    QCOMPARE(told, 1);
}

void TestServiceManager::namesAreLookedUpOnceASecondWhileSomebodyWaits()
{
    FakeBinder binder;
    const auto manager = ServiceManager::open(Phone::Device);
    QElapsedTimer clock;
    clock.start();
    QVector<qint64> looks;
    binder.contextManager()->setHandler([&](const FakeTransaction &) {
        looks.append(clock.elapsed());
        return looks.size() < 5
                   ? FakeReply::data(FakeParcel().int32(0))
                   : FakeReply::data(FakeParcel().object(std::make_shared<FakeObject>()));
    });
    QStringList told;
    manager->addRegistrationHandler("one", [&] { told.append(QStringLiteral("one")); });
    manager->addRegistrationHandler("two", [&] { told.append(QStringLiteral("two")); });
    manager->addRegistrationHandler("two", [&] { told.append(QStringLiteral("two again")); });

    QTRY_COMPARE_WITH_TIMEOUT(told.size(), 3, 10000);
    QCOMPARE(told, (QStringList{QStringLiteral("one"), QStringLiteral("two"),
                                QStringLiteral("two again")}));
    QCOMPARE(looks.size(), 6); // both names, three times
    QVERIFY(looks.at(1) < 1000);
    for (int i = 2; i < looks.size(); ++i)
        QVERIFY2(looks.at(i) - looks.at(i - 2) >= 1000, qPrintable(QString::number(looks.at(i))));
    QVERIFY(looks.at(5) - looks.at(4) < 500); // together
}

void TestServiceManager::handlersThatComeAndGoDoNotHurryTheLooks()
{
    Phone phone;
    int told = 0;
    for (int i = 0; i < 5; ++i) {
        const HandlerId id = phone.manager->addRegistrationHandler("thing", [&] { ++told; });
        QCoreApplication::processEvents();
        phone.manager->removeHandler(id);
    }
    QCOMPARE(told, 1);
    QCOMPARE(phone.binder.contextManager()->transactions().size(), std::size_t(1));

    phone.manager->addRegistrationHandler("thing", [&] { ++told; });
    QTRY_COMPARE(told, 2);
}

void TestServiceManager::withoutHandlersNothingWakesUp()
{
    Phone phone;
    const HandlerId id = phone.manager->addRegistrationHandler("nothing", [] {});
    const HandlerId other = phone.manager->addRegistrationHandler("thing", [] {});
    QCoreApplication::processEvents();
    phone.manager->removeHandler(id);
    phone.manager->removeHandler(other);
    phone.manager->removeHandler(other);
    phone.manager->removeHandler(NoHandler);
    const int ioctls = phone.binder.ioctlCount();

    QTest::qWait(1300); // longer than any look would be away
    QCOMPARE(phone.binder.ioctlCount(), ioctls);
}

void TestServiceManager::handlersMayRemoveThemselvesAndOneAnother()
{
    Phone phone;
    int told = 0;
    HandlerId first = NoHandler;
    HandlerId second = NoHandler;
    first = phone.manager->addRegistrationHandler("thing", [&] {
        ++told;
        phone.manager->removeHandler(first);
        phone.manager->removeHandler(second);
    });
    second = phone.manager->addRegistrationHandler("thing", [&] { told += 100; });

    QCoreApplication::processEvents();
    QCOMPARE(told, 1);
}

void TestServiceManager::handlersMayReleaseEverything()
{
    Phone phone;
    phone.manager->addRegistrationHandler("thing", [&] {
        phone.client.reset();
        phone.manager.reset();
    });
    QTRY_VERIFY(phone.manager == nullptr);
    QTRY_VERIFY(!phone.binder.isOpen());
}

void TestServiceManager::handlersEndWithTheirServiceManager()
{
    Phone phone;
    bool told = false;
    {
        const auto other = ServiceManager::open(Phone::Device);
        other->addRegistrationHandler("thing", [&] { told = true; });
    }
    QCoreApplication::processEvents();
    QVERIFY(!told);
}

void TestServiceManager::aServiceManagerMayComeUpLater()
{
    FakeBinder binder;
    binder.killContextManager();
    const auto manager = ServiceManager::open(Phone::Device);
    bool told = false;
    manager->addRegistrationHandler("thing", [&] { told = true; });
    QCoreApplication::processEvents();

    binder.startContextManager();
    binder.addService("thing");
    QTRY_VERIFY(told);
}

void TestServiceManager::registrationsAreWrittenAsAndroidDoes_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QByteArray>("words");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QByteArray>("rest");
    QTest::addColumn<int>("size");

    const QByteArray isolated("00000000");
    const QByteArray flags("0000000008000000");
    QTest::newRow("unknown") << 0 << OneWord << 100 << flags << 132;
    QTest::newRow("27") << 27 << OneWord << 100 << isolated << 128;
    QTest::newRow("28") << 28 << OneWord << 100 << flags << 132;
    QTest::newRow("29") << 29 << TwoWords << 104 << flags << 136;
    QTest::newRow("30") << 30 << TwoWords << 104 << flags << 136;
}

void TestServiceManager::registrationsAreWrittenAsAndroidDoes()
{
    QFETCH(int, level);
    QFETCH(QByteArray, words);
    QFETCH(int, offset);
    QFETCH(QByteArray, rest);
    QFETCH(int, size);
    FakeBinder binder;
    binder.setSdkLevel(level);
    setSdkLevelSource([level] { return level; });
    const auto manager = ServiceManager::open(Phone::Device);
    const auto object = manager->createLocalObject(
        "test.IOwn", [](IncomingRequest &, quint32, quint32, Status *) { return nullptr; });

    const auto name = manager->registerName("umbra.launcher", *object);

    const std::vector<FakeTransaction> sent = binder.contextManager()->transactions();
    QCOMPARE(sent.size(), std::size_t(2)); // the first is a ping
    QCOMPARE(sent.front().code, 0x5f504e47u);
    QVERIFY(sent.front().data.isEmpty());
    QCOMPARE(sent.back().code, 3u);
    QCOMPARE(sent.back().offsets, std::vector<quint64>{static_cast<quint64>(offset)});
    const QByteArray id = FakeParcel().int64(qint64(object->id())).data().toHex();
    QCOMPARE(
        sent.back().data.toHex(),
        bytes(words + DescriptorHex + LauncherHex + "852a6273 13010000" + id + id + rest).toHex());
    QCOMPARE(sent.back().data.size(), size);
    QCOMPARE(binder.registeredObject("umbra.launcher"), object->id());
}

void TestServiceManager::registeredObjectsCanBeCalled()
{
    FakeBinder binder;
    const auto manager = ServiceManager::open(Phone::Device);
    bool called = false;
    const auto object =
        manager->createLocalObject("test.IOwn", [&](IncomingRequest &, quint32, quint32, Status *) {
            called = true;
            return nullptr;
        });
    const auto name = manager->registerName("umbra.launcher", *object);

    const auto answer = binder.call(binder.registeredObject("umbra.launcher"), 1,
                                    FakeParcel().token(QStringLiteral("test.IOwn")));
    QTRY_COMPARE(answer->count, 1);
    QVERIFY(called);
    QVERIFY(manager->getService("umbra.launcher") == nullptr); // not a remote object
}

void TestServiceManager::namesAreRegisteredWhenAServiceManagerComes()
{
    FakeBinder binder;
    binder.killContextManager();
    const auto manager = ServiceManager::open(Phone::Device);
    const auto object = manager->createLocalObject(
        "test.IOwn", [](IncomingRequest &, quint32, quint32, Status *) { return nullptr; });
    const auto name = manager->registerName("umbra.launcher", *object);
    QCOMPARE(binder.registeredObject("umbra.launcher"), quint64(0));

    binder.startContextManager();
    QTRY_COMPARE(binder.registeredObject("umbra.launcher"), object->id());
}

void TestServiceManager::namesAreRegisteredAnewAfterARestart()
{
    FakeBinder binder;
    const auto manager = ServiceManager::open(Phone::Device);
    const auto object = manager->createLocalObject(
        "test.IOwn", [](IncomingRequest &, quint32, quint32, Status *) { return nullptr; });
    const auto name = manager->registerName("umbra.launcher", *object);

    for (int restarts = 0; restarts < 2; ++restarts) {
        binder.killRuntime();
        QCOMPARE(binder.registeredObject("umbra.launcher"), quint64(0));
        QTRY_VERIFY(binder.isIdle());
        binder.startContextManager();
        QTRY_COMPARE(binder.registeredObject("umbra.launcher"), object->id());
    }
}

void TestServiceManager::releasedNamesAreNotRegisteredAnew()
{
    FakeBinder binder;
    const auto manager = ServiceManager::open(Phone::Device);
    const auto object = manager->createLocalObject(
        "test.IOwn", [](IncomingRequest &, quint32, quint32, Status *) { return nullptr; });
    auto name = manager->registerName("umbra.launcher", *object);
    const auto kept = manager->registerName("kept", *object);
    name.reset();

    binder.killRuntime();
    binder.startContextManager();
    QTRY_COMPARE(binder.registeredObject("kept"), object->id());
    QCOMPARE(binder.registeredObject("umbra.launcher"), quint64(0));
}

void TestServiceManager::namesOfDeletedObjectsAreNotRegisteredAnew()
{
    FakeBinder binder;
    const auto manager = ServiceManager::open(Phone::Device);
    const IncomingCall serve = [](IncomingRequest &, quint32, quint32, Status *) {
        return nullptr;
    };
    auto object = manager->createLocalObject("test.IOwn", serve);
    const auto other = manager->createLocalObject("test.IOwn", serve);
    const auto name = manager->registerName("umbra.launcher", *object);
    const auto otherName = manager->registerName("other", *other);
    object.reset();

    binder.killRuntime();
    binder.startContextManager();
    QTRY_COMPARE(binder.registeredObject("other"), other->id());
    QCOMPARE(binder.registeredObject("umbra.launcher"), quint64(0));
}

void TestServiceManager::refusalsAreNotTriedAgain()
{
    FakeBinder binder;
    binder.setRegistrationStatus(-1);
    const auto manager = ServiceManager::open(Phone::Device);
    const auto object = manager->createLocalObject(
        "test.IOwn", [](IncomingRequest &, quint32, quint32, Status *) { return nullptr; });
    const auto name = manager->registerName("umbra.launcher", *object);

    QCOMPARE(takeLog(QtWarningMsg),
             QStringList{QStringLiteral(
                 "Service manager refused the name \"umbra.launcher\" with status -1")});
    binder.setRegistrationStatus(StatusOk);
    const int ioctls = binder.ioctlCount();
    QTest::qWait(1300); // longer than a retry would be away
    QCOMPARE(binder.ioctlCount(), ioctls);

    binder.killRuntime();
    binder.startContextManager();
    QTRY_COMPARE(binder.registeredObject("umbra.launcher"), object->id());
}

void TestServiceManager::aRegisteredNameWakesNobodyUp()
{
    FakeBinder binder;
    const auto manager = ServiceManager::open(Phone::Device);
    const auto object = manager->createLocalObject(
        "test.IOwn", [](IncomingRequest &, quint32, quint32, Status *) { return nullptr; });
    const auto name = manager->registerName("umbra.launcher", *object);
    QCoreApplication::processEvents();
    const int ioctls = binder.ioctlCount();

    QTest::qWait(1300); // longer than a retry would be away
    QCOMPARE(binder.ioctlCount(), ioctls);
}

void TestServiceManager::openFilesEndWithTheLastHolder()
{
    FakeBinder binder;
    auto manager = ServiceManager::open(Phone::Device);
    auto object = manager->createLocalObject(
        "test.IOwn", [](IncomingRequest &, quint32, quint32, Status *) { return nullptr; });
    auto name = manager->registerName("umbra.launcher", *object);

    manager.reset();
    QVERIFY(binder.isOpen());
    object.reset();
    QVERIFY(binder.isOpen());
    name.reset();
    QVERIFY(!binder.isOpen());
}

QTEST_GUILESS_MAIN(TestServiceManager)
#include "test_servicemanager.moc"
