#include "runtime/parcelwriter.h"
#include "runtime/request.h"
#include "support/testcase.h"

#include <QJsonArray>
#include <QtTest>

using namespace SimRuntime;

class RequestTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void readsArgumentsInOrder();
    void readsAnIntentWithoutAnythingSet_data();
    void readsAnIntentWithoutAnythingSet();
    void readsAFullIntent();
    void refusesAnIntentThatGoesWrong_data();
    void refusesAnIntentThatGoesWrong();
    void refusesAnOptionalArgumentThatIsThere();
};

namespace {

QJsonObject intentOf(const QByteArray &bytes, int sdk, QString *problem)
{
    ParcelWriter writer;
    writer.int32(1);
    writer.raw(bytes);
    ParcelReader reader(writer.parcel());
    const Request request = Request::read(&reader, {{"intent", FieldKind::Intent}}, sdk);
    *problem = reader.problem();
    return request.intent("intent");
}

} // namespace

void RequestTest::readsArgumentsInOrder()
{
    ParcelWriter writer;
    writer.string16(QStringLiteral("a"));
    writer.remoteObject(5);
    writer.int32(66);
    writer.nullObject();
    writer.string16(QString());
    ParcelReader reader(writer.parcel());

    const Request request = Request::read(&reader,
                                          {{"path", FieldKind::String},
                                           {"observer", FieldKind::Object},
                                           {"flags", FieldKind::Int32},
                                           {"other", FieldKind::Object},
                                           {"installer", FieldKind::String}},
                                          28);

    QVERIFY2(!reader.failed(), qPrintable(reader.problem()));
    QCOMPARE(request.string("path"), QStringLiteral("a"));
    QCOMPARE(request.object("observer").handle, 5U);
    QCOMPARE(request.int32("flags"), 66);
    QCOMPARE(request.object("other").kind, ObjectReference::Kind::Null);
    QVERIFY(request.string("installer").isNull());
    QCOMPARE(request.json(),
             (QJsonObject{{QStringLiteral("path"), QStringLiteral("a")},
                          {QStringLiteral("observer"), QJsonObject{{QStringLiteral("handle"), 5}}},
                          {QStringLiteral("flags"), 66},
                          {QStringLiteral("other"), QJsonValue::Null},
                          {QStringLiteral("installer"), QJsonValue::Null}}));
}

void RequestTest::readsAnIntentWithoutAnythingSet_data()
{
    QTest::addColumn<int>("sdk");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("28") << 28
                        << QByteArray::fromHex("ffffffff 00000000 ffffffff 00000000 ffffffff"
                                               "ffffffff 00000000 00000000 00000000 00000000"
                                               "00000000 ffffffff");
    QTest::newRow("29") << 29
                        << QByteArray::fromHex("ffffffff 00000000 ffffffff ffffffff 00000000"
                                               "ffffffff ffffffff 00000000 00000000 00000000"
                                               "00000000 00000000 ffffffff");
}

void RequestTest::readsAnIntentWithoutAnythingSet()
{
    QFETCH(int, sdk);
    QFETCH(QByteArray, bytes);

    QString problem;
    const QJsonObject intent = intentOf(bytes, sdk, &problem);

    QVERIFY2(problem.isNull(), qPrintable(problem));
    QVERIFY(intent.value(QStringLiteral("action")).isNull());
    QVERIFY(intent.value(QStringLiteral("componentPackage")).isNull());
    QCOMPARE(intent.contains(QStringLiteral("identifier")), sdk == 29);
    QVERIFY(intent.value(QStringLiteral("extras")).isNull());
}

