#include "binder/binderparcel.h"
#include "binder/umbrabinderservice.h"
#include "fakes/fakebinder.h"
#include "fakes/runtimehost.h"
#include "platform/binder/incomingdata.h"
#include "platform/binder/message.h"
#include "platform/binder/outgoingdata.h"
#include "support/testcase.h"

#include <QPointer>
#include <QtTest>

#include <algorithm>
#include <functional>

namespace {

const QString Category = QStringLiteral("com.corvo.bramd.service");

constexpr char Name[] = "host.thing";
constexpr char Descriptor[] = "test.IHostThing";
constexpr char Device[] = "/dev/marshhopper";

/// Answers with its request's first number plus one; refuses code 9.
class Adder : public UmbraBinderService
{
public:
    Adder()
        : UmbraBinderService(Name, Descriptor, Device)
    {
    }

    bool processRequest(quint32 code, BinderParcel *request, BinderParcel *reply) override
    {
        const int number = request->readInt32();
        numbers.append(number);
        reply->writeInt32(number + 1);
        afterwards(this);
        return code != 9;
    }

    QVector<int> numbers;
    std::function<void(Adder *)> afterwards = [](Adder *) {};
};

FakeParcel token()
{
    return FakeParcel().token(QLatin1String(Descriptor), {0});
}

QByteArray word(qint32 value)
{
    return FakeParcel().int32(value).data();
}

int registrations(const FakeBinder &binder)
{
    const auto &transactions = binder.contextManager()->transactions();
    return static_cast<int>(std::count_if(transactions.begin(), transactions.end(),
                                          [](const auto &call) { return call.code == 3; }));
}

} // namespace

class UmbraBinderServiceTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void registersWhenTheUnitIsActivating();
    void registersAtOnceWhenTheUnitIsStarted_data();
    void registersAtOnceWhenTheUnitIsStarted();
    void doesNotRegisterInOtherStates_data();
    void doesNotRegisterInOtherStates();
    void registersOnlyWhenForcedOnceTheUnitIsActive();
    void registersOnce();
    void dropsItsObjectWhenTheUnitIsDeactivating();
    void registersAnewWithTheNextStart();
    void registersAnewWhenTheDeviceWasLost();
    void warnsWithoutADeviceAndTriesAgain();
    void answersCalls();
    void answersRefusedCallsWithStatusOne();
    void servesOneWayCallsWithAReplyThatIgnoresWrites();
    void makesAReplyOnlyForCallersThatWait();
    void refusesCallsByDefault();
    void mayBeResetInsideACall();
    void mayBeDeletedInsideACall();

private:
    RuntimeHost m_host;
};

void UmbraBinderServiceTest::initTestCase()
{
    QVERIFY(m_host.start());
}

void UmbraBinderServiceTest::init()
{
    TestCase::init();
    QVERIFY(m_host.setUnitState(QStringLiteral("inactive")));
}

void UmbraBinderServiceTest::registersWhenTheUnitIsActivating()
{
    FakeBinder binder;
    Adder adder;
    QVERIFY(!binder.isOpen());
    takeLog(QtDebugMsg);

    QVERIFY(m_host.setUnitState(QStringLiteral("activating")));

    QVERIFY(binder.registeredObject(Name) != 0);
    const QStringList lines = takeLog(QtDebugMsg, Category);
    QCOMPARE(lines, QStringList({QStringLiteral("Umbra VM is \"activating\" ( \"\" )"),
                                 QStringLiteral("Registering Umbra service for host.thing")}));
}

void UmbraBinderServiceTest::registersAtOnceWhenTheUnitIsStarted_data()
{
    QTest::addColumn<QString>("state");

    QTest::newRow("activating") << QStringLiteral("activating");
    QTest::newRow("active") << QStringLiteral("active");
}

void UmbraBinderServiceTest::registersAtOnceWhenTheUnitIsStarted()
{
    QFETCH(QString, state);
    FakeBinder binder;
    QVERIFY(m_host.setUnitState(state));

    Adder adder;

    QVERIFY(binder.registeredObject(Name) != 0);
}

void UmbraBinderServiceTest::doesNotRegisterInOtherStates_data()
{
    QTest::addColumn<QString>("state");

    QTest::newRow("inactive") << QStringLiteral("inactive");
    QTest::newRow("deactivating") << QStringLiteral("deactivating");
    QTest::newRow("failed") << QStringLiteral("failed");
}

void UmbraBinderServiceTest::doesNotRegisterInOtherStates()
{
    QFETCH(QString, state);
    FakeBinder binder;
    QVERIFY(m_host.setUnitState(state));

    Adder adder;
    adder.onServiceStateChanged();

    QCOMPARE(binder.timesOpened(), 0);
}

void UmbraBinderServiceTest::registersOnlyWhenForcedOnceTheUnitIsActive()
{
    FakeBinder binder;
    Adder adder;
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    QCOMPARE(binder.timesOpened(), 0);

    adder.onServiceStateChanged(true);

    QVERIFY(binder.registeredObject(Name) != 0);
}

void UmbraBinderServiceTest::registersOnce()
{
    FakeBinder binder;
    QVERIFY(m_host.setUnitState(QStringLiteral("activating")));
    Adder adder;
    const quint64 object = binder.registeredObject(Name);

    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    adder.onServiceStateChanged(true);

    QCOMPARE(registrations(binder), 1);
    QCOMPARE(binder.registeredObject(Name), object);
}

