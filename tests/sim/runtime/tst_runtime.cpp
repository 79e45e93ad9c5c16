// The simulated runtime from outside, as the daemon sees it: through the project's own binder
// client library.

#include "platform/binder/client.h"
#include "platform/binder/localobject.h"
#include "platform/binder/remoteobject.h"
#include "platform/binder/sdklevel.h"
#include "platform/binder/servicemanager.h"
#include "platform/binder/servicename.h"
#include "sim/runtime/runtimeprocess.h"
#include "support/testcase.h"

#include <QtTest>

namespace {

constexpr char LauncherDescriptor[] = "umbra.applications.IUmbraNativeLauncherService";
constexpr char PackageDescriptor[] = "android.content.pm.IPackageManager";
constexpr char UmbraDescriptor[] = "umbra.applications.IUmbraService";

const QString Papertrail = QStringLiteral("org.example.papertrail");

int level = 0;

QString nextString(Binder::Reader *reader)
{
    const char16_t *units = nullptr;
    int length = 0;
    return reader->readString16(&units, &length) && units != nullptr
               ? QString::fromUtf16(units, length)
               : QString();
}

qint32 nextInt32(Binder::Reader *reader)
{
    qint32 value = -999;
    reader->readInt32(&value);
    return value;
}

QByteArray nextBytes(Binder::Reader *reader)
{
    const char *bytes = nullptr;
    int size = 0;
    return reader->readByteArray(&bytes, &size) ? QByteArray(bytes, size) : QByteArray();
}

QJsonObject command(const char *name, QJsonObject arguments = {})
{
    arguments.insert(QStringLiteral("command"), QLatin1String(name));
    return arguments;
}

/// The calls that a local object receives, each as one line of text.
class Received
{
public:
    Binder::IncomingCall handler(const char *descriptor)
    {
        return [this, descriptor](Binder::IncomingRequest &request, quint32 code, quint32 flags,
                                  Binder::Status *) -> std::unique_ptr<Binder::OutgoingReply> {
            Binder::Reader reader = request.reader();
            calls.append(request.interfaceToken() != descriptor ? QStringLiteral("wrong token")
                                                                : describe(code, flags, &reader));
            if (!reader.atEnd())
                calls.append(QStringLiteral("bytes left over"));
            return nullptr;
        };
    }

    QStringList calls;

protected:
    ~Received() = default;
    virtual QString describe(quint32 code, quint32 flags, Binder::Reader *reader) = 0;
};

class ReceivedAnnouncements final : public Received
{
    QString describe(quint32 code, quint32, Binder::Reader *reader) override
    {
        QStringList fields{QString::number(code)};
        const int strings[] = {0, 4, 0, 1, 7};
        for (int i = 0; i < strings[qMin(code, 4U)]; ++i)
            fields.append(nextString(reader));
        if (code == 4) {
            fields.append(QString::number(nextInt32(reader)));
            fields.append(nextString(reader));
            fields.append(nextString(reader));
            fields.append(QString::number(nextInt32(reader)));
        }
        if (code == 1 || code == 4)
            fields.append(nextBytes(reader).startsWith("\x89PNG") ? QStringLiteral("icon")
                                                                  : QStringLiteral("no icon"));
        return fields.join(QLatin1Char('|'));
    }
};

class ReceivedResults final : public Received
{
    QString describe(quint32 code, quint32 flags, Binder::Reader *reader) override
    {
        QString text = (flags & Binder::FlagOneWay) != 0 ? QStringLiteral("one-way ") : QString();
        text += QStringLiteral("%1 %2").arg(code).arg(nextString(reader));
        while (!reader->atEnd())
            text += QStringLiteral(" %1").arg(nextInt32(reader));
        return text;
    }
};

} // namespace

class RuntimeTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void installsAnnouncesAndRemoves_data();
    void installsAnnouncesAndRemoves();
    void reportsWhyAnInstallFailed_data();
    void reportsWhyAnInstallFailed();
    void announcesEverythingToALauncherThatComesLater();
    void announcesAnewAfterARestart();
    void startsAndClosesApps();
    void keepsTheWhitelistAndTheTimeZone();
    void tellsUidAndSizes();
    void hidesAHeldService();
    void bootsInItsOwnTime();
    void callsTheLauncherOnCommand();
    void endsACallWhenItDiesMeanwhile();
    void answersWhatIsPendingWhenItRestarts();
    void answersBadCommands();
    void endsCleanly();

