#include "platform/host/privatebus.h"
#include "platform/timed/faketimedate.h"
#include "platform/timed/interface.h"
#include "support/testcase.h"

#include <QDBusConnectionInterface>
#include <QtTest>

#include <memory>

using Fjord::Timed::Interface;
using Fjord::Timed::WallClock::Info;

namespace {

const QString Helsinki = QStringLiteral("Europe/Helsinki");

/// Keeps the settings that it is told of.
class Receiver : public QObject
{
    Q_OBJECT

public:
    explicit Receiver(QStringList *zones)
        : m_zones(zones)
    {
    }

public Q_SLOTS:
    void onSettings(const Fjord::Timed::WallClock::Info &info, bool timeChanged)
    {
        m_zones->append(info.humanReadableTz() + QLatin1String(timeChanged ? " and time" : ""));
    }

private:
    QStringList *m_zones;
};

} // namespace

class TestTimed : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void an_info_knows_nothing_by_itself();
    void the_daemon_is_asked_for_its_zone();
    void the_zone_is_told_as_it_stands_data();
    void the_zone_is_told_as_it_stands();
    void an_answer_that_is_no_zone_is_invalid_data();
    void an_answer_that_is_no_zone_is_invalid();
    void without_a_daemon_the_reply_is_invalid();
    void announced_zones_are_passed_on();
    void other_announcements_are_not_passed_on_data();
    void other_announcements_are_not_passed_on();
    void nobody_else_is_heard();
    void a_daemon_that_comes_later_is_heard();
    void a_daemon_that_comes_back_is_heard();
    void the_connection_ends_with_the_receiver();
    void a_slot_that_is_not_there_is_not_connected();

private:
    bool connectTo(QObject *receiver);

    PrivateBus m_bus;
    QStringList m_zones;
};

void TestTimed::initTestCase()
{
    QVERIFY(m_bus.start());
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", m_bus.address().toUtf8());
}

void TestTimed::init()
{
    TestCase::init();
    m_zones.clear();
}

// The proxy is gone when this returns; the connection is not.
bool TestTimed::connectTo(QObject *receiver)
{
    Interface timed;
    const bool connected = timed.settings_changed_connect(
        receiver, SLOT(onSettings(Fjord::Timed::WallClock::Info, bool)));
    // What the bus answers now, it answers after it has heard of the connection.
    QDBusConnection::systemBus().interface()->isServiceRegistered(QStringLiteral("a.b"));
    return connected;
}

void TestTimed::an_info_knows_nothing_by_itself()
{
    QCOMPARE(Info().humanReadableTz(), QString());
}

void TestTimed::the_daemon_is_asked_for_its_zone()
{
    const FakeTimedate timedate(m_bus.address(), FakeTimedate::zone(Helsinki));
    QVERIFY(timedate.isUp());

    Interface().get_wall_clock_info();

    QCOMPARE(timedate.calls(),
             QStringList(QStringLiteral("/org/freedesktop/timedate1 "
                                        "org.freedesktop.DBus.Properties.Get ss "
                                        "(org.freedesktop.timedate1, Timezone)")));
}

void TestTimed::the_zone_is_told_as_it_stands_data()
{
    QTest::addColumn<QString>("zone");

    QTest::newRow("two parts") << Helsinki;
    QTest::newRow("three parts") << QStringLiteral("America/Argentina/Buenos_Aires");
    QTest::newRow("one part") << QStringLiteral("UTC");
    QTest::newRow("empty") << QStringLiteral("");
    QTest::newRow("beyond ASCII") << QStringLiteral("Zürich/Ж");
}

void TestTimed::the_zone_is_told_as_it_stands()
{
    QFETCH(QString, zone);
    const FakeTimedate timedate(m_bus.address(), FakeTimedate::zone(zone));

    const auto reply = Interface().get_wall_clock_info();

    QVERIFY(reply.isValid());
    QCOMPARE(reply.value().humanReadableTz(), zone);
}

void TestTimed::an_answer_that_is_no_zone_is_invalid_data()
{
    QTest::addColumn<QVariant>("answer");

    QTest::newRow("error") << QVariant();
    QTest::newRow("number") << FakeTimedate::zone(5);
    QTest::newRow("boolean") << FakeTimedate::zone(true);
    QTest::newRow("bytes") << FakeTimedate::zone(QByteArray("UTC"));
    QTest::newRow("list") << FakeTimedate::zone(QStringList(Helsinki));
    QTest::newRow("variant in a variant") << FakeTimedate::zone(FakeTimedate::zone(Helsinki));
    QTest::newRow("no variant") << QVariant(Helsinki);
}

void TestTimed::an_answer_that_is_no_zone_is_invalid()
{
    QFETCH(QVariant, answer);
    const FakeTimedate timedate(m_bus.address(), answer);

    const auto reply = Interface().get_wall_clock_info();

    QVERIFY(!reply.isValid());
    QVERIFY(reply.error().isValid());
}

void TestTimed::without_a_daemon_the_reply_is_invalid()
{
    QCOMPARE(Interface().get_wall_clock_info().error().type(), QDBusError::ServiceUnknown);
}

