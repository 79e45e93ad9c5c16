#include "runtime/parcelreader.h"
#include "runtime/parcelwriter.h"
#include "support/testcase.h"

#include <QtTest>

using namespace SimRuntime;

Q_DECLARE_METATYPE(Parcel)
Q_DECLARE_METATYPE(std::function<void(ParcelReader *)>)

class ParcelReaderTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void readingUndoesWriting();
    void tellsNullFromEmpty();
    void acceptsAnOwnObjectThatComesHome();
    void refusesWhatIsNotExactlyAsItShouldBe_data();
    void refusesWhatIsNotExactlyAsItShouldBe();
    void givesDefaultsAfterTheFirstProblem();
    void limitsListsToWhatTheMessageCanHold();
};

namespace {

Parcel parcel(const char *hex, const QVector<quint64> &objects = {})
{
    return {QByteArray::fromHex(hex), objects};
}

} // namespace

void ParcelReaderTest::readingUndoesWriting()
{
    ParcelWriter writer;
    writer.int32(-7);
    writer.int64(Q_INT64_C(1) << 40);
    writer.string16(QStringLiteral("odd"));
    writer.string16(QStringLiteral("even"));
    writer.byteArray("\x01\x02\x03");
    writer.remoteObject(9);
    writer.nullObject();
    writer.int32(5);

    ParcelReader reader(writer.parcel());
    QCOMPARE(reader.int32(), -7);
    QCOMPARE(reader.int64(), Q_INT64_C(1) << 40);
    QCOMPARE(reader.string16(), QStringLiteral("odd"));
    QCOMPARE(reader.string16(), QStringLiteral("even"));
    QCOMPARE(reader.byteArray(), QByteArray("\x01\x02\x03"));
    QCOMPARE(reader.object(), (ObjectReference{ObjectReference::Kind::Remote, 9, 0}));
    QCOMPARE(reader.object(), ObjectReference());
    QCOMPARE(reader.int32(), 5);

    QCOMPARE(reader.remaining(), 0);
    QVERIFY2(!reader.failed(), qPrintable(reader.problem()));
}

void ParcelReaderTest::tellsNullFromEmpty()
{
    ParcelReader reader(parcel("ffffffff 00000000 00000000 ffffffff 00000000"));

    QVERIFY(reader.string16().isNull());
    const QString empty = reader.string16();
    QVERIFY(!empty.isNull() && empty.isEmpty());
    QVERIFY(reader.byteArray().isNull());
    const QByteArray none = reader.byteArray();
    QVERIFY(!none.isNull() && none.isEmpty());
    QVERIFY2(!reader.failed(), qPrintable(reader.problem()));
}

void ParcelReaderTest::acceptsAnOwnObjectThatComesHome()
{
    ParcelReader reader(parcel("852a6273 00000000 0300000000000000 0300000000000000", {0}));

    QCOMPARE(reader.object(), (ObjectReference{ObjectReference::Kind::Local, 0, 3}));
}

void ParcelReaderTest::refusesWhatIsNotExactlyAsItShouldBe_data()
{
    QTest::addColumn<Parcel>("message");
    QTest::addColumn<std::function<void(ParcelReader *)>>("read");
    const auto row = [](const char *name, const Parcel &message,
                        std::function<void(ParcelReader *)> read) {
        QTest::newRow(name) << message << read;
    };
    const auto int32 = [](ParcelReader *r) { r->int32(); };
    const auto int64 = [](ParcelReader *r) { r->int64(); };
    const auto string = [](ParcelReader *r) { r->string16(); };
    const auto bytes = [](ParcelReader *r) { r->byteArray(); };
    const auto object = [](ParcelReader *r) { r->object(); };

    row("int32 past the end", parcel("010000"), int32);
    row("int64 past the end", parcel("01000000 020000"), int64);
    row("string of impossible length", parcel("ffffff7f 61000000"), string);
    row("string of length -2", parcel("feffffff 61000000"), string);
    row("string without room for its terminator", parcel("02000000 6100 6200"), string);
    row("string with another terminator", parcel("01000000 6100 6200"), string);
    row("string with other padding", parcel("02000000 6100 6200 0000 0001"), string);
    row("string that lacks padding", parcel("02000000 6100 6200 0000"), string);
    row("byte array of impossible length", parcel("05000000 01020304"), bytes);
    row("byte array of length -2", parcel("feffffff"), bytes);
    row("byte array with other padding", parcel("01000000 01000001"), bytes);
    row("object cut short", parcel("852a6873 00000000 0500000000000000", {0}), object);
    row("object that is not listed", parcel("852a6873 00000000 0500000000000000 0000000000000000"),
        object);
    row("null object that is listed",
        parcel("852a6273 00000000 0000000000000000 0000000000000000", {0}), object);
    row("a descriptor where an object is expected",
        parcel("852a6466 00000000 0500000000000000 0000000000000000", {0}), object);
    row("int32 on an object", parcel("852a6873 00000000 0500000000000000 0000000000000000", {0}),
        int32);
}

void ParcelReaderTest::refusesWhatIsNotExactlyAsItShouldBe()
{
    QFETCH(Parcel, message);
    QFETCH(std::function<void(ParcelReader *)>, read);

    ParcelReader reader(message);
    read(&reader);

    QVERIFY(reader.failed());
}

void ParcelReaderTest::givesDefaultsAfterTheFirstProblem()
{
    ParcelReader reader(parcel("ffffff7f 01000000 02000000"));
    QVERIFY(reader.string16().isNull());
    const QString problem = reader.problem();

    QCOMPARE(reader.int32(), 0);
    QCOMPARE(reader.int64(), 0);
    QCOMPARE(reader.object(), ObjectReference());
    QCOMPARE(reader.problem(), problem);
}

void ParcelReaderTest::limitsListsToWhatTheMessageCanHold()
{
    bool isNull = false;
    ParcelReader possible(parcel("02000000 ffffffff ffffffff"));
    QCOMPARE(possible.count(4, &isNull), 2);
    QVERIFY(!isNull);

    ParcelReader null(parcel("ffffffff"));
    QCOMPARE(null.count(4, &isNull), 0);
    QVERIFY(isNull && !null.failed());

    ParcelReader impossible(parcel("03000000 ffffffff ffffffff"));
    QCOMPARE(impossible.count(4, &isNull), 0);
    QVERIFY(impossible.failed());
}

QTEST_GUILESS_MAIN(ParcelReaderTest)
#include "tst_parcelreader.moc"