private:
    void start(int sdk, const QStringList &arguments = {});
    std::unique_ptr<Binder::Client> client(const char *service, const char *descriptor);
    std::unique_ptr<Binder::LocalObject> object(const char *descriptor, Received *received);
    Binder::Status install(const char *apk, const Binder::LocalObject *observer);
    qint32 ask(const char *service, const char *descriptor, quint32 code, const QString &argument);

    std::unique_ptr<RuntimeProcess> m_runtime;
    std::unique_ptr<Binder::ServiceManager> m_manager;
};

void RuntimeTest::initTestCase()
{
    Binder::setSdkLevelSource([] { return level; });
}

void RuntimeTest::init()
{
    TestCase::init();
    m_runtime = std::make_unique<RuntimeProcess>();
}

void RuntimeTest::cleanup()
{
    m_manager.reset();
    const QStringList problems = m_runtime->problems();
    m_runtime->stop();
    const bool usedWell = m_runtime->wasDriverUsedWell();
    m_runtime.reset();
    QCOMPARE(problems, QStringList());
    QVERIFY(usedWell);
    TestCase::cleanup();
}

void RuntimeTest::start(int sdk, const QStringList &arguments)
{
    level = sdk;
    QVERIFY(m_runtime->start(sdk, arguments));
    m_manager = Binder::ServiceManager::open(m_runtime->device().constData());
    QVERIFY(m_manager != nullptr);
}

std::unique_ptr<Binder::Client> RuntimeTest::client(const char *service, const char *descriptor)
{
    return Binder::Client::create(m_manager->getService(service), descriptor);
}

std::unique_ptr<Binder::LocalObject> RuntimeTest::object(const char *descriptor, Received *received)
{
    return m_manager->createLocalObject(descriptor, received->handler(descriptor));
}

Binder::Status RuntimeTest::install(const char *apk, const Binder::LocalObject *observer)
{
    const bool direct = level == 27;
    const auto service =
        direct ? client("package", PackageDescriptor) : client("umbra", UmbraDescriptor);
    const auto request = service->createRequest();
    Binder::Writer writer = request->writer();
    writer.appendString16(m_runtime->stage(apk).toUtf8().constData());
    writer.appendLocalObject(observer);
    if (direct) {
        writer.appendInt32(66);
        writer.appendString16(nullptr);
        writer.appendInt32(0);
    }
    Binder::Status status = -1;
    const auto reply = service->transact(direct ? 60 : 2, *request, &status);
    qint32 answer = -1;
    if (reply == nullptr || !reply->readInt32(&answer) || answer != (direct ? 0 : 1))
        return -1;
    return status;
}

// One string argument; the last int32 of the reply.
qint32 RuntimeTest::ask(const char *service, const char *descriptor, quint32 code,
                        const QString &argument)
{
    const auto target = client(service, descriptor);
    const auto request = target->createRequest();
    request->writer().appendString16(argument.toUtf8().constData());
    const auto reply = target->transact(code, *request);
    if (reply == nullptr)
        return -1;
    Binder::Reader reader = reply->reader();
    qint32 last = -1;
    while (!reader.atEnd())
        last = nextInt32(&reader);
    return last;
}

void RuntimeTest::installsAnnouncesAndRemoves_data()
{
    QTest::addColumn<int>("sdk");
    QTest::addColumn<quint32>("deleteCode");
    QTest::newRow("27") << 27 << 64U;
    QTest::newRow("28") << 28 << 63U;
    QTest::newRow("29") << 29 << 66U;
    QTest::newRow("30") << 30 << 66U;
}

