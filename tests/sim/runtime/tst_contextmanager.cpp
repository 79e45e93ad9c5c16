#include "runtime/contextmanager.h"
#include "sim/runtime/servicefixture.h"
#include "support/testcase.h"

#include <QSignalSpy>
#include <QtTest>

using namespace SimRuntime;

namespace {

constexpr char Descriptor[] = "android.os.IServiceManager";
constexpr quint32 GetService = 1;
constexpr quint32 CheckService = 2;
constexpr quint32 AddService = 3;
constexpr quint32 ListServices = 4;
constexpr quint32 Ping = 0x5f504e47;

const QByteArray NotFound = QByteArray::fromHex("00000000");

} // namespace

class ContextManagerTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void answersAMissingNameWithAPlainZero();
    void answersAKnownNameWithTheObjectAlone();
    void hidesAHeldName();
    void listsNamesUntilTheEnd();
    void refusesToRegister_data();
    void refusesToRegister();
    void takesTheDumpFlagsFromLevel28On_data();
    void takesTheDumpFlagsFromLevel28On();
    void replacesAnExistingName();
    void forgetsANameWhenItsOwnerDies();
    void refusesWhatItDoesNotUnderstand();
    void answersAPingWithNothing();
};

namespace {

Answer look(ServiceFixture *fixture, ContextManager *names, const char *name,
            quint32 code = CheckService)
{
    ParcelWriter request = fixture->request(Descriptor);
    request.string16(QLatin1String(name));
    return names->transact(fixture->callOf(code, request)).value();
}

Answer add(ServiceFixture *fixture, ContextManager *names, const QString &name, quint32 handle)
{
    ParcelWriter request = fixture->request(Descriptor);
    request.string16(name);
    request.remoteObject(handle);
    request.int32(0);
    if (fixture->environment().sdk >= 28)
        request.int32(8);
    return names->transact(fixture->callOf(AddService, request)).value();
}

QByteArray handleObject(const char *handle)
{
    return QByteArray::fromHex("852a687313010000") + QByteArray::fromHex(handle) +
           QByteArray(15, 0);
}

} // namespace

void ContextManagerTest::answersAMissingNameWithAPlainZero()
{
    ServiceFixture fixture;
    ContextManager names(fixture.environment());

    for (const quint32 code : {GetService, CheckService}) {
        const Answer answer = look(&fixture, &names, "package", code);
        QCOMPARE(answer.status, StatusOk);
        QCOMPARE(answer.parcel, (Parcel{NotFound, {}}));
    }
}

void ContextManagerTest::answersAKnownNameWithTheObjectAlone()
{
    ServiceFixture fixture;
    ContextManager names(fixture.environment());
    QSignalSpy added(&names, &ContextManager::added);
    names.addOwn(QStringLiteral("package"), 3);

    QCOMPARE(add(&fixture, &names, QStringLiteral("umbra.launcher"), 5).parcel.data,
             QByteArray::fromHex("00000000"));

    QCOMPARE(look(&fixture, &names, "umbra.launcher").parcel, (Parcel{handleObject("05"), {0}}));
    QCOMPARE(look(&fixture, &names, "package").parcel.data.left(9).toHex(),
             QByteArray("852a627313010000") + "03");
    QTRY_COMPARE(added.size(), 1);
    QCOMPARE(added.constFirst().constFirst().toString(), QStringLiteral("umbra.launcher"));
}

void ContextManagerTest::hidesAHeldName()
{
    ServiceFixture fixture;
    ContextManager names(fixture.environment());
    names.addOwn(QStringLiteral("package"), 3);

    names.hold(QStringLiteral("package"));
    QCOMPARE(look(&fixture, &names, "package").parcel.data, NotFound);

    names.releaseName(QStringLiteral("package"));
    QCOMPARE(look(&fixture, &names, "package").parcel.data.size(), 24);
}

void ContextManagerTest::listsNamesUntilTheEnd()
{
    ServiceFixture fixture;
    ContextManager names(fixture.environment());
    names.addOwn(QStringLiteral("a"), 3);
    const auto list = [&](qint32 index) {
        ParcelWriter request = fixture.request(Descriptor);
        request.int32(index);
        request.int32(15);
        return names.transact(fixture.callOf(ListServices, request)).value();
    };

    QCOMPARE(list(0).parcel.data, QByteArray::fromHex("0100000061000000"));
    QCOMPARE(list(1).status, StatusPermissionDenied);
    QCOMPARE(list(-1).status, StatusPermissionDenied);
}

