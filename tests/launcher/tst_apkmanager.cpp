#include "binder/binderparcel.h"
#include "fakes/fakebinder.h"
#include "launcher/apkmanager.h"
#include "platform/binder/incomingdata.h"
#include "platform/binder/message.h"
#include "runtime/servicecontroller.h"
#include "support/testcase.h"

#include <QtTest>

#include <limits>

namespace {

const QString Category = QStringLiteral("com.corvo.bramd.launcher");
const QString Descriptor = QStringLiteral("umbra.applications.IUmbraNativeLauncherService");

/// Serves one call whose fields are these bytes; whether it was handled.
bool serve(ApkManager *manager, quint32 code, const QByteArray &fields)
{
    const Binder::IncomingReply message(std::make_unique<Binder::IncomingData>(fields));
    BinderParcel request(message);
    BinderParcel reply;
    return manager->processRequest(code, &request, &reply);
}

FakeParcel launcherFields()
{
    return FakeParcel()
        .string16(QStringLiteral("a.b"))
        .string16(QStringLiteral("a.b.Main"))
        .string16(QStringLiteral("Label"))
        .string16(QStringLiteral("1.0"))
        .byteArray("icon!");
}

FakeParcel handlerFields(const QString &mimeTypes, const QString &shareMimeTypes, int multi,
                         const QString &urlSchemes, const QString &urlHandlers, int extraFlag)
{
    return FakeParcel()
        .string16(QStringLiteral("a.b"))
        .string16(QStringLiteral("a.b.Open"))
        .string16(QStringLiteral("Label"))
        .string16(QStringLiteral("Caption"))
        .string16(QStringLiteral("1.0"))
        .string16(mimeTypes)
        .string16(shareMimeTypes)
        .int32(multi)
        .string16(urlSchemes)
        .string16(urlHandlers)
        .int32(extraFlag)
        .byteArray("icon!");
}

ApkLauncher onlyLauncher(const QSignalSpy &added)
{
    return added.count() == 1 ? added.first().first().value<ApkLauncher>() : ApkLauncher();
}

} // namespace

class ApkManagerTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void readsALauncherFromItsBytes();
    void readsAHandlerFromItsBytes();
    void readsTheFlagsOfAHandler_data();
    void readsTheFlagsOfAHandler();
    void splitsTheListsOfAHandler();
    void announcesCompletionOnce();
    void announcesARemovedPackage();
    void doesNotHandleOtherCodes_data();
    void doesNotHandleOtherCodes();
    void readsCallsThatAreCutShort();
    void registersWithTheRuntime();
    void answersTheRuntimesCalls();
};

void ApkManagerTest::initTestCase()
{
    // No system bus, hence no unit: the manager registers when it is told to.
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    ServiceController::instance();
}

void ApkManagerTest::readsALauncherFromItsBytes()
{
    ApkManager manager;
    QSignalSpy added(&manager, &ApkManager::addLauncher);
    const QByteArray fields = QByteArray::fromHex("03000000 6100 2e00 6200 0000"     // "a.b"
                                                  "01000000 4d00 0000"               // "M"
                                                  "02000000 c400 7000 0000 0000"     // "Äp"
                                                  "03000000 3100 2e00 3000 0000"     // "1.0"
                                                  "05000000 89 50 4e 47 00 000000"); // the icon

    QVERIFY(serve(&manager, 1, fields));

    const ApkLauncher launcher = onlyLauncher(added);
    QCOMPARE(launcher,
             ApkLauncher(QStringLiteral("\u00C4p"), QString(), QByteArray("\x89PNG\0", 5),
                         QStringLiteral("a.b"), QStringLiteral("M"), QStringLiteral("1.0"),
                         QString(), QString(), QString(), QString(), false, false));
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList({QStringLiteral("Read 5 bytes for \"a.b\" icon"),
                          QStringLiteral("Launcher added from umbra: \"\u00C4p\" ( \"a.b\" )")}));
}

