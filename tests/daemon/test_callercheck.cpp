#include "daemon/buscredentials.h"
#include "daemon/callercheck.h"
#include "daemon/processowner.h"
#include "platform/host/devicepolicy.h"
#include "platform/host/privatebus.h"
#include "support/otherusers.h"
#include "support/testcase.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusMessage>
#include <QtTest>

#include <unistd.h>

namespace {

class FakePolicy : public DevicePolicy
{
public:
    explicit FakePolicy(bool allowed)
        : m_allowed(allowed)
    {
    }

    bool mayInstallApps() override
    {
        ++questions;
        return m_allowed;
    }

    int questions = 0;

private:
    bool m_allowed;
};

constexpr uint root = 0;
constexpr uint user = 100000;
constexpr uint noProcess = 0xffffffff;

uint thisProcess()
{
    return static_cast<uint>(::getpid());
}

BusCredentials credentials(std::optional<uint> processId, std::optional<uint> userId,
                           const QVector<uint> &groups = {})
{
    BusCredentials made;
    made.processId = processId;
    made.user = userId;
    made.groups = groups;
    return made;
}

/// A service on a bus that asks who calls it.
class CallTaker : public QObject, protected QDBusContext
{
    Q_OBJECT

public:
    explicit CallTaker(DevicePolicy *policy)
        : m_check(policy)
    {
    }

    /// Whether callers are judged only once they have left the bus.
    bool isLate = false;
    std::optional<CallerVerdict> verdict;

public Q_SLOTS:
    void take()
    {
        while (isLate && connection().interface()->isServiceRegistered(message().service()))
            QThread::yieldCurrentThread();
        verdict = m_check.verdict(*this);
    }

private:
    CallerCheck m_check;
};

} // namespace

Q_DECLARE_METATYPE(BusCredentials)

class TestCallerCheck : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void group_or_owner_make_a_process_privileged_data();
    void group_or_owner_make_a_process_privileged();
    void a_process_that_the_bus_contradicts_is_not_privileged_data();
    void a_process_that_the_bus_contradicts_is_not_privileged();
    void files_are_read_with_the_rights_of_the_connection_data();
    void files_are_read_with_the_rights_of_the_connection();
    void the_policy_decides_about_other_callers_data();
    void the_policy_decides_about_other_callers();
    void a_process_of_root_passes_whatever_the_policy_says();
    void a_process_that_has_root_from_its_program_passes();
    void the_daemon_itself_passes_whatever_the_policy_says();
    void a_caller_on_the_bus_is_judged_by_its_process();
    void a_caller_that_has_left_the_bus_is_judged_by_the_policy();
};

void TestCallerCheck::group_or_owner_make_a_process_privileged_data()
{
    QTest::addColumn<QString>("group");
    QTest::addColumn<QString>("owner");
    QTest::addColumn<bool>("privileged");

    const QString name = QStringLiteral("user");
    QTest::newRow("group privileged") << QStringLiteral("privileged") << name << true;
    QTest::newRow("group disk") << QStringLiteral("disk") << name << true;
    QTest::newRow("owner root") << name << QStringLiteral("root") << true;
    QTest::newRow("group root is not enough") << QStringLiteral("root") << name << false;
    QTest::newRow("owner disk is not enough") << name << QStringLiteral("disk") << false;
    QTest::newRow("names are compared whole")
        << QStringLiteral("disks") << QStringLiteral("Root") << false;
    QTest::newRow("no names") << QString() << QString() << false;
}

void TestCallerCheck::group_or_owner_make_a_process_privileged()
{
    QFETCH(QString, group);
    QFETCH(QString, owner);
    const ProcessOwner process{user, user, owner, group};

    QTEST(isPrivileged(process, credentials(thisProcess(), user, {user})), "privileged");
}

void TestCallerCheck::a_process_that_the_bus_contradicts_is_not_privileged_data()
{
    QTest::addColumn<BusCredentials>("connection");
    QTest::addColumn<bool>("privileged");

    const uint id = thisProcess();
    QTest::newRow("agrees") << credentials(id, user, {5, 6}) << true;
    QTest::newRow("knows no groups") << credentials(id, user) << true;
    QTest::newRow("other user") << credentials(id, user + 1, {6}) << false;
    QTest::newRow("root, who has become the user") << credentials(id, root, {6}) << false;
    QTest::newRow("no user") << credentials(id, std::nullopt, {6}) << false;
    QTest::newRow("other groups") << credentials(id, user, {user, 5}) << false;
}

void TestCallerCheck::a_process_that_the_bus_contradicts_is_not_privileged()
{
    QFETCH(BusCredentials, connection);
    const ProcessOwner process{user, 6, QStringLiteral("root"), QStringLiteral("disk")};

    QTEST(isPrivileged(process, connection), "privileged");
}

void TestCallerCheck::files_are_read_with_the_rights_of_the_connection_data()
{
    QTest::addColumn<BusCredentials>("connection");
    QTest::addColumn<uint>("reader");
    QTest::addColumn<QVector<uint>>("groups");

    const uint nobody = UserRights::nobody;
    QTest::newRow("user with groups")
        << credentials(1, user, {5, 6}) << user << QVector<uint>{5, 6};
    QTest::newRow("user without") << credentials(1, user) << user << QVector<uint>();
    QTest::newRow("unknown") << credentials({}, {}, {5}) << nobody << QVector<uint>();
    QTest::newRow("root, of whom nothing is left")
        << credentials(1, root, {root, 6}) << nobody << QVector<uint>();
}

