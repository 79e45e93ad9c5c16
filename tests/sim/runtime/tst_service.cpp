#include "runtime/service.h"
#include "sim/runtime/servicefixture.h"
#include "support/testcase.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QtTest>

using namespace SimRuntime;

namespace {

constexpr char Descriptor[] = "org.example.IEcho";

/// Answers with the number that it was called with; its code differs by level.
class Echo : public Service
{
public:
    explicit Echo(const ServiceEnvironment &environment)
        : Service(environment, QStringLiteral("echo"), QLatin1String(Descriptor))
    {
        add({"echo",
             {7, 8, 9},
             {{"number", FieldKind::Int32}, {"name", FieldKind::String}},
             [](const Request &request) { return int32Answer(request.int32("number")); }});
    }
};

QByteArray answerTo(ServiceFixture *fixture, quint32 code, const ParcelWriter &request)
{
    Echo echo(fixture->environment());
    const auto answer = echo.transact(fixture->callOf(code, request));
    return answer && answer->status == StatusOk ? answer->parcel.data.toHex() : QByteArray();
}

} // namespace

class ServiceTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void choosesTheCodeByLevel_data();
    void choosesTheCodeByLevel();
    void answersAnUnknownCodeWithAStatus();
    void answersAWrongTokenWithASecurityException_data();
    void answersAWrongTokenWithASecurityException();
    void refusesARequestThatIsNotExact_data();
    void refusesARequestThatIsNotExact();
    void answersStandardTransactionsWithoutToken_data();
    void answersStandardTransactionsWithoutToken();
    void misbehavesOnDemand_data();
    void misbehavesOnDemand();
    void answersLateWhenItHangsForAWhile();
    void recordsWhatItReceives();
};

void ServiceTest::choosesTheCodeByLevel_data()
{
    QTest::addColumn<int>("sdk");
    QTest::addColumn<quint32>("code");
    QTest::newRow("26") << 26 << 9U;
    QTest::newRow("27") << 27 << 7U;
    QTest::newRow("28") << 28 << 8U;
    QTest::newRow("29") << 29 << 9U;
    QTest::newRow("30") << 30 << 9U;
}

void ServiceTest::choosesTheCodeByLevel()
{
    QFETCH(int, sdk);
    QFETCH(quint32, code);
    ServiceFixture fixture(sdk);
    ParcelWriter request = fixture.request(Descriptor);
    request.int32(42);
    request.string16(QString());

    QCOMPARE(answerTo(&fixture, code, request), QByteArray("00000000") + "2a000000");
}

void ServiceTest::answersAnUnknownCodeWithAStatus()
{
    ServiceFixture fixture;
    Echo echo(fixture.environment());

    const auto answer = echo.transact(fixture.callOf(7, fixture.request(Descriptor)));

    QCOMPARE(answer->status, -74);
    QCOMPARE(takeLog(QtWarningMsg).size(), 1);
}

void ServiceTest::answersAWrongTokenWithASecurityException_data()
{
    QTest::addColumn<int>("sdk");
    QTest::addColumn<int>("trailer");
    QTest::newRow("27: code and message") << 27 << 0;
    QTest::newRow("28: and an empty stack trace") << 28 << 4;
}

void ServiceTest::answersAWrongTokenWithASecurityException()
{
    QFETCH(int, sdk);
    QFETCH(int, trailer);
    ServiceFixture fixture(sdk);
    Echo echo(fixture.environment());

    const auto answer = echo.transact(fixture.callOf(8, fixture.request("org.example.IOther")));

    QCOMPARE(answer->status, StatusOk);
    ParcelReader reader(answer->parcel);
    QCOMPARE(reader.int32(), -1);
    QVERIFY(!reader.string16().isEmpty());
    QCOMPARE(reader.remaining(), trailer);
    QCOMPARE(takeLog(QtWarningMsg).size(), 1);
}

void ServiceTest::refusesARequestThatIsNotExact_data()
{
    QTest::addColumn<QByteArray>("arguments");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("too short") << QByteArray::fromHex("2a000000");
    QTest::newRow("four bytes too many") << QByteArray::fromHex("2a000000 ffffffff 00000000");
    QTest::newRow("impossible length") << QByteArray::fromHex("2a000000 ffffff7f");
}

void ServiceTest::refusesARequestThatIsNotExact()
{
    QFETCH(QByteArray, arguments);
    ServiceFixture fixture;
    ParcelWriter request = fixture.request(Descriptor);
    request.raw(arguments);

    QVERIFY(answerTo(&fixture, 8, request).startsWith("fdffffff"));
    QCOMPARE(takeLog(QtWarningMsg).size(), 1);
}

void ServiceTest::answersStandardTransactionsWithoutToken_data()
{
    QTest::addColumn<quint32>("code");
    QTest::addColumn<QByteArray>("reply");
    QTest::newRow("ping") << 0x5f504e47U << QByteArray("00000000");
    QTest::newRow("interface")
        << 0x5f4e5446U
        << QByteArray(
               "110000006f00720067002e006500780061006d0070006c0065002e0049004500630068006f00") +
               "0000";
    QTest::newRow("dump") << 0x5f444d50U << QByteArray();
    QTest::newRow("shell command") << 0x5f434d44U << QByteArray();
    QTest::newRow("system properties") << 0x5f535052U << QByteArray();
}

void ServiceTest::answersStandardTransactionsWithoutToken()
{
    QFETCH(quint32, code);
    QFETCH(QByteArray, reply);
    ServiceFixture fixture;
    Echo echo(fixture.environment());

    const auto answer = echo.transact(fixture.callOf(code, ParcelWriter()));

    QVERIFY(answer);
    QCOMPARE(answer->status, StatusOk);
    QCOMPARE(answer->parcel.data.toHex(), reply);
}