void ApkManagerTest::readsAHandlerFromItsBytes()
{
    ApkManager manager;
    QSignalSpy added(&manager, &ApkManager::addLauncher);
    const QByteArray fields = QByteArray::fromHex("01000000 7000 0000"           // package "p"
                                                  "01000000 4300 0000"           // class "C"
                                                  "01000000 4c00 0000"           // label "L"
                                                  "02000000 6300 6100 0000 0000" // caption "ca"
                                                  "01000000 3200 0000"           // version "2"
                                                  "03000000 6100 2f00 6200 0000" // types "a/b"
                                                  "03000000 6300 2f00 6400 0000" // share "c/d"
                                                  "01000000"                     // multi
                                                  "03000000 7400 6500 6c00 0000" // schemes "tel"
                                                  "01000000 6800 0000"           // hosts "h"
                                                  "00000000"                     // extra flag
                                                  "02000000 ff01 0000");         // the icon

    QVERIFY(serve(&manager, 4, fields));

    QCOMPARE(onlyLauncher(added),
             ApkLauncher(QStringLiteral("L"), QStringLiteral("ca"), QByteArray("\xFF\x01"),
                         QStringLiteral("p"), QStringLiteral("C"), QStringLiteral("2"),
                         QStringLiteral("a/b"), QStringLiteral("tel"), QStringLiteral("h"),
                         QStringLiteral("c/d"), false, true));
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList({QStringLiteral("Read 2 bytes for \"p\" icon"),
                          QStringLiteral("Handler added from umbra: \"L\" \"ca\" ( \"p\" ) "
                                         "\"a/b\" \"c/d\" \"tel\" \"h\"")}));
}

void ApkManagerTest::readsTheFlagsOfAHandler_data()
{
    QTest::addColumn<int>("multiField");
    QTest::addColumn<int>("extraField");
    QTest::addColumn<bool>("multi");
    QTest::addColumn<bool>("extraFlag");

    QTest::newRow("neither") << 0 << 0 << false << false;
    QTest::newRow("multi") << 1 << 0 << true << false;
    QTest::newRow("extra flag") << 0 << 1 << false << true;
    QTest::newRow("any number but zero is true") << -1 << 256 << true << true;
}

void ApkManagerTest::readsTheFlagsOfAHandler()
{
    QFETCH(int, multiField);
    QFETCH(int, extraField);
    QFETCH(bool, multi);
    QFETCH(bool, extraFlag);
    ApkManager manager;
    QSignalSpy added(&manager, &ApkManager::addLauncher);

    const QString none;
    QVERIFY(
        serve(&manager, 4, handlerFields(none, none, multiField, none, none, extraField).data()));

    QCOMPARE(onlyLauncher(added).multi, multi);
    QCOMPARE(onlyLauncher(added).extraFlag, extraFlag);
    QCOMPARE(onlyLauncher(added).icon, QByteArray("icon!"));
}

void ApkManagerTest::splitsTheListsOfAHandler()
{
    ApkManager manager;
    QSignalSpy added(&manager, &ApkManager::addLauncher);

    QVERIFY(serve(&manager, 4,
                  handlerFields(QStringLiteral(";;"), QStringLiteral("image/*;;"), 0,
                                QStringLiteral("tel;;sms"), QStringLiteral("example.org"), 0)
                      .data()));

    QCOMPARE(onlyLauncher(added).mimeTypes,
             QStringList({QString(), QString(), QString(), QStringLiteral("x-scheme-handler/tel"),
                          QStringLiteral("x-scheme-handler/sms"),
                          QStringLiteral("x-url-handler/example.org")}));
    QCOMPARE(onlyLauncher(added).shareMimeTypes, QStringList(QStringLiteral("image/*")));
}

void ApkManagerTest::announcesCompletionOnce()
{
    ApkManager manager;
    QSignalSpy complete(&manager, &ApkManager::launchersComplete);

    QVERIFY(serve(&manager, 2, QByteArray()));

    QCOMPARE(complete.count(), 1);
    QCOMPARE(takeLog(QtDebugMsg, Category), QStringList());
}