void RequestTest::readsAFullIntent()
{
    ParcelWriter writer;
    writer.string16(QStringLiteral("act"));
    writer.int32(1);
    writer.string16(QStringLiteral("package:a.b"));
    writer.string16(QStringLiteral("text/plain"));
    writer.int32(0x10000000);
    writer.string16(QString());
    writer.string16(QStringLiteral("a.b"));
    writer.string16(QStringLiteral("a.b.C"));
    for (const int bound : {1, 10, 20, 30, 40})
        writer.int32(bound);
    writer.int32(1);
    writer.string16(QStringLiteral("cat"));
    writer.int32(0); // no selector
    writer.int32(1); // clip data
    writer.string16(QStringLiteral("label"));
    writer.int32(1);
    writer.string16(QStringLiteral("image/png"));
    writer.raw(QByteArray::fromHex("04000000 424e444c 00000000"));
    writer.int64(99);
    writer.byteArray("");
    writer.int32(1);
    writer.string16(QStringLiteral("text"));
    writer.string16(QString());
    writer.int32(0);
    writer.int32(1);
    writer.string16(QStringLiteral("file:///x"));
    writer.int32(-2);
    writer.raw(QByteArray::fromHex("18000000 424e444c 01000000 01000000 6b000000"
                                   "00000000 01000000 76000000"));

    QString problem;
    const QJsonObject intent = intentOf(writer.parcel().data, 28, &problem);

    QVERIFY2(problem.isNull(), qPrintable(problem));
    QCOMPARE(intent.value(QStringLiteral("action")).toString(), QStringLiteral("act"));
    QCOMPARE(intent.value(QStringLiteral("data")).toString(), QStringLiteral("package:a.b"));
    QCOMPARE(intent.value(QStringLiteral("type")).toString(), QStringLiteral("text/plain"));
    QCOMPARE(intent.value(QStringLiteral("flags")).toInt(), 0x10000000);
    QCOMPARE(intent.value(QStringLiteral("componentClass")).toString(), QStringLiteral("a.b.C"));
    QCOMPARE(intent.value(QStringLiteral("bounds")).toArray(), (QJsonArray{10, 20, 30, 40}));
    QCOMPARE(intent.value(QStringLiteral("categories")).toArray(),
             QJsonArray{QStringLiteral("cat")});
    QCOMPARE(intent.value(QStringLiteral("contentUserHint")).toInt(), -2);
    QCOMPARE(intent.value(QStringLiteral("extras")).toObject(),
             (QJsonObject{{QStringLiteral("k"), QStringLiteral("v")}}));
    const QJsonObject clip = intent.value(QStringLiteral("clipData")).toObject();
    QCOMPARE(clip.value(QStringLiteral("label")).toString(), QStringLiteral("label"));
    QCOMPARE(clip.value(QStringLiteral("date")).toInt(), 99);
    const QJsonObject item = clip.value(QStringLiteral("items")).toArray().at(0).toObject();
    QCOMPARE(item.value(QStringLiteral("text")).toString(), QStringLiteral("text"));
    QCOMPARE(item.value(QStringLiteral("uri")).toString(), QStringLiteral("file:///x"));
}

void RequestTest::refusesAnIntentThatGoesWrong_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("a Uri form that nobody writes here") << QByteArray::fromHex("ffffffff 03000000");
    QTest::newRow("more categories than fit")
        << QByteArray::fromHex("ffffffff 00000000 ffffffff 00000000 ffffffff ffffffff 00000000"
                               "ffffff7f 00000000 00000000 00000000 ffffffff");
    QTest::newRow("a Bundle whose length is wrong")
        << QByteArray::fromHex("ffffffff 00000000 ffffffff 00000000 ffffffff ffffffff 00000000"
                               "00000000 00000000 00000000 00000000 08000000 424e444c 00000000");
    QTest::newRow("a Bundle without its magic number")
        << QByteArray::fromHex("ffffffff 00000000 ffffffff 00000000 ffffffff ffffffff 00000000"
                               "00000000 00000000 00000000 00000000 04000000 424e444d 00000000");

    QByteArray nested;
    for (int i = 0; i < 100; ++i)
        nested += QByteArray::fromHex("ffffffff 00000000 ffffffff 00000000 ffffffff ffffffff"
                                      "00000000 00000000 01000000");
    QTest::newRow("selectors without end") << nested;
}

void RequestTest::refusesAnIntentThatGoesWrong()
{
    QFETCH(QByteArray, bytes);

    QString problem;
    intentOf(bytes, 28, &problem);

    QVERIFY(!problem.isNull());
}

void RequestTest::refusesAnOptionalArgumentThatIsThere()
{
    ParcelWriter writer;
    writer.int32(1);
    ParcelReader reader(writer.parcel());

    Request::read(&reader, {{"options", FieldKind::AbsentBundle}}, 28);

    QVERIFY(reader.failed());
}

QTEST_GUILESS_MAIN(RequestTest)
#include "tst_request.moc"
