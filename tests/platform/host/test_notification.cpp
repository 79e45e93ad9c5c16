#include "platform/host/fakenotifications.h"
#include "platform/host/notification.h"
#include "platform/host/privatebus.h"
#include "platform/host/sessionbus.h"
#include "support/testcase.h"

#include <QDBusArgument>
#include <QElapsedTimer>
#include <QtTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

/// A socket that takes connections and never says a word.
class DeafBus
{
public:
    explicit DeafBus(const QString &path)
        : m_path(path)
        , m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un name{};
        name.sun_family = AF_UNIX;
        qstrncpy(name.sun_path, path.toUtf8().constData(), sizeof(name.sun_path));
        m_listens = ::bind(m_socket, reinterpret_cast<sockaddr *>(&name), sizeof(name)) == 0 &&
                    ::listen(m_socket, 1) == 0;
    }

    ~DeafBus() { ::close(m_socket); }
    DeafBus(const DeafBus &) = delete;
    DeafBus &operator=(const DeafBus &) = delete;

    bool listens() const { return m_listens; }
    QString address() const { return QStringLiteral("unix:path=") + m_path; }

private:
    QString m_path;
    int m_socket;
    bool m_listens = false;
};

Notification warning()
{
    Notification notice;
    notice.setTransient(true);
    notice.setUrgency(Notification::Urgency::Critical);
    notice.setIcon(QStringLiteral("icon-lock-warning"));
    notice.setPreviewBody(QStringLiteral("Installing apps is not allowed"));
    return notice;
}

} // namespace

class TestNotification : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void an_empty_notice_has_neither_text_nor_hints();
    void each_setting_has_its_argument();
    void no_reply_is_asked_for();
    void text_that_the_bus_refuses_is_replaced_data();
    void text_that_the_bus_refuses_is_replaced();
    void a_bus_that_starts_late_is_found();
    void a_bus_that_restarts_is_found_again();
    void a_bus_that_refuses_the_connection_loses_the_notice_only();
    void a_bus_that_never_answers_holds_nobody_up();
    void notices_do_not_pile_up_without_limit();

private:
    QDBusMessage published(const Notification &notice);

    QScopedPointer<PrivateBus> m_bus;
};

void TestNotification::init()
{
    TestCase::init();
    m_bus.reset(new PrivateBus);
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus->address().toUtf8());
}

QDBusMessage TestNotification::published(const Notification &notice)
{
    FakeNotifications service(m_bus->address());
    SessionBus bus;
    notice.publish(bus);
    const bool arrived = QTest::qWaitFor([&service] { return !service.messages.isEmpty(); });
    return arrived ? service.messages.first() : QDBusMessage();
}

void TestNotification::an_empty_notice_has_neither_text_nor_hints()
{
    QVERIFY(m_bus->start());

    const QDBusMessage message = published(Notification());

    QCOMPARE(message.interface(), QStringLiteral("org.freedesktop.Notifications"));
    QCOMPARE(message.member(), QStringLiteral("Notify"));
    QCOMPARE(message.signature(), QStringLiteral("susssasa{sv}i"));
    QCOMPARE(message.arguments().mid(0, 6),
             QVariantList({QString(), 0U, QString(), QString(), QString(), QStringList()}));
    QCOMPARE(qdbus_cast<QVariantMap>(message.arguments().value(6)), QVariantMap());
    QCOMPARE(message.arguments().value(7), QVariant(-1));
}

void TestNotification::each_setting_has_its_argument()
{
    QVERIFY(m_bus->start());
    Notification notice;
    notice.setAppName(QStringLiteral("name"));
    notice.setIcon(QStringLiteral("icon"));
    notice.setAppIcon(QStringLiteral("app-icon"));
    notice.setTransient(true);
    notice.setUrgency(Notification::Urgency::Critical);
    notice.setPreviewSummary(QStringLiteral("summary"));
    notice.setPreviewBody(QStringLiteral("body"));

    const QDBusMessage message = published(notice);

    QCOMPARE(message.arguments().mid(0, 6),
             QVariantList({QStringLiteral("name"), 0U, QStringLiteral("app-icon"),
                           QStringLiteral("summary"), QStringLiteral("body"), QStringList()}));
    const QVariantMap hints{{QStringLiteral("transient"), true},
                            {QStringLiteral("urgency"), QVariant::fromValue(uchar(2))},
                            {QStringLiteral("image-path"), QStringLiteral("icon")}};
    QCOMPARE(qdbus_cast<QVariantMap>(message.arguments().value(6)), hints);
}