void UmbraBinderServiceTest::dropsItsObjectWhenTheUnitIsDeactivating()
{
    FakeBinder binder;
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    Adder adder;

    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));

    QVERIFY(!binder.isOpen());
}

void UmbraBinderServiceTest::registersAnewWithTheNextStart()
{
    FakeBinder binder;
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    Adder adder;
    const quint64 before = binder.registeredObject(Name);
    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));
    binder.killContextManager();
    binder.startContextManager();

    QVERIFY(m_host.setUnitState(QStringLiteral("activating")));

    QVERIFY(binder.registeredObject(Name) != 0);
    QVERIFY(binder.registeredObject(Name) != before);
    QCOMPARE(binder.timesOpened(), 2);
}

void UmbraBinderServiceTest::registersAnewWhenTheDeviceWasLost()
{
    FakeBinder binder;
    QVERIFY(m_host.setUnitState(QStringLiteral("activating")));
    Adder adder;
    const quint64 before = binder.registeredObject(Name);
    QVERIFY(before != 0);
    binder.breakFile();
    QVERIFY(m_host.setUnitState(QStringLiteral("failed")));
    QVERIFY(QTest::qWaitFor([this] { return takeLog(QtWarningMsg).size() == 1; }));

    QVERIFY(m_host.setUnitState(QStringLiteral("activating")));
    QTRY_VERIFY(binder.registeredObject(Name) != before);
    QCOMPARE(binder.timesOpened(), 2);
    const auto answer = binder.call(binder.registeredObject(Name), 1, token().int32(41));
    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(answer->data, word(42));
}

void UmbraBinderServiceTest::warnsWithoutADeviceAndTriesAgain()
{
    QVERIFY(m_host.setUnitState(QStringLiteral("activating")));
    auto adder = std::make_unique<Adder>();
    QCOMPARE(takeLog(QtWarningMsg, Category),
             QStringList(QStringLiteral("Unable to find Umbra service manager for host.thing")));
    FakeBinder binder;

    QVERIFY(m_host.setUnitState(QStringLiteral("active")));

    QVERIFY(binder.registeredObject(Name) != 0);
    adder.reset();
}

void UmbraBinderServiceTest::answersCalls()
{
    FakeBinder binder;
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    Adder adder;

    const auto answer = binder.call(binder.registeredObject(Name), 1, token().int32(41));

    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(answer->status, 0);
    QCOMPARE(answer->data, word(42));
    QCOMPARE(adder.numbers, QVector<int>({41}));
}

void UmbraBinderServiceTest::answersRefusedCallsWithStatusOne()
{
    FakeBinder binder;
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    Adder adder;

    const auto answer = binder.call(binder.registeredObject(Name), 9, token().int32(41));

    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(answer->status, 1);
}

void UmbraBinderServiceTest::servesOneWayCallsWithAReplyThatIgnoresWrites()
{
    FakeBinder binder;
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    Adder adder;

    const auto answer =
        binder.call(binder.registeredObject(Name), 1, token().int32(41), Binder::FlagOneWay);
    binder.call(binder.registeredObject(Name), 9, token().int32(42), Binder::FlagOneWay);

    QTRY_COMPARE(adder.numbers, QVector<int>({41, 42}));
    QTRY_VERIFY(binder.isIdle());
    QCOMPARE(answer->count, 0);
}

void UmbraBinderServiceTest::makesAReplyOnlyForCallersThatWait()
{
    FakeBinder binder;
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    Adder adder;
    Binder::IncomingRequest request(
        std::make_unique<Binder::IncomingData>(token().int32(41).data()), Descriptor);
    Binder::Status status = -7;

    const auto waiting = adder.handleTransaction(request, 1, 0, &status);
    QCOMPARE(status, 0);
    QCOMPARE(waiting->data().bytes(), word(42));

    QVERIFY(adder.handleTransaction(request, 9, Binder::FlagOneWay, &status) == nullptr);
    QCOMPARE(status, 1);
}

void UmbraBinderServiceTest::refusesCallsByDefault()
{
    FakeBinder binder;
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    UmbraBinderService service(Name, Descriptor, Device);

    const auto answer = binder.call(binder.registeredObject(Name), 1, token());

    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(answer->status, 1);
    QCOMPARE(takeLog(QtCriticalMsg, Category),
             QStringList(QStringLiteral("ProcessRequest not implemented for  host.thing")));
}

void UmbraBinderServiceTest::mayBeResetInsideACall()
{
    FakeBinder binder;
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    Adder adder;
    adder.afterwards = [](Adder *self) { self->reset(); };

    const auto answer = binder.call(binder.registeredObject(Name), 1, token().int32(41));

    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(answer->data, word(42));
    QTRY_VERIFY(!binder.isOpen());
}

void UmbraBinderServiceTest::mayBeDeletedInsideACall()
{
    FakeBinder binder;
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
    QPointer<Adder> adder = new Adder;
    adder->afterwards = [](Adder *self) { self->deleteLater(); };

    const auto answer = binder.call(binder.registeredObject(Name), 1, token().int32(41));

    QTRY_VERIFY(adder.isNull());
    QTRY_COMPARE(answer->count, 1);
    QCOMPARE(answer->data, word(42));
    QTRY_VERIFY(!binder.isOpen());
}

QTEST_GUILESS_MAIN(UmbraBinderServiceTest)
#include "tst_umbrabinderservice.moc"