void ContextManagerTest::refusesToRegister_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<quint32>("uid");
    QTest::addColumn<bool>("refused");
    QTest::newRow("root") << QStringLiteral("a") << 0U << false;
    QTest::newRow("127 units") << QString(127, QLatin1Char('a')) << 0U << false;
    QTest::newRow("128 units") << QString(128, QLatin1Char('a')) << 0U << true;
    QTest::newRow("no name") << QStringLiteral("") << 0U << true;
    QTest::newRow("an app") << QStringLiteral("a") << 10000U << true;
    QTest::newRow("an app of another user") << QStringLiteral("a") << 1010001U << true;
    QTest::newRow("a system process of another user") << QStringLiteral("a") << 1001000U << false;
    QTest::newRow("an unmapped user") << QStringLiteral("a") << 4294967295U << true;
}

void ContextManagerTest::refusesToRegister()
{
    QFETCH(QString, name);
    QFETCH(quint32, uid);
    QFETCH(bool, refused);
    ServiceFixture fixture;
    ContextManager names(fixture.environment());
    fixture.setUid(uid);

    const Answer answer = add(&fixture, &names, name, 5);

    QCOMPARE(answer.status, refused ? StatusPermissionDenied : StatusOk);
    QCOMPARE(names.isRegistered(name), !refused);
    QCOMPARE(takeLog(QtWarningMsg).size(), refused ? 1 : 0);
}

void ContextManagerTest::takesTheDumpFlagsFromLevel28On_data()
{
    QTest::addColumn<int>("sdk");
    QTest::newRow("27") << 27;
    QTest::newRow("28") << 28;
    QTest::newRow("29") << 29;
}

void ContextManagerTest::takesTheDumpFlagsFromLevel28On()
{
    QFETCH(int, sdk);
    ServiceFixture fixture(sdk);
    ContextManager names(fixture.environment());

    add(&fixture, &names, QStringLiteral("umbra.launcher"), 5);

    QVERIFY(names.isRegistered(QStringLiteral("umbra.launcher")));
}

void ContextManagerTest::replacesAnExistingName()
{
    ServiceFixture fixture;
    ContextManager names(fixture.environment());
    add(&fixture, &names, QStringLiteral("umbra.launcher"), 5);
    add(&fixture, &names, QStringLiteral("umbra.launcher"), 6);
    QCoreApplication::processEvents();

    QCOMPARE(look(&fixture, &names, "umbra.launcher").parcel.data, handleObject("06"));
    QVector<quint32> commands;
    for (const auto &written : fixture.driver().takeWritten())
        commands.append(written.command);
    QCOMPARE(commands.count(BC_ACQUIRE), 2);
    QCOMPARE(commands.count(BC_RELEASE), 1);
    QCOMPARE(commands.count(BC_CLEAR_DEATH_NOTIFICATION), 1);
}

void ContextManagerTest::forgetsANameWhenItsOwnerDies()
{
    ServiceFixture fixture;
    ContextManager names(fixture.environment());
    add(&fixture, &names, QStringLiteral("umbra.launcher"), 5);
    QCoreApplication::processEvents();
    quint64 cookie = 0;
    for (const auto &written : fixture.driver().takeWritten()) {
        if (written.command == BC_REQUEST_DEATH_NOTIFICATION)
            cookie = payloadAs<binder_handle_cookie>({written.command, written.payload}).cookie;
    }

    fixture.driver().give(driverCommand(BR_DEAD_BINDER, cookie));
    QTRY_VERIFY(!names.isRegistered(QStringLiteral("umbra.launcher")));

    QCOMPARE(look(&fixture, &names, "umbra.launcher").parcel.data, NotFound);
    QCoreApplication::processEvents();
    QCOMPARE(fixture.driver().takeWritten().constLast().command, quint32(BC_RELEASE));
}

void ContextManagerTest::refusesWhatItDoesNotUnderstand()
{
    ServiceFixture fixture;
    ContextManager names(fixture.environment());
    ParcelWriter wrongToken = fixture.request("android.os.IServiceManagerX");
    wrongToken.string16(QStringLiteral("package"));
    ParcelWriter noName = fixture.request(Descriptor);
    ParcelWriter unknownCode = fixture.request(Descriptor);

    QCOMPARE(names.transact(fixture.callOf(CheckService, wrongToken))->status,
             StatusPermissionDenied);
    QCOMPARE(names.transact(fixture.callOf(CheckService, noName))->status, StatusPermissionDenied);
    QCOMPARE(names.transact(fixture.callOf(99, unknownCode))->status, StatusPermissionDenied);
    QCOMPARE(takeLog(QtWarningMsg).size(), 3);
}

void ContextManagerTest::answersAPingWithNothing()
{
    ServiceFixture fixture;
    ContextManager names(fixture.environment());

    const auto answer = names.transact(fixture.callOf(Ping, ParcelWriter()));

    QCOMPARE(answer->status, StatusOk);
    QVERIFY(answer->parcel.data.isEmpty());
}

QTEST_GUILESS_MAIN(ContextManagerTest)
#include "tst_contextmanager.moc"
