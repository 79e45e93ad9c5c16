#include "daemon/bramdaemonadaptor.h"
#include "platform/host/privatebus.h"
#include "support/testcase.h"

#include <QDBusConnection>
#include <QDBusMetaType>
#include <QDBusPendingReply>
#include <QFile>
#include <QXmlStreamReader>
#include <QtTest>

namespace {

/// The interface com.corvo.bramd of an introspection document: a line for each member, argument
/// and annotation.
QStringList members(const QByteArray &xml)
{
    QStringList lines;
    bool inside = false;
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (reader.name() == QLatin1String("interface")) {
            inside = token == QXmlStreamReader::StartElement &&
                     reader.attributes().value(QLatin1String("name")) ==
                         QLatin1String("com.corvo.bramd");
        } else if (inside && token == QXmlStreamReader::StartElement) {
            QStringList line;
            for (const QXmlStreamAttribute &attribute : reader.attributes())
                line.append(attribute.name() + QLatin1Char('=') + attribute.value());
            line.sort();
            lines.append(reader.name() + QLatin1Char(' ') + line.join(QLatin1Char(' ')));
        }
    }
    return lines;
}

/// Leaves ones where the variables of the next call will be.
[[gnu::noinline]] void fillStack()
{
    volatile unsigned char leftovers[4096];
    for (volatile unsigned char &byte : leftovers)
        byte = 1;
}

/// Stands for the daemon: has some of the methods that are forwarded, with their signatures.
class Forwarded : public QObject
{
    Q_OBJECT

public:
    QStringList calls;

Q_SIGNALS:
    void appStartOnBootupChanged(const QString &packageName, bool autoStartAllowed);

public Q_SLOTS:
    bool installFile(const QString &filename, int source = 0)
    {
        calls.append(QStringLiteral("installFile %1 %2").arg(filename).arg(source));
        return true;
    }
    quint64 getAndroidAppDataUsage() { return 1ULL << 40; }
    AppSizeInfo getAppSize(const QString &packageName)
    {
        calls.append(QStringLiteral("getAppSize ") + packageName);
        return {100, 50, 20};
    }
    AndroidVersionData getAndroidVersionData()
    {
        return {28, QStringLiteral("9"), QStringLiteral("2021-05-05")};
    }
    void launchIntent(const QString &action, const QString &data, const QString &type,
                      const QString &packageName, const QString &className, const QString &category,
                      const QVariantMap &extras)
    {
        calls.append(QStringList({action, data, type, packageName, className, category,
                                  extras.value(QStringLiteral("key")).toString()})
                         .join(QLatin1Char(' ')));
    }
};

} // namespace

class TestBramDaemonAdaptor : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void the_interface_on_the_bus_is_the_published_one();
    void a_call_is_forwarded_by_name();
    void all_seven_arguments_of_an_intent_are_forwarded();
    void results_have_the_published_signatures();
    void isRunning_finds_nothing_and_answers_false();
    void isRunning_is_no_leftover_of_earlier_calls();
    void signals_of_the_daemon_are_relayed();

private:
    QDBusMessage call(const char *interface, const char *method,
                      const QVariantList &arguments = QVariantList()) const;
    QDBusMessage callDaemon(const char *method, const QVariantList &arguments = {}) const;

    PrivateBus m_bus;
    QScopedPointer<Forwarded> m_forwarded;
};

void TestBramDaemonAdaptor::initTestCase()
{
    qDBusRegisterMetaType<AppSizeInfo>();
    qDBusRegisterMetaType<AndroidVersionData>();
    QVERIFY(m_bus.start());
    QVERIFY(QDBusConnection::connectToBus(m_bus.address(), QStringLiteral("client")).isConnected());
    QDBusConnection bus = QDBusConnection::connectToBus(m_bus.address(), QStringLiteral("daemon"));
    QVERIFY(bus.registerService(QStringLiteral("com.corvo.bramd")));
}

void TestBramDaemonAdaptor::cleanupTestCase()
{
    m_forwarded.reset();
    QDBusConnection::disconnectFromBus(QStringLiteral("daemon"));
    QDBusConnection::disconnectFromBus(QStringLiteral("client"));
}

void TestBramDaemonAdaptor::init()
{
    TestCase::init();
    m_forwarded.reset(new Forwarded);
    QVERIFY(QDBusConnection(QStringLiteral("daemon"))
                .registerObject(QStringLiteral("/com/corvo/bramd"), m_forwarded.data()));
    new BramDaemonAdaptor(m_forwarded.data());
}