void ServiceTest::misbehavesOnDemand_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("value");
    QTest::addColumn<bool>("answers");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("replyStart");
    QTest::addColumn<int>("replySize");
    const QByteArray refusal = QByteArray("ffffffff");
    QTest::newRow("refuse") << int(Fault::Kind::Refuse) << 0 << true << 0 << refusal << 48;
    QTest::newRow("refuse as illegal state")
        << int(Fault::Kind::Refuse) << -5 << true << 0 << QByteArray("fbffffff") << 48;
    QTest::newRow("status") << int(Fault::Kind::Status) << -32 << true << -32 << QByteArray() << 0;
    QTest::newRow("short by all") << int(Fault::Kind::Short) << 0 << true << 0 << QByteArray() << 0;
    QTest::newRow("short by half")
        << int(Fault::Kind::Short) << 4 << true << 0 << QByteArray("00000000") << 4;
    const QByteArray reply = QByteArray("000000002a000000");
    QTest::newRow("long") << int(Fault::Kind::Long) << 3 << true << 0 << reply + "ffffff" << 11;
    QTest::newRow("objects") << int(Fault::Kind::Objects) << 2 << true << 0 << reply + "852a6273"
                             << 8 + 2 * 24;
    QTest::newRow("files") << int(Fault::Kind::Files) << 1 << true << 0 << reply + "852a6466"
                           << 8 + 24;
    QTest::newRow("hang") << int(Fault::Kind::Hang) << 0 << false << 0 << QByteArray() << 0;
}

void ServiceTest::misbehavesOnDemand()
{
    QFETCH(int, kind);
    QFETCH(int, value);
    QFETCH(bool, answers);
    QFETCH(int, status);
    QFETCH(QByteArray, replyStart);
    QFETCH(int, replySize);
    ServiceFixture fixture;
    Echo echo(fixture.environment());
    ParcelWriter request = fixture.request(Descriptor);
    request.int32(42);
    request.string16(QString());
    fixture.faults().add(QStringLiteral("echo"), 8U, {Fault::Kind(kind), value}, 1);

    const auto misbehaving = echo.transact(fixture.callOf(8, request));
    const auto behaving = echo.transact(fixture.callOf(8, request));

    QCOMPARE(misbehaving.has_value(), answers);
    if (answers) {
        QCOMPARE(misbehaving->status, status);
        QVERIFY(misbehaving->parcel.data.toHex().startsWith(replyStart));
        QCOMPARE(misbehaving->parcel.data.size(), replySize);
        const bool hasObjects =
            kind == int(Fault::Kind::Objects) || kind == int(Fault::Kind::Files);
        QCOMPARE(misbehaving->parcel.objects.size(), hasObjects ? value : 0);
    }
    QCOMPARE(behaving->parcel.data.size(), 8);
}

void ServiceTest::answersLateWhenItHangsForAWhile()
{
    ServiceFixture fixture;
    Echo echo(fixture.environment());
    const quint64 id = fixture.loop().publish(&echo);
    ParcelWriter request = fixture.request(Descriptor);
    request.int32(42);
    request.string16(QString());
    fixture.faults().add(QStringLiteral("echo"), std::nullopt, {Fault::Kind::Hang, 1}, 1);

    fixture.driver().giveMessage(BR_TRANSACTION, id, 8, 0, request.parcel());

    QByteArray answer;
    const auto answered = [&] {
        for (const auto &written : fixture.driver().takeWritten()) {
            if (written.command == BC_REPLY)
                answer = written.parcel.data;
        }
        return !answer.isEmpty();
    };
    QTRY_VERIFY(answered());
    QCOMPARE(answer.toHex(), QByteArray("00000000") + "2a000000");
}

void ServiceTest::recordsWhatItReceives()
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("record"));
    ServiceFixture fixture(28, path);
    Echo echo(fixture.environment());
    ParcelWriter request = fixture.request(Descriptor);
    request.int32(42);
    request.string16(QString());
    echo.transact(fixture.callOf(8, request));
    echo.transact(fixture.callOf(9, request));

    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QJsonObject known = QJsonDocument::fromJson(file.readLine()).object();
    const QJsonObject unknown = QJsonDocument::fromJson(file.readLine()).object();

    QCOMPARE(known.value(QStringLiteral("service")).toString(), QStringLiteral("echo"));
    QCOMPARE(known.value(QStringLiteral("interface")).toString(), QLatin1String(Descriptor));
    QCOMPARE(known.value(QStringLiteral("code")).toInt(), 8);
    QCOMPARE(known.value(QStringLiteral("oneway")).toBool(true), false);
    QCOMPARE(known.value(QStringLiteral("data")).toString().toLatin1(),
             request.parcel().data.toHex());
    QCOMPARE(known.value(QStringLiteral("method")).toString(), QStringLiteral("echo"));
    QCOMPARE(
        known.value(QStringLiteral("decoded")).toObject(),
        (QJsonObject{{QStringLiteral("number"), 42}, {QStringLiteral("name"), QJsonValue::Null}}));
    QVERIFY(!known.contains(QStringLiteral("problem")));
    QCOMPARE(unknown.value(QStringLiteral("problem")).toString(), QStringLiteral("unknown code"));
    QCOMPARE(takeLog(QtWarningMsg).size(), 1);
}

QTEST_GUILESS_MAIN(ServiceTest)
#include "tst_service.moc"