void TestNotification::no_reply_is_asked_for()
{
    QVERIFY(m_bus->start());

    QVERIFY(!published(warning()).isReplyRequired());
}

void TestNotification::text_that_the_bus_refuses_is_replaced_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");

    const QString replacement(QChar::ReplacementCharacter);
    QTest::newRow("NUL") << QString(QChar::Null) + QStringLiteral("a")
                         << replacement + QStringLiteral("a");
    QTest::newRow("longer than anyone reads")
        << QString(1000000, QLatin1Char('a')) << QString(4096, QLatin1Char('a'));
    QTest::newRow("noncharacter") << QString(QChar(0xfffe)) << replacement;
    QTest::newRow("half a surrogate pair") << QString(QChar(0xd800)) << replacement;
    QTest::newRow("beyond the basic plane stays")
        << QStringLiteral("\U0001f600") << QStringLiteral("\U0001f600");
}

void TestNotification::text_that_the_bus_refuses_is_replaced()
{
    QVERIFY(m_bus->start());
    QFETCH(QString, text);
    Notification notice;
    notice.setPreviewBody(text);

    QTEST(published(notice).arguments().value(4).toString(), "shown");
}

void TestNotification::a_bus_that_starts_late_is_found()
{
    SessionBus bus;
    warning().publish(bus);
    QVERIFY(m_bus->start());
    FakeNotifications service(m_bus->address());

    warning().publish(bus);

    QTRY_COMPARE(service.messages.size(), 1);
}

void TestNotification::a_bus_that_restarts_is_found_again()
{
    SessionBus bus;
    QVERIFY(m_bus->start());
    {
        FakeNotifications service(m_bus->address());
        warning().publish(bus);
        QTRY_COMPARE(service.messages.size(), 1);
    }
    m_bus->stop();
    QVERIFY(m_bus->start());
    FakeNotifications service(m_bus->address());

    warning().publish(bus);

    QTRY_COMPARE(service.messages.size(), 1);
}

void TestNotification::a_bus_that_refuses_the_connection_loses_the_notice_only()
{
    SessionBus bus;
    QVERIFY(m_bus->start(PrivateBus::Traffic::Refused));
    warning().publish(bus);
    QCoreApplication::processEvents();
    m_bus->stop();
    QVERIFY(m_bus->start());
    FakeNotifications service(m_bus->address());

    warning().publish(bus);

    QTRY_COMPARE(service.messages.size(), 1);
    QVERIFY(log().isEmpty());
}

void TestNotification::a_bus_that_never_answers_holds_nobody_up()
{
    const QTemporaryDir directory;
    const DeafBus deafBus(directory.filePath(QStringLiteral("socket")));
    QVERIFY(deafBus.listens());
    qputenv("DBUS_SESSION_BUS_ADDRESS", deafBus.address().toUtf8());
    QElapsedTimer elapsed;
    elapsed.start();

    SessionBus bus;
    warning().publish(bus);
    warning().publish(bus);

    QVERIFY(elapsed.elapsed() < 1000);
}

void TestNotification::notices_do_not_pile_up_without_limit()
{
    QVERIFY(m_bus->start());
    FakeNotifications service(m_bus->address());
    SessionBus bus;
    for (quint64 i = 0; i < 10 * SessionBus::MaximumWaiting; ++i)
        warning().publish(bus);
    QTRY_VERIFY(!service.messages.isEmpty());
    Notification last;
    last.setPreviewBody(QStringLiteral("last"));

    last.publish(bus);

    QTRY_COMPARE(service.messages.last().arguments().value(4).toString(), QStringLiteral("last"));
    QVERIFY(static_cast<quint64>(service.messages.size()) <= SessionBus::MaximumWaiting + 1);
}

QTEST_GUILESS_MAIN(TestNotification)
#include "test_notification.moc"