QDBusMessage TestBramDaemonAdaptor::call(const char *interface, const char *method,
                                         const QVariantList &arguments) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("com.corvo.bramd"), QStringLiteral("/com/corvo/bramd"),
        QLatin1String(interface), QLatin1String(method));
    message.setArguments(arguments);
    const QDBusPendingCall pending =
        QDBusConnection(QStringLiteral("client")).asyncCall(message, 5000);
    const bool answered = QTest::qWaitFor([&pending] { return pending.isFinished(); }, 10000);
    return answered ? pending.reply() : QDBusMessage();
}

QDBusMessage TestBramDaemonAdaptor::callDaemon(const char *method,
                                               const QVariantList &arguments) const
{
    return call("com.corvo.bramd", method, arguments);
}

void TestBramDaemonAdaptor::the_interface_on_the_bus_is_the_published_one()
{
    QFile published(QStringLiteral(INTERFACE_XML));
    QVERIFY(published.open(QIODevice::ReadOnly));

    const QDBusMessage reply = call("org.freedesktop.DBus.Introspectable", "Introspect");

    const QStringList onTheBus = members(reply.arguments().value(0).toString().toUtf8());
    QCOMPARE(onTheBus, members(published.readAll()));
    QCOMPARE(onTheBus.filter(QStringLiteral("method ")).size(), 21);
    QCOMPARE(onTheBus.filter(QStringLiteral("signal ")).size(), 6);
}

void TestBramDaemonAdaptor::a_call_is_forwarded_by_name()
{
    const QDBusMessage reply = callDaemon("installFile", {QStringLiteral("/a.apk")});

    QCOMPARE(m_forwarded->calls, QStringList(QStringLiteral("installFile /a.apk 0")));
    QCOMPARE(reply.arguments(), QVariantList{true});
}

void TestBramDaemonAdaptor::all_seven_arguments_of_an_intent_are_forwarded()
{
    const QVariantMap extras{{QStringLiteral("key"), QStringLiteral("value")}};

    callDaemon("launchIntent",
               {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("d"),
                QStringLiteral("e"), QStringLiteral("f"), extras});

    QCOMPARE(m_forwarded->calls, QStringList(QStringLiteral("a b c d e f value")));
}

void TestBramDaemonAdaptor::results_have_the_published_signatures()
{
    const QDBusMessage usage = callDaemon("getAndroidAppDataUsage");
    QCOMPARE(usage.signature(), QStringLiteral("t"));
    QCOMPARE(usage.arguments(), QVariantList{1ULL << 40});

    const QDBusMessage size = callDaemon("getAppSize", {QStringLiteral("com.example")});
    QCOMPARE(size.signature(), QStringLiteral("(xxx)"));
    QCOMPARE(qdbus_cast<AppSizeInfo>(size.arguments().value(0)), (AppSizeInfo{100, 50, 20}));

    const QDBusMessage version = callDaemon("getAndroidVersionData");
    QCOMPARE(version.signature(), QStringLiteral("(iss)"));
    QCOMPARE(qdbus_cast<AndroidVersionData>(version.arguments().value(0)),
             (AndroidVersionData{28, QStringLiteral("9"), QStringLiteral("2021-05-05")}));
}

void TestBramDaemonAdaptor::isRunning_finds_nothing_and_answers_false()
{
    const QDBusMessage reply = callDaemon("isRunning");

    QCOMPARE(reply.arguments(), QVariantList{false});
    QCOMPARE(takeLog(QtWarningMsg).size(), 1);
}

void TestBramDaemonAdaptor::isRunning_is_no_leftover_of_earlier_calls()
{
    auto *adaptor = m_forwarded->findChild<BramDaemonAdaptor *>();

    fillStack();
    const bool running = adaptor->isRunning();

    QVERIFY(!running);
    QCOMPARE(takeLog(QtWarningMsg).size(), 1);
}

void TestBramDaemonAdaptor::signals_of_the_daemon_are_relayed()
{
    QSignalSpy relayed(m_forwarded->findChild<BramDaemonAdaptor *>(),
                       &BramDaemonAdaptor::appStartOnBootupChanged);

    Q_EMIT m_forwarded->appStartOnBootupChanged(QStringLiteral("com.example"), true);

    QCOMPARE(relayed.size(), 1);
    QCOMPARE(relayed.first(), QVariantList({QStringLiteral("com.example"), true}));
}

QTEST_GUILESS_MAIN(TestBramDaemonAdaptor)
#include "test_bramdaemonadaptor.moc"