void RuntimeTest::installsAnnouncesAndRemoves()
{
    QFETCH(int, sdk);
    QFETCH(quint32, deleteCode);
    start(sdk);
    ReceivedAnnouncements announcements;
    const auto launcher = object(LauncherDescriptor, &announcements);
    const auto name = m_manager->registerName("umbra.launcher", *launcher);
    QTRY_COMPARE(announcements.calls, QStringList{QStringLiteral("2")}); // no apps, and that is all
    announcements.calls.clear();

    ReceivedResults installed;
    const auto installObserver = object("android.content.pm.IPackageInstallObserver2", &installed);
    QCOMPARE(install("papertrail.apk", installObserver.get()), Binder::StatusOk);
    QTRY_COMPARE(installed.calls,
                 QStringList{QStringLiteral("one-way 2 org.example.papertrail 1 -1 0")});

    const QString start = QStringLiteral("|org.example.papertrail|org.example.papertrail.");
    QTRY_COMPARE(
        announcements.calls,
        (QStringList{
            QStringLiteral("4") + start +
                QStringLiteral("ViewDocumentActivity|Paper Trail|Read in Paper Trail|1.4|"
                               "application/pdf||0|||0|icon"),
            QStringLiteral("4") + start +
                QStringLiteral("OpenLinkActivity|Paper Trail|Open in Paper Trail|1.4|||0|https|"
                               "papertrail.example.org|0|icon"),
            QStringLiteral("4") + start +
                QStringLiteral("ShareOneActivity|Paper Trail|File in Paper Trail|1.4||"
                               "application/pdf;text/plain|0|||0|icon"),
            QStringLiteral("4") + start +
                QStringLiteral(
                    "ShareManyActivity|Paper Trail|Scan into Paper Trail|1.4||image/*|1|||0|"
                    "icon"),
            QStringLiteral("1") + start + QStringLiteral("MainActivity|Paper Trail|1.4|icon"),
            QStringLiteral("2"),
        }));
    announcements.calls.clear();

    ReceivedResults removed;
    const auto deleteObserver = object("android.content.pm.IPackageDeleteObserver", &removed);
    const auto package = client("package", PackageDescriptor);
    const auto request = package->createRequest();
    Binder::Writer writer = request->writer();
    writer.appendString16("org.example.papertrail");
    writer.appendInt32(-1);
    writer.appendLocalObject(deleteObserver.get());
    writer.appendInt32(0);
    writer.appendInt32(2);
    QVERIFY(package->transact(deleteCode, *request) != nullptr);
    QTRY_COMPARE(removed.calls, QStringList{QStringLiteral("one-way 1 org.example.papertrail 1")});
    QTRY_COMPARE(announcements.calls,
                 (QStringList{QStringLiteral("3|org.example.papertrail"), QStringLiteral("2")}));
    QVERIFY(!QFile::exists(m_runtime->dataRoot() +
                           QStringLiteral("/data/app/org.example.papertrail.apk")));
}

void RuntimeTest::reportsWhyAnInstallFailed_data()
{
    QTest::addColumn<int>("sdk");
    QTest::newRow("27") << 27;
    QTest::newRow("29") << 29;
}

void RuntimeTest::reportsWhyAnInstallFailed()
{
    QFETCH(int, sdk);
    start(sdk);
    ReceivedResults results;
    const auto observer = object("android.content.pm.IPackageInstallObserver2", &results);

    install("metronome-2.apk", observer.get());
    install("metronome-1.apk", observer.get());
    install("nothing.apk", observer.get());

    QTRY_COMPARE(results.calls,
                 (QStringList{QStringLiteral("one-way 2 org.example.metronome 1 -1 0"),
                              QStringLiteral("one-way 2 org.example.metronome -25 -1 0"),
                              QStringLiteral("one-way 2  -3 -1 0")}));
}

void RuntimeTest::announcesEverythingToALauncherThatComesLater()
{
    start(28);
    ReceivedResults results;
    const auto observer = object("android.content.pm.IPackageInstallObserver2", &results);
    install("metronome-1.apk", observer.get());
    QTRY_COMPARE(results.calls.size(), 1);

    ReceivedAnnouncements announcements;
    const auto launcher = object(LauncherDescriptor, &announcements);
    const auto name = m_manager->registerName("umbra.launcher", *launcher);

    const QStringList all{
        QStringLiteral("1|org.example.metronome|org.example.metronome.MainActivity|Metronome|1.0|"
                       "icon"),
        QStringLiteral("2")};
    // Before them may come the beginning of what the install itself announces, on its way when the
    // launcher came.
    QTRY_COMPARE(announcements.calls.mid(announcements.calls.size() - all.size()), all);

    announcements.calls.clear();
    QVERIFY(m_runtime->control(command("announce")).value(QStringLiteral("ok")).toBool());
    QTRY_COMPARE(announcements.calls, all);
}

void RuntimeTest::announcesAnewAfterARestart()
{
    start(28);
    ReceivedAnnouncements announcements;
    const auto launcher = object(LauncherDescriptor, &announcements);
    const auto name = m_manager->registerName("umbra.launcher", *launcher);
    install("metronome-1.apk", nullptr);
    QTRY_COMPARE(announcements.calls.size(), 3);
    announcements.calls.clear();
    bool dead = false;
    const auto package = m_manager->getService("package");
    package->addDeathHandler([&] { dead = true; });

    m_runtime->control(command("restart"));

    QTRY_VERIFY(dead);
    QTRY_COMPARE(announcements.calls.size(), 2);
    QVERIFY(announcements.calls.constFirst().startsWith(QStringLiteral("1|")));
    QVERIFY(m_manager->getService("package") != nullptr);
}