void ApkManagerTest::announcesARemovedPackage()
{
    ApkManager manager;
    QSignalSpy removed(&manager, &ApkManager::packageRemoved);

    QVERIFY(serve(&manager, 3, FakeParcel().string16(QStringLiteral("a.b")).data()));

    QCOMPARE(removed.count(), 1);
    QCOMPARE(removed.first().first().toString(), QStringLiteral("a.b"));
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList(QStringLiteral("Package removed from umbra: \"a.b\"")));
}

void ApkManagerTest::doesNotHandleOtherCodes_data()
{
    QTest::addColumn<quint32>("code");

    QTest::newRow("0") << 0U;
    QTest::newRow("5") << 5U;
    QTest::newRow("the largest") << std::numeric_limits<quint32>::max();
}

void ApkManagerTest::doesNotHandleOtherCodes()
{
    QFETCH(quint32, code);
    ApkManager manager;
    QSignalSpy added(&manager, &ApkManager::addLauncher);
    QSignalSpy removed(&manager, &ApkManager::packageRemoved);
    QSignalSpy complete(&manager, &ApkManager::launchersComplete);

    QVERIFY(!serve(&manager, code, launcherFields().data()));

    QCOMPARE(added.count() + removed.count() + complete.count(), 0);
    QCOMPARE(takeLog(QtDebugMsg, Category),
             QStringList(QStringLiteral("Unknown binder call ( %1 )").arg(code)));
}

void ApkManagerTest::readsCallsThatAreCutShort()
{
    ApkManager manager;
    QSignalSpy added(&manager, &ApkManager::addLauncher);
    const QByteArray whole = handlerFields(QStringLiteral("a/b"), QStringLiteral("c/d"), 1,
                                           QStringLiteral("tel"), QStringLiteral("h"), 1)
                                 .data();

    for (int size = 0; size < whole.size(); size += 4) {
        for (const quint32 code : {1U, 3U, 4U})
            QVERIFY(serve(&manager, code, whole.left(size)));
    }

    QCOMPARE(added.count(), 2 * whole.size() / 4);
    QCOMPARE(added.first().first().value<ApkLauncher>(), ApkLauncher());
    // The parcel says that a field was not whole.
    takeLog(QtCriticalMsg, QStringLiteral("com.corvo.bramd.parcel"));
}

void ApkManagerTest::registersWithTheRuntime()
{
    FakeBinder runtime;
    ApkManager manager;
    QCOMPARE(runtime.registeredObject("umbra.launcher"), 0U);

    manager.onServiceStateChanged(true);

    QTRY_VERIFY(runtime.registeredObject("umbra.launcher") != 0U);
}

void ApkManagerTest::answersTheRuntimesCalls()
{
    FakeBinder runtime;
    ApkManager manager;
    manager.onServiceStateChanged(true);
    QTRY_VERIFY(runtime.registeredObject("umbra.launcher") != 0U);
    const quint64 object = runtime.registeredObject("umbra.launcher");
    QSignalSpy removed(&manager, &ApkManager::packageRemoved);
    const std::vector<qint32> tokenWords(qgetenv("TEST_SDK_LEVEL") == "28" ? 1 : 2, 0);
    const FakeParcel request =
        FakeParcel().token(Descriptor, tokenWords).string16(QStringLiteral("a.b"));

    const auto handled = runtime.call(object, 3, request);
    QTRY_COMPARE(handled->count, 1);
    QCOMPARE(handled->status, Binder::Status(0));
    QCOMPARE(handled->data, QByteArray());
    QCOMPARE(removed.count(), 1);
    QCOMPARE(removed.first().first().toString(), QStringLiteral("a.b"));

    const auto refused = runtime.call(object, 5, request);
    QTRY_COMPARE(refused->count, 1);
    QCOMPARE(refused->status, Binder::Status(1));

    runtime.call(object, 3, request, Binder::FlagOneWay);
    QTRY_COMPARE(removed.count(), 2);
    QTRY_VERIFY(runtime.isIdle());
}

QTEST_GUILESS_MAIN(ApkManagerTest)
#include "tst_apkmanager.moc"
