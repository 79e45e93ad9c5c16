#include "runtime/parcelwriter.h"
#include "support/testcase.h"

#include <QtTest>

using namespace SimRuntime;

Q_DECLARE_METATYPE(std::function<void(ParcelWriter *)>)

class ParcelWriterTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void writesTheBytesThatAndroidWrites_data();
    void writesTheBytesThatAndroidWrites();
    void listsObjectsButNotTheNullObject();
};

void ParcelWriterTest::writesTheBytesThatAndroidWrites_data()
{
    QTest::addColumn<std::function<void(ParcelWriter *)>>("write");
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char *name, std::function<void(ParcelWriter *)> write,
                        const char *hex) {
        QTest::newRow(name) << write << QByteArray::fromHex(hex);
    };

    row(
        "int32", [](ParcelWriter *w) { w->int32(-2); }, "feffffff");
    row(
        "int64 is not aligned to 8",
        [](ParcelWriter *w) {
            w->int32(1);
            w->int64(2);
        },
        "01000000 0200000000000000");
    row(
        "bool", [](ParcelWriter *w) { w->boolean(true); }, "01000000");
    row(
        "null string", [](ParcelWriter *w) { w->string16(QString()); }, "ffffffff");
    row(
        "empty string", [](ParcelWriter *w) { w->string16(QStringLiteral("")); },
        "00000000 00000000");
    row(
        "string that ends with its terminator",
        [](ParcelWriter *w) { w->string16(QStringLiteral("abc")); },
        "03000000 6100 6200 6300 0000");
    row(
        "string that is padded", [](ParcelWriter *w) { w->string16(QStringLiteral("ab")); },
        "02000000 6100 6200 0000 0000");
    row(
        "surrogates count as two units",
        [](ParcelWriter *w) { w->string16(QString::fromUtf8("\xf0\x9f\x8c\xa6")); },
        "02000000 3cd8 26df 0000 0000");
    row(
        "byte array is padded",
        [](ParcelWriter *w) { w->byteArray(QByteArray::fromHex("0102030405")); },
        "05000000 0102030405 000000");
    row(
        "null byte array", [](ParcelWriter *w) { w->byteArray(QByteArray()); }, "ffffffff");
    row(
        "null object", [](ParcelWriter *w) { w->nullObject(); },
        "852a6273 13010000 0000000000000000 0000000000000000");
    row(
        "own object", [](ParcelWriter *w) { w->localObject(1); },
        "852a6273 13010000 0100000000000000 0100000000000000");
    row(
        "remote object", [](ParcelWriter *w) { w->remoteObject(5); },
        "852a6873 13010000 0500000000000000 0000000000000000");
}

void ParcelWriterTest::writesTheBytesThatAndroidWrites()
{
    QFETCH(std::function<void(ParcelWriter *)>, write);
    QFETCH(QByteArray, bytes);

    ParcelWriter writer;
    write(&writer);

    QCOMPARE(writer.parcel().data.toHex(), bytes.toHex());
}

void ParcelWriterTest::listsObjectsButNotTheNullObject()
{
    ParcelWriter writer;
    writer.int32(0);
    writer.localObject(1);
    writer.nullObject();
    writer.remoteObject(5);

    QCOMPARE(writer.parcel().objects, (QVector<quint64>{4, 52}));
}

QTEST_GUILESS_MAIN(ParcelWriterTest)
#include "tst_parcelwriter.moc"