void RuntimeTest::startsAndClosesApps()
{
    start(28);
    ReceivedResults closed;
    const auto listener = object("umbra.applications.IUmbraServiceListener", &closed);
    const auto umbra = client("umbra", UmbraDescriptor);
    const auto request = umbra->createRequest();
    request->writer().appendLocalObject(listener.get());
    QVERIFY(umbra->transact(15, *request) != nullptr);
    ReceivedResults installed;
    const auto observer = object("android.content.pm.IPackageInstallObserver2", &installed);
    install("papertrail.apk", observer.get());
    QTRY_COMPARE(installed.calls.size(), 1);
    const auto hasWindow = [this] {
        return ask("SurfaceFlinger", "android.ui.ISurfaceComposer", 103, Papertrail);
    };

    QCOMPARE(hasWindow(), 0);
    QCOMPARE(ask("umbra", UmbraDescriptor, 1, Papertrail), 1);
    QCOMPARE(hasWindow(), 1);
    m_runtime->control(command("close", {{QStringLiteral("package"), Papertrail}}));
    QCOMPARE(hasWindow(), 0);

    QTRY_COMPARE(closed.calls, QStringList{QStringLiteral("one-way 1 org.example.papertrail")});
    QCOMPARE(ask("umbra", UmbraDescriptor, 1, QStringLiteral("not.there")), 0);
}

void RuntimeTest::keepsTheWhitelistAndTheTimeZone()
{
    start(29);
    ReceivedResults installed;
    const auto observer = object("android.content.pm.IPackageInstallObserver2", &installed);
    install("papertrail.apk", observer.get());
    QTRY_COMPARE(installed.calls.size(), 1);
    const char *idle = "android.os.IDeviceIdleController";

    QCOMPARE(ask("deviceidle", idle, 16, Papertrail), 0);
    ask("deviceidle", idle, 1, Papertrail);
    ask("deviceidle", idle, 1, QStringLiteral("not.there"));
    ask("alarm", "android.app.IAlarmManager", 3, QStringLiteral("Europe/Helsinki"));
    m_runtime->control(command("restart"));
    QCOMPARE(ask("deviceidle", idle, 16, Papertrail), 1);
    QCOMPARE(ask("deviceidle", idle, 16, QStringLiteral("not.there")), 0);

    const QJsonObject state = m_runtime->control(command("state"));
    QCOMPARE(state.value(QStringLiteral("whitelist")).toArray(), QJsonArray{Papertrail});
    QCOMPARE(state.value(QStringLiteral("timezone")).toString(), QStringLiteral("Europe/Helsinki"));
    ask("deviceidle", idle, 2, Papertrail);
    QCOMPARE(ask("deviceidle", idle, 16, Papertrail), 0);
}

void RuntimeTest::tellsUidAndSizes()
{
    start(28);
    ReceivedResults installed;
    const auto observer = object("android.content.pm.IPackageInstallObserver2", &installed);
    install("papertrail.apk", observer.get());
    QTRY_COMPARE(installed.calls.size(), 1);

    const auto package = client("package", PackageDescriptor);
    const auto uid = package->createRequest();
    Binder::Writer arguments = uid->writer();
    arguments.appendString16("org.example.papertrail");
    arguments.appendInt32(0);
    arguments.appendInt32(0);
    const auto uidReply = package->transact(5, *uid);
    Binder::Reader uidReader = uidReply->reader();
    QCOMPARE(nextInt32(&uidReader), 0);
    QCOMPARE(nextInt32(&uidReader), 10000);

    const auto stats = client("storagestats", "android.app.usage.IStorageStatsManager");
    const auto query = stats->createRequest();
    arguments = query->writer();
    arguments.appendString16(nullptr);
    arguments.appendString16("org.example.papertrail");
    arguments.appendInt32(0);
    arguments.appendString16(nullptr);
    const auto reply = stats->transact(7, *query);
    Binder::Reader reader = reply->reader();
    QCOMPARE(nextInt32(&reader), 0);
    QCOMPARE(nextInt32(&reader), 1);
    qint64 code = 0;
    QVERIFY(reader.readInt64(&code));
    QCOMPARE(code, QFileInfo(QStringLiteral(SIM_APKS "/papertrail.apk")).size());
    QCOMPARE(reader.bytesRemaining(), std::size_t(16));
}

