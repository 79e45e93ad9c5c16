#include "support/testcase.h"
#include "tools/common/callfailure.h"

#include <QDBusMessage>
#include <QtTest>

Q_DECLARE_METATYPE(ExitStatus)

namespace {

constexpr int TimeoutMs = 60000;

QDBusError dbusError(const QString &name, const QString &text)
{
    return QDBusError(QDBusMessage::createError(name, text));
}

} // namespace

class TestCallFailure : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void an_error_becomes_a_status_and_a_sentence_data();
    void an_error_becomes_a_status_and_a_sentence();
    void a_missing_answer_is_late_or_its_daemon_has_gone_data();
    void a_missing_answer_is_late_or_its_daemon_has_gone();
    void the_time_is_told_in_whole_seconds();
    void what_the_error_says_stays_one_line();
    void an_error_that_says_nothing_is_named();
};

void TestCallFailure::an_error_becomes_a_status_and_a_sentence_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<ExitStatus>("status");
    QTest::addColumn<QString>("sentence");

    const QString dbus = QStringLiteral("org.freedesktop.DBus.Error.");
    const QString noBus =
        QStringLiteral("The system bus cannot be reached (why). Look at “systemctl status dbus”.");
    const QString notStarted =
        QStringLiteral("bramd does not run and cannot be started (why). Look at “systemctl status "
                       "bramd”.");
    const QString notReady =
        QStringLiteral("bramd is not ready yet, as before a user has logged in (why). Try again "
                       "after the login, or look at “systemctl status bramd”.");
    const QString notAllowed =
        QStringLiteral("You may not call bramd (why). Ask the administrator for one of the groups "
                       "that bramd(8) names, and log in anew.");
    const QString notUnderstood =
        QStringLiteral("The bramd that runs does not understand this request (why). Restart it "
                       "with “systemctl restart bramd” if it was upgraded since it started.");
    const QString other =
        QStringLiteral("bramd has not taken the request (why). Look at “journalctl -u bramd”.");

    const auto row = [](const char *description, const QString &name, ExitStatus status,
                        const QString &sentence) {
        QTest::newRow(description) << name << status << sentence;
    };
    const ExitStatus unreachable = ExitStatus::DaemonUnreachable;
    const ExitStatus refused = ExitStatus::Refused;
    row("no connection", dbus + QLatin1String("Disconnected"), unreachable, noBus);
    row("no socket", dbus + QLatin1String("FileNotFound"), unreachable, noBus);
    row("nobody listens", dbus + QLatin1String("NoServer"), unreachable, noBus);
    row("no network", dbus + QLatin1String("NoNetwork"), unreachable, noBus);
    row("an address that is none", dbus + QLatin1String("BadAddress"), unreachable, noBus);
    row("not running, and no way to start it", dbus + QLatin1String("ServiceUnknown"), unreachable,
        notStarted);
    row("nobody owns the name", dbus + QLatin1String("NameHasNoOwner"), unreachable, notStarted);
    row("a bus that starts programs itself", dbus + QLatin1String("Spawn.ChildExited"), unreachable,
        notStarted);
    row("systemd knows no such unit", QStringLiteral("org.freedesktop.systemd1.NoSuchUnit"),
        unreachable, notStarted);
    row("the unit is masked", QStringLiteral("org.freedesktop.systemd1.UnitMasked"), unreachable,
        notStarted);
    row("it waits for a login", dbus + QLatin1String("TimedOut"), unreachable, notReady);
    row("the policy of the bus", dbus + QLatin1String("AccessDenied"), refused, notAllowed);
    row("no way into the bus", dbus + QLatin1String("AuthFailed"), refused, notAllowed);
    row("wrong arguments", dbus + QLatin1String("InvalidArgs"), refused, notUnderstood);
    row("another answer", dbus + QLatin1String("InvalidSignature"), refused, notUnderstood);
    row("no such interface", dbus + QLatin1String("UnknownInterface"), refused, notUnderstood);
    row("no such method", dbus + QLatin1String("UnknownMethod"), refused, notUnderstood);
    row("no such object", dbus + QLatin1String("UnknownObject"), refused, notUnderstood);
    row("a name that only begins like one above", dbus + QLatin1String("TimedOutTwice"), refused,
        other);
    row("any other", QStringLiteral("org.example.Error"), refused, other);
}

void TestCallFailure::an_error_becomes_a_status_and_a_sentence()
{
    QFETCH(QString, name);
    QFETCH(ExitStatus, status);

    const Outcome outcome = callFailure(dbusError(name, QStringLiteral("why")), true, TimeoutMs);

    QCOMPARE(static_cast<int>(outcome.status), static_cast<int>(status));
    QTEST(outcome.sentence, "sentence");
}

void TestCallFailure::a_missing_answer_is_late_or_its_daemon_has_gone_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("as the bus says it") << QStringLiteral("org.freedesktop.DBus.Error.NoReply");
    QTest::newRow("as others say it") << QStringLiteral("org.freedesktop.DBus.Error.Timeout");
}

void TestCallFailure::a_missing_answer_is_late_or_its_daemon_has_gone()
{
    QFETCH(QString, name);
    const QDBusError error = dbusError(name, QStringLiteral("why"));

    const Outcome late{ExitStatus::NotConfirmed,
                       QStringLiteral("bramd has not answered within 60 s. It may carry the "
                                      "request out yet: see whether it did before you ask again.")};
    QVERIFY(callFailure(error, true, TimeoutMs) == late);

    const Outcome gone{
        ExitStatus::DaemonUnreachable,
        QStringLiteral("bramd has ended before it answered. Look at “journalctl -u bramd”, and "
                       "see whether it carried the request out before you ask again.")};
    QVERIFY(callFailure(error, false, TimeoutMs) == gone);
}

void TestCallFailure::the_time_is_told_in_whole_seconds()
{
    const QDBusError error =
        dbusError(QStringLiteral("org.freedesktop.DBus.Error.NoReply"), QString());

    QVERIFY(callFailure(error, true, 1200).sentence.contains(QStringLiteral("within 2 s.")));
}

void TestCallFailure::what_the_error_says_stays_one_line()
{
    const QDBusError error =
        dbusError(QStringLiteral("org.example.Error"), QStringLiteral("It\n broke, %1 and %2. \n"));

    QCOMPARE(callFailure(error, true, TimeoutMs).sentence,
             QStringLiteral("bramd has not taken the request (It broke, %1 and %2). Look at "
                            "“journalctl -u bramd”."));
}

void TestCallFailure::an_error_that_says_nothing_is_named()
{
    QCOMPARE(oneLine(dbusError(QStringLiteral("org.example.Error"), QStringLiteral("..."))),
             QStringLiteral("org.example.Error"));
}

QTEST_GUILESS_MAIN(TestCallFailure)
#include "test_callfailure.moc"
