#include "daemon/callercheck.h"
#include "platform/host/devicepolicy.h"
#include "support/testcase.h"

#include <QCoreApplication>
#include <QDBusContext>
#include <QtTest>

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

constexpr uint noProcess = 0;

} // namespace

class TestCallerCheck : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void group_or_owner_make_a_process_privileged_data();
    void group_or_owner_make_a_process_privileged();
    void the_policy_decides_about_other_callers_data();
    void the_policy_decides_about_other_callers();
    void a_process_of_root_passes_whatever_the_policy_says();
    void the_daemon_itself_passes_whatever_the_policy_says();
};

void TestCallerCheck::group_or_owner_make_a_process_privileged_data()
{
    QTest::addColumn<QString>("group");
    QTest::addColumn<QString>("owner");
    QTest::addColumn<bool>("privileged");

    const QString user = QStringLiteral("user");
    QTest::newRow("group privileged") << QStringLiteral("privileged") << user << true;
    QTest::newRow("group disk") << QStringLiteral("disk") << user << true;
    QTest::newRow("owner root") << user << QStringLiteral("root") << true;
    QTest::newRow("group root is not enough") << QStringLiteral("root") << user << false;
    QTest::newRow("owner disk is not enough") << user << QStringLiteral("disk") << false;
    QTest::newRow("names are compared whole")
        << QStringLiteral("disks") << QStringLiteral("Root") << false;
    QTest::newRow("no process") << QString() << QString() << false;
}

void TestCallerCheck::group_or_owner_make_a_process_privileged()
{
    QFETCH(QString, group);
    QFETCH(QString, owner);

    QTEST(isPrivileged(group, owner), "privileged");
}

void TestCallerCheck::the_policy_decides_about_other_callers_data()
{
    QTest::addColumn<bool>("allowed");

    QTest::newRow("allowed") << true;
    QTest::newRow("not allowed") << false;
}

void TestCallerCheck::the_policy_decides_about_other_callers()
{
    QFETCH(bool, allowed);
    FakePolicy policy(allowed);

    QCOMPARE(CallerCheck(&policy).processPasses(noProcess), allowed);

    QCOMPARE(policy.questions, 1);
}

void TestCallerCheck::a_process_of_root_passes_whatever_the_policy_says()
{
    FakePolicy policy(false);

    QVERIFY(
        CallerCheck(&policy).processPasses(static_cast<uint>(QCoreApplication::applicationPid())));

    QCOMPARE(policy.questions, 0);
}

void TestCallerCheck::the_daemon_itself_passes_whatever_the_policy_says()
{
    FakePolicy policy(false);

    QVERIFY(CallerCheck(&policy).passes(QDBusContext()));

    QCOMPARE(policy.questions, 0);
}

QTEST_GUILESS_MAIN(TestCallerCheck)
#include "test_callercheck.moc"
