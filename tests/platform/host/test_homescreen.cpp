#include "platform/host/homescreen.h"
#include "platform/host/messagekeeper.h"
#include "platform/host/privatebus.h"
#include "platform/host/sessionbus.h"
#include "support/testcase.h"

#include <QtTest>

namespace {

const QString Service = QStringLiteral("org.orcadesk.gloss");
const QString Model = QStringLiteral("/LauncherModel");
const QString Entry = QStringLiteral("/usr/share/applications/bramd_launcher_a_b-a_b_C.desktop");

using Tell = void (*)(SessionBus &, const QString &);

} // namespace

Q_DECLARE_METATYPE(Tell)

class TestHomeScreen : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void each_event_is_one_call_data();
    void each_event_is_one_call();
    void apps_are_named_by_their_files_data();
    void apps_are_named_by_their_files();
    void more_apps_than_a_bus_takes_at_once_are_told_in_order();
    void without_a_home_screen_nothing_happens();
    void a_home_screen_that_comes_later_hears_what_follows();
    void without_a_bus_nothing_happens_data();
    void without_a_bus_nothing_happens();

private:
    QScopedPointer<PrivateBus> m_bus;
};

void TestHomeScreen::init()
{
    TestCase::init();
    m_bus.reset(new PrivateBus);
    QVERIFY(m_bus->start());
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus->address().toUtf8());
}

void TestHomeScreen::each_event_is_one_call_data()
{
    QTest::addColumn<Tell>("tell");
    QTest::addColumn<QString>("member");

    QTest::newRow("started") << &HomeScreen::updatingStarted << QStringLiteral("updatingStarted");
    QTest::newRow("finished") << &HomeScreen::updatingFinished
                              << QStringLiteral("updatingFinished");
}

void TestHomeScreen::each_event_is_one_call()
{
    QFETCH(Tell, tell);
    MessageKeeper homeScreen(m_bus->address(), Service, Model);
    SessionBus bus;

    tell(bus, Entry);
    tell(bus, QStringLiteral("/last.desktop"));

    QTRY_COMPARE(homeScreen.messages.size(), 2);
    const QDBusMessage message = homeScreen.messages.first();
    QCOMPARE(message.type(), QDBusMessage::MethodCallMessage);
    QCOMPARE(message.path(), QStringLiteral("/LauncherModel"));
    QCOMPARE(message.interface(), QStringLiteral("org.orcadesk.gloss.LauncherModel"));
    QTEST(message.member(), "member");
    QCOMPARE(message.signature(), QStringLiteral("ssss"));
    QCOMPARE(message.arguments(), QVariantList({QStringLiteral("bramd_launcher_a_b-a_b_C"),
                                                QString(), QString(), Entry}));
    QVERIFY(!message.isReplyRequired());
}

void TestHomeScreen::apps_are_named_by_their_files_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");

    QTest::newRow("up to the first dot") << QStringLiteral("/a/b.c.desktop") << QStringLiteral("b");
    QTest::newRow("dots in directories") << QStringLiteral("/a.d/b.desktop") << QStringLiteral("b");
    QTest::newRow("without an ending") << QStringLiteral("/a/b") << QStringLiteral("b");
    QTest::newRow("beyond ASCII") << QStringLiteral("/Grüße/Öl.desktop") << QStringLiteral("Öl");
}

void TestHomeScreen::apps_are_named_by_their_files()
{
    QFETCH(QString, path);
    QFETCH(QString, name);
    MessageKeeper homeScreen(m_bus->address(), Service, Model);
    SessionBus bus;

    HomeScreen::updatingStarted(bus, path);

    QTRY_COMPARE(homeScreen.messages.size(), 1);
    QCOMPARE(homeScreen.messages.first().arguments(),
             QVariantList({name, QString(), QString(), path}));
}

void TestHomeScreen::more_apps_than_a_bus_takes_at_once_are_told_in_order()
{
    constexpr int apps = 300;
    MessageKeeper homeScreen(m_bus->address(), Service, Model);
    SessionBus bus;
    QStringList told;

    for (int i = 0; i < apps; ++i) {
        told.append(QStringLiteral("/usr/share/applications/%1.desktop").arg(i));
        HomeScreen::updatingStarted(bus, told.last());
    }

    QTRY_COMPARE(homeScreen.messages.size(), apps);
    QStringList heard;
    for (const QDBusMessage &message : qAsConst(homeScreen.messages))
        heard.append(message.arguments().value(3).toString());
    QCOMPARE(heard, told);
}

void TestHomeScreen::without_a_home_screen_nothing_happens()
{
    MessageKeeper other(m_bus->address(), QStringLiteral("test.Other"), Model);
    SessionBus bus;

    HomeScreen::updatingStarted(bus, Entry);

    // What is sent on one connection stays in order: once this has come the call is gone.
    bus.send(bus.createCall("test.Other", "/LauncherModel", "test.Other", "Fence"));
    QTRY_COMPARE(other.messages.size(), 1);
    QCOMPARE(other.messages.first().member(), QStringLiteral("Fence"));
    QVERIFY(log().isEmpty());
}

void TestHomeScreen::a_home_screen_that_comes_later_hears_what_follows()
{
    SessionBus bus;
    HomeScreen::updatingStarted(bus, Entry);
    QCoreApplication::processEvents();
    MessageKeeper homeScreen(m_bus->address(), Service, Model);

    HomeScreen::updatingFinished(bus, Entry);

    QTRY_VERIFY(!homeScreen.messages.isEmpty());
    QTRY_COMPARE(homeScreen.messages.last().member(), QStringLiteral("updatingFinished"));
}

void TestHomeScreen::without_a_bus_nothing_happens_data()
{
    QTest::addColumn<QByteArray>("address");

    QTest::newRow("nobody listens") << QByteArray("unix:path=/nonexistent");
    QTest::newRow("no address") << QByteArray("");
    QTest::newRow("nonsense") << QByteArray("nonsense");
}

void TestHomeScreen::without_a_bus_nothing_happens()
{
    QFETCH(QByteArray, address);
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    SessionBus bus;

    HomeScreen::updatingStarted(bus, Entry);
    HomeScreen::updatingFinished(bus, Entry);

    QVERIFY(log().isEmpty());
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus->address().toUtf8());
    MessageKeeper homeScreen(m_bus->address(), Service, Model);
    HomeScreen::updatingFinished(bus, Entry);
    QTRY_COMPARE(homeScreen.messages.size(), 1); // the calls before it are lost, and only these
}

QTEST_GUILESS_MAIN(TestHomeScreen)
#include "test_homescreen.moc"