void TestCallerCheck::files_are_read_with_the_rights_of_the_connection()
{
    QFETCH(BusCredentials, connection);

    const UserRights rights = rightsOf(connection);

    QTEST(rights.user, "reader");
    QTEST(rights.groups, "groups");
}

void TestCallerCheck::the_policy_decides_about_other_callers_data()
{
    QTest::addColumn<BusCredentials>("connection");
    QTest::addColumn<bool>("allowed");

    for (const bool allowed : {true, false}) {
        const auto row = [allowed](const char *name) -> QTestData & {
            return QTest::addRow("%s, %s", name, allowed ? "allowed" : "not allowed");
        };
        row("nothing known") << BusCredentials() << allowed;
        row("process has ended") << credentials(noProcess, root, {root}) << allowed;
        row("number belongs to root's process now")
            << credentials(thisProcess(), user, {user}) << allowed;
    }
}

void TestCallerCheck::the_policy_decides_about_other_callers()
{
    QFETCH(BusCredentials, connection);
    QFETCH(bool, allowed);
    FakePolicy policy(allowed);

    const CallerVerdict verdict = CallerCheck(&policy).verdict(connection);

    QCOMPARE(verdict.passes, allowed);
    QCOMPARE(policy.questions, 1);
    QVERIFY(verdict.reads);
    QCOMPARE(verdict.reads->user, rightsOf(connection).user);
}

void TestCallerCheck::a_process_of_root_passes_whatever_the_policy_says()
{
    FakePolicy policy(false);

    const CallerVerdict verdict =
        CallerCheck(&policy).verdict(credentials(thisProcess(), root, {::getegid()}));

    QVERIFY(verdict.passes);
    QVERIFY(!verdict.reads);
    QCOMPARE(policy.questions, 0);
}

void TestCallerCheck::a_process_that_has_root_from_its_program_passes()
{
    if (!OtherUsers::exist())
        QSKIP("Needs a second user: run the tests as root");
    const OtherUsers::WaitingProcess process(
        [] { return ::setresgid(user, user, user) == 0 && ::setresuid(user, root, root) == 0; });
    FakePolicy policy(false);

    // The bus, too, sees the effective user.
    const CallerVerdict verdict =
        CallerCheck(&policy).verdict(credentials(static_cast<uint>(process.id()), root, {user}));

    QVERIFY(verdict.passes);
    QCOMPARE(policy.questions, 0);
}

void TestCallerCheck::the_daemon_itself_passes_whatever_the_policy_says()
{
    FakePolicy policy(false);

    const CallerVerdict verdict = CallerCheck(&policy).verdict(QDBusContext());

    QVERIFY(verdict.passes);
    QVERIFY(!verdict.reads);
    QCOMPARE(policy.questions, 0);
}

void TestCallerCheck::a_caller_on_the_bus_is_judged_by_its_process()
{
    FakePolicy policy(false);
    CallTaker taker(&policy);
    PrivateBus bus;
    QVERIFY(bus.start());
    {
        QDBusConnection service =
            QDBusConnection::connectToBus(bus.address(), QStringLiteral("service"));
        const QDBusConnection client =
            QDBusConnection::connectToBus(bus.address(), QStringLiteral("client"));
        QVERIFY(
            service.registerObject(QStringLiteral("/"), &taker, QDBusConnection::ExportAllSlots));
        client.send(QDBusMessage::createMethodCall(service.baseService(), QStringLiteral("/"),
                                                   QString(), QStringLiteral("take")));

        QTRY_VERIFY(taker.verdict);
    }
    QDBusConnection::disconnectFromBus(QStringLiteral("client"));
    QDBusConnection::disconnectFromBus(QStringLiteral("service"));

    QVERIFY(taker.verdict->passes);
    QVERIFY(!taker.verdict->reads);
    QCOMPARE(policy.questions, 0);
}

void TestCallerCheck::a_caller_that_has_left_the_bus_is_judged_by_the_policy()
{
    FakePolicy policy(true);
    CallTaker taker(&policy);
    taker.isLate = true;
    PrivateBus bus;
    QVERIFY(bus.start());
    {
        QDBusConnection service =
            QDBusConnection::connectToBus(bus.address(), QStringLiteral("service"));
        QVERIFY(
            service.registerObject(QStringLiteral("/"), &taker, QDBusConnection::ExportAllSlots));
        {
            const QDBusConnection client =
                QDBusConnection::connectToBus(bus.address(), QStringLiteral("client"));
            QDBusMessage call = QDBusMessage::createMethodCall(
                service.baseService(), QStringLiteral("/"), QString(), QStringLiteral("take"));
            call.setDelayedReply(true);
            QVERIFY(client.send(call));
        }
        QDBusConnection::disconnectFromBus(QStringLiteral("client"));

        QTRY_VERIFY(taker.verdict);
    }
    QDBusConnection::disconnectFromBus(QStringLiteral("service"));

    QVERIFY(taker.verdict->passes);
    QCOMPARE(policy.questions, 1);
    QVERIFY(taker.verdict->reads);
    QCOMPARE(taker.verdict->reads->user, UserRights::nobody);
    QVERIFY(taker.verdict->reads->groups.isEmpty());
}

QTEST_GUILESS_MAIN(TestCallerCheck)
#include "test_callercheck.moc"