void RuntimeTest::hidesAHeldService()
{
    start(28, {QStringLiteral("--hold"), QStringLiteral("umbra")});
    const QJsonObject umbra{{QStringLiteral("service"), QStringLiteral("umbra")}};

    QVERIFY(m_manager->getService("umbra") == nullptr);
    QVERIFY(m_manager->getService("package") != nullptr);
    m_runtime->control(command("release", umbra));
    QVERIFY(m_manager->getService("umbra") != nullptr);
    m_runtime->control(command("hold", umbra));
    m_runtime->control(command("restart"));
    QVERIFY(m_manager->getService("umbra") == nullptr);
}

void RuntimeTest::bootsInItsOwnTime()
{
    start(28, {QStringLiteral("--boot-delay-ms"), QStringLiteral("300")});
    QVERIFY(m_manager->getService("umbra") != nullptr);

    m_runtime->control(command("restart"));

    QVERIFY(m_manager->getService("umbra") == nullptr);
    QTRY_VERIFY(m_manager->getService("umbra") != nullptr);
}

void RuntimeTest::callsTheLauncherOnCommand()
{
    start(28);
    ReceivedAnnouncements announcements;
    const auto launcher = object(LauncherDescriptor, &announcements);
    const auto name = m_manager->registerName("umbra.launcher", *launcher);
    QTRY_COMPARE(announcements.calls.size(), 1);
    announcements.calls.clear();

    const QJsonObject answer = m_runtime->control(
        command("call", {{QStringLiteral("service"), QStringLiteral("umbra.launcher")},
                         {QStringLiteral("code"), 3},
                         {QStringLiteral("data"), QStringLiteral("0300000061002e0062000000")}}));
    const QJsonObject ping = m_runtime->control(
        command("call", {{QStringLiteral("service"), QStringLiteral("umbra.launcher")},
                         {QStringLiteral("code"), 0x5f504e47},
                         {QStringLiteral("token"), false}}));

    QCOMPARE(answer.value(QStringLiteral("status")).toInt(-1), 0);
    QCOMPARE(answer.value(QStringLiteral("reply")).toString(), QString());
    QCOMPARE(announcements.calls, QStringList{QStringLiteral("3|a.b")});
    QCOMPARE(ping.value(QStringLiteral("reply")).toString(), QStringLiteral("00000000"));
}

void RuntimeTest::endsACallWhenItDiesMeanwhile()
{
    start(28);
    m_runtime->control(command("fault", {{QStringLiteral("service"), QStringLiteral("umbra")},
                                         {QStringLiteral("kind"), QStringLiteral("die")}}));
    const auto umbra = client("umbra", UmbraDescriptor);
    const auto request = umbra->createRequest();
    request->writer().appendString16("a.b");
    Binder::Status status = 0;

    QVERIFY(umbra->transact(1, *request, &status) == nullptr);

    QCOMPARE(status, Binder::StatusDeadObject);
}

void RuntimeTest::answersWhatIsPendingWhenItRestarts()
{
    start(28);
    const QString hanging = QStringLiteral("umbra");
    m_runtime->control(command("fault", {{QStringLiteral("service"), hanging},
                                         {QStringLiteral("kind"), QStringLiteral("hang")}}));
    QLocalSocket other;
    other.connectToServer(m_runtime->controlPath());
    other.write("{\"command\":\"call\",\"service\":\"umbra\",\"code\":1,"
                "\"interface\":\"umbra.applications.IUmbraService\","
                "\"data\":\"0300000061002e0062000000\"}\n");
    QTRY_COMPARE(m_runtime->record().size(), 1);

    m_runtime->control(command("restart"));

    QTRY_VERIFY(other.canReadLine());
    QCOMPARE(other.readLine(), QByteArray("{\"ok\":true,\"reply\":\"\",\"status\":-32}\n"));
}

void RuntimeTest::answersBadCommands()
{
    start(28);
    const auto error = [this](const QJsonObject &bad) {
        const QJsonObject answer = m_runtime->control(bad);
        return answer.value(QStringLiteral("ok")).toBool(true)
                   ? QString()
                   : answer.value(QStringLiteral("error")).toString();
    };

    QCOMPARE(error({}), QStringLiteral("unknown command"));
    QCOMPARE(error(command("dance")), QStringLiteral("unknown command"));
    QCOMPARE(error(command("fault", {{QStringLiteral("kind"), QStringLiteral("sulk")}})),
             QStringLiteral("unknown kind of fault"));
    QCOMPARE(error(command("observer", {{QStringLiteral("kind"), QStringLiteral("install")}})),
             QStringLiteral("no such object has been handed over"));
}

void RuntimeTest::endsCleanly()
{
    start(28);

    QCOMPARE(m_runtime->stop(), 0);
}

QTEST_GUILESS_MAIN(RuntimeTest)
#include "tst_runtime.moc"