void TestTimed::announced_zones_are_passed_on()
{
    FakeTimedate timedate(m_bus.address(), QVariant());
    Receiver receiver(&m_zones);
    QVERIFY(connectTo(&receiver));
    const QStringList zones{QStringLiteral("America/Argentina/Buenos_Aires"), QStringLiteral("UTC"),
                            QStringLiteral("UTC"), QStringLiteral(""), Helsinki};

    // Signals are taken from the owner of the service's name only, and the connection hears in its
    // own time of who that is.
    const QString heard = QStringLiteral("Asia/Kathmandu");
    QTRY_VERIFY((timedate.announce(heard), m_zones.contains(heard)));

    for (const QString &zone : zones)
        timedate.announce(zone);

    QTRY_COMPARE(m_zones.mid(m_zones.lastIndexOf(heard) + 1), zones);
}

void TestTimed::other_announcements_are_not_passed_on_data()
{
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QVariantMap>("changed");
    QTest::addColumn<QStringList>("invalidated");
    QTest::addColumn<QString>("path");

    const QString timedate = QStringLiteral("org.freedesktop.timedate1");
    const QString path = QStringLiteral("/org/freedesktop/timedate1");
    const QString property = QStringLiteral("Timezone");
    const QVariantMap zone{{property, Helsinki}};
    QTest::newRow("another property")
        << timedate << QVariantMap{{QStringLiteral("NTP"), true}} << QStringList() << path;
    QTest::newRow("nothing") << timedate << QVariantMap() << QStringList() << path;
    QTest::newRow("no value") << timedate << QVariantMap() << QStringList(property) << path;
    QTest::newRow("another interface")
        << QStringLiteral("test.Other") << zone << QStringList() << path;
    QTest::newRow("another object")
        << timedate << zone << QStringList() << QStringLiteral("/org/freedesktop/other");
    QTest::newRow("a number") << timedate << QVariantMap{{property, 5}} << QStringList() << path;
    QTest::newRow("a list") << timedate << QVariantMap{{property, QStringList(Helsinki)}}
                            << QStringList() << path;
    QTest::newRow("bytes") << timedate << QVariantMap{{property, QByteArray("UTC")}}
                           << QStringList() << path;
}

void TestTimed::other_announcements_are_not_passed_on()
{
    QFETCH(QString, interface);
    QFETCH(QVariantMap, changed);
    QFETCH(QStringList, invalidated);
    QFETCH(QString, path);
    FakeTimedate timedate(m_bus.address(), QVariant());
    Receiver receiver(&m_zones);
    QVERIFY(connectTo(&receiver));

    timedate.announce(interface, changed, invalidated, path);
    timedate.announce(QStringLiteral("UTC"));

    QTRY_COMPARE(m_zones, QStringList(QStringLiteral("UTC")));
}

void TestTimed::nobody_else_is_heard()
{
    FakeTimedate timedate(m_bus.address(), QVariant());
    Receiver receiver(&m_zones);
    QVERIFY(connectTo(&receiver));
    QDBusConnection other = QDBusConnection::connectToBus(m_bus.address(), QStringLiteral("other"));
    QDBusMessage signal = QDBusMessage::createSignal(
        QStringLiteral("/org/freedesktop/timedate1"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("PropertiesChanged"));
    signal << QStringLiteral("org.freedesktop.timedate1")
           << QVariantMap{{QStringLiteral("Timezone"), Helsinki}} << QStringList();

    other.send(signal);
    other.interface()->registeredServiceNames(); // once the bus answers it has passed the signal on
    timedate.announce(QStringLiteral("UTC"));

    QTRY_COMPARE(m_zones, QStringList(QStringLiteral("UTC")));
    QDBusConnection::disconnectFromBus(QStringLiteral("other"));
}

void TestTimed::a_daemon_that_comes_later_is_heard()
{
    Receiver receiver(&m_zones);
    QVERIFY(connectTo(&receiver));
    FakeTimedate timedate(m_bus.address(), QVariant());

    timedate.announce(Helsinki);

    QTRY_COMPARE(m_zones, QStringList(Helsinki));
}

void TestTimed::a_daemon_that_comes_back_is_heard()
{
    Receiver receiver(&m_zones);
    {
        FakeTimedate timedate(m_bus.address(), QVariant());
        QVERIFY(connectTo(&receiver));
        timedate.announce(Helsinki);
        QTRY_COMPARE(m_zones, QStringList(Helsinki));
    }
    FakeTimedate timedate(m_bus.address(), QVariant());

    timedate.announce(QStringLiteral("UTC"));

    QTRY_COMPARE(m_zones, QStringList({Helsinki, QStringLiteral("UTC")}));
}

void TestTimed::the_connection_ends_with_the_receiver()
{
    FakeTimedate timedate(m_bus.address(), QVariant());
    auto gone = std::make_unique<Receiver>(&m_zones);
    QStringList heardByOther;
    Receiver other(&heardByOther);
    QVERIFY(connectTo(gone.get()));
    QVERIFY(connectTo(&other));

    gone.reset();
    timedate.announce(Helsinki);

    QTRY_COMPARE(heardByOther, QStringList(Helsinki));
    QCOMPARE(m_zones, QStringList());
}

void TestTimed::a_slot_that_is_not_there_is_not_connected()
{
    Receiver receiver(&m_zones);
    Interface timed;

    QVERIFY(!timed.settings_changed_connect(&receiver,
                                            SLOT(onNothing(Fjord::Timed::WallClock::Info, bool))));

    QCOMPARE(takeLog(QtWarningMsg).size(), 1); // Qt's own
}

QTEST_GUILESS_MAIN(TestTimed)
#include "test_timed.moc"
