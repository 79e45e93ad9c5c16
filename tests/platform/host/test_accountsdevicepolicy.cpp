#include "platform/host/accountsdevicepolicy.h"
#include "platform/host/fakeaccounts.h"
#include "platform/host/privatebus.h"
#include "support/testcase.h"

#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QtTest>

Q_DECLARE_METATYPE(FakeAccounts::Answer)

namespace {

constexpr uid_t SeatUser = 100000;

using Answer = FakeAccounts::Answer;

Answer account()
{
    return {QVariant::fromValue(QDBusObjectPath(QStringLiteral("/org/freedesktop/Accounts/User7"))),
            {},
            false};
}

Answer filter(const QVariant &value)
{
    return {QVariant::fromValue(QDBusVariant(value)), {}, false};
}

Answer error(const char *name)
{
    return {{}, QLatin1String(name), false};
}

Answer silence()
{
    return {{}, {}, true};
}

QString refusal(const char *reason)
{
    return QStringLiteral("Cannot read the device policy on app installation: \"%1\"")
        .arg(QLatin1String(reason));
}

} // namespace

class TestAccountsDevicePolicy : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void the_answer_decides_data();
    void the_answer_decides();
    void the_filter_of_the_seats_user_is_asked_for();
    void no_answer_in_time_means_not_allowed_data();
    void no_answer_in_time_means_not_allowed();
    void without_the_service_there_is_no_policy();
    void without_a_user_on_the_seat_nothing_is_allowed();
    void without_the_bus_nothing_is_allowed();

private:
    QDBusConnection client() const;
    AccountsDevicePolicy policy(int timeoutMs = AccountsDevicePolicy::AnswerTimeoutMs) const;

    PrivateBus m_bus;
};

void TestAccountsDevicePolicy::initTestCase()
{
    QVERIFY(m_bus.start());
}

QDBusConnection TestAccountsDevicePolicy::client() const
{
    return QDBusConnection::connectToBus(m_bus.address(), QStringLiteral("client"));
}

AccountsDevicePolicy TestAccountsDevicePolicy::policy(int timeoutMs) const
{
    return AccountsDevicePolicy(
        client(), [] { return std::optional<uid_t>(SeatUser); }, timeoutMs);
}

void TestAccountsDevicePolicy::the_answer_decides_data()
{
    QTest::addColumn<Answer>("user");
    QTest::addColumn<Answer>("allowUserInstallation");
    QTest::addColumn<bool>("allowed");
    QTest::addColumn<QString>("warning");

    QTest::newRow("allowed") << account() << filter(true) << true << QString();
    QTest::newRow("denied") << account() << filter(false) << false << QString();
    QTest::newRow("an interface unknown to a GDBus service is no policy")
        << account() << error("org.freedesktop.DBus.Error.InvalidArgs") << true << QString();
    QTest::newRow("an unknown interface is no policy")
        << account() << error("org.freedesktop.DBus.Error.UnknownInterface") << true << QString();
    QTest::newRow("an unknown property is no policy")
        << account() << error("org.freedesktop.DBus.Error.UnknownProperty") << true << QString();
    QTest::newRow("a user unknown to the service may not")
        << error("org.freedesktop.Accounts.Error.Failed") << filter(true) << false
        << refusal("no luck");
    QTest::newRow("invalid arguments to the first question are no answer")
        << error("org.freedesktop.DBus.Error.InvalidArgs") << filter(true) << false
        << refusal("no luck");
    QTest::newRow("a filter that may not be read denies")
        << account() << error("org.freedesktop.DBus.Error.AccessDenied") << false
        << refusal("no luck");
    QTest::newRow("a value of another type denies")
        << account() << filter(1) << false << refusal("the answer is not a boolean");
}

void TestAccountsDevicePolicy::the_answer_decides()
{
    QFETCH(Answer, user);
    QFETCH(Answer, allowUserInstallation);
    QFETCH(QString, warning);
    FakeAccounts accounts(user, allowUserInstallation);
    QVERIFY(accounts.serve(m_bus.address()));

    QTEST(policy().mayInstallApps(), "allowed");

    QCOMPARE(takeLog(QtWarningMsg).join(QLatin1Char('\n')), warning);
}

void TestAccountsDevicePolicy::the_filter_of_the_seats_user_is_asked_for()
{
    FakeAccounts accounts(account(), filter(true));
    QVERIFY(accounts.serve(m_bus.address()));

    QVERIFY(policy().mayInstallApps());

    QCOMPARE(accounts.questions(),
             QStringList({QStringLiteral("/org/freedesktop/Accounts org.freedesktop.Accounts "
                                         "FindUserById 100000"),
                          QStringLiteral("/org/freedesktop/Accounts/User7 "
                                         "org.freedesktop.DBus.Properties Get "
                                         "com.endlessm.ParentalControls.AppFilter "
                                         "AllowUserInstallation")}));
}

void TestAccountsDevicePolicy::no_answer_in_time_means_not_allowed_data()
{
    QTest::addColumn<Answer>("user");

    QTest::newRow("to the first question") << silence();
    QTest::newRow("to the second question") << account();
}

void TestAccountsDevicePolicy::no_answer_in_time_means_not_allowed()
{
    QFETCH(Answer, user);
    FakeAccounts accounts(user, silence());
    QVERIFY(accounts.serve(m_bus.address()));

    QVERIFY(!policy(200).mayInstallApps());

    QCOMPARE(takeLog(QtWarningMsg).size(), 1);
}

void TestAccountsDevicePolicy::without_the_service_there_is_no_policy()
{
    QVERIFY(policy().mayInstallApps());
}

void TestAccountsDevicePolicy::without_a_user_on_the_seat_nothing_is_allowed()
{
    FakeAccounts accounts(account(), filter(true));
    QVERIFY(accounts.serve(m_bus.address()));
    AccountsDevicePolicy policy(client(), [] { return std::optional<uid_t>(); });

    QVERIFY(!policy.mayInstallApps());

    QVERIFY(takeLogLine(QtWarningMsg, refusal("no user is active on the seat")));
    QCOMPARE(accounts.questions(), QStringList());
}

void TestAccountsDevicePolicy::without_the_bus_nothing_is_allowed()
{
    const QDBusConnection none = QDBusConnection::connectToBus(
        QStringLiteral("unix:path=/nonexistent"), QStringLiteral("none"));
    AccountsDevicePolicy policy(none, [] { return std::optional<uid_t>(SeatUser); });

    QVERIFY(!policy.mayInstallApps());

    QVERIFY(takeLogLine(QtWarningMsg, refusal("Not connected to D-Bus server")));
}

QTEST_GUILESS_MAIN(TestAccountsDevicePolicy)
#include "test_accountsdevicepolicy.moc"
