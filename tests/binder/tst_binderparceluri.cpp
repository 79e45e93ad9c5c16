#include "binder/binderparcel.h"
#include "binder/messages.h"
#include "support/testcase.h"

#include <QtTest>

using Messages::bytes;
using Messages::Received;
using Messages::written;

namespace {

/// A part as Android sends it: representation and one string.
void writePart(BinderParcel &parcel, int representation, const char *text)
{
    parcel.writeInt32(representation);
    parcel.writeString(QString::fromLatin1(text)); // null for a null pointer
}

} // namespace

class BinderParcelUriTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void writesAnEmptyUrlAsTheNullUri();
    void writesTheStringForm();
    void readsWhatItWrote_data();
    void readsWhatItWrote();
    void readsTheNullUriAndUnknownTypesAsEmpty_data();
    void readsTheNullUriAndUnknownTypesAsEmpty();
    void readsTheOpaqueForm();
    void readsTheHierarchicalForm();
    void keepsPercentSignsOfADecodedPath();
    void decodesAnEncodedPath();
    void decodesPartsOfUnknownRepresentation();
    void leavesTheSecondStringOfAPartInBothFormsUnread();
    void readsAHierarchicalUriCutShort();
};

void BinderParcelUriTest::writesAnEmptyUrlAsTheNullUri()
{
    QCOMPARE(written([](BinderParcel &parcel) { parcel.writeUri(QUrl()); }), bytes("00000000"));
}

void BinderParcelUriTest::writesTheStringForm()
{
    QCOMPARE(
        written([](BinderParcel &parcel) { parcel.writeUri(QUrl(QStringLiteral("package:a.b"))); }),
        bytes("01000000 0b000000 7000610063006b00 6100670065003a00 61002e0062000000"));
    // as QUrl shows it to people
    QCOMPARE(
        written([](BinderParcel &parcel) { parcel.writeUri(QUrl(QStringLiteral("x:a%20b%25"))); }),
        bytes("01000000 08000000 78003a00 61002000 62002500 32003500 00000000"));
}

void BinderParcelUriTest::readsWhatItWrote_data()
{
    QTest::addColumn<QUrl>("url");

    QTest::newRow("empty") << QUrl();
    QTest::newRow("opaque") << QUrl(QStringLiteral("package:a.b"));
    QTest::newRow("hierarchical") << QUrl(QStringLiteral("https://u@host:8080/p/q?a=b#c"));
    QTest::newRow("file") << QUrl(QStringLiteral("file:///storage/a%20b%23.pdf"));
    QTest::newRow("relative") << QUrl(QStringLiteral("a/b"));
}

void BinderParcelUriTest::readsWhatItWrote()
{
    QFETCH(QUrl, url);

    Received message(written([&](BinderParcel &parcel) {
        parcel.writeUri(url);
        parcel.writeInt32(42);
    }));

    QCOMPARE(message.parcel.readUri(), url);
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelUriTest::readsTheNullUriAndUnknownTypesAsEmpty_data()
{
    QTest::addColumn<int>("type");

    QTest::newRow("null") << 0;
    QTest::newRow("unknown") << 4;
    QTest::newRow("negative") << -1;
}

void BinderParcelUriTest::readsTheNullUriAndUnknownTypesAsEmpty()
{
    QFETCH(int, type);
    Received message(written([type](BinderParcel &parcel) {
        parcel.writeInt32(type);
        parcel.writeInt32(42);
    }));

    QCOMPARE(message.parcel.readUri(), QUrl());
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelUriTest::readsTheOpaqueForm()
{
    Received message(written([](BinderParcel &parcel) {
        parcel.writeInt32(2);
        parcel.writeString(QStringLiteral("mailto"));
        writePart(parcel, 1, "a%40b.c");
        writePart(parcel, 2, "frag");
        parcel.writeInt32(42);
    }));

    const QUrl url = message.parcel.readUri();

    QCOMPARE(url.scheme(), QStringLiteral("mailto"));
    QCOMPARE(url.path(), QStringLiteral("a@b.c"));
    QCOMPARE(url.fragment(), QStringLiteral("frag"));
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelUriTest::readsTheHierarchicalForm()
{
    Received message(written([](BinderParcel &parcel) {
        parcel.writeInt32(3);
        parcel.writeString(QStringLiteral("https"));
        writePart(parcel, 1, "user@host:81");
        writePart(parcel, 1, "/a%20b");
        writePart(parcel, 1, "x=y");
        writePart(parcel, 1, "end");
        parcel.writeInt32(42);
    }));

    QCOMPARE(message.parcel.readUri(), QUrl(QStringLiteral("https://user@host:81/a%20b?x=y#end")));
    QCOMPARE(message.parcel.readInt32(), 42);
}

void BinderParcelUriTest::keepsPercentSignsOfADecodedPath()
{
    Received message(written([](BinderParcel &parcel) {
        parcel.writeInt32(3);
        parcel.writeString(QStringLiteral("file"));
        writePart(parcel, 2, "");
        writePart(parcel, 2, "/a%20b");
        writePart(parcel, 2, nullptr);
        writePart(parcel, 2, nullptr);
    }));

    const QUrl url = message.parcel.readUri();

    QCOMPARE(url.path(QUrl::FullyDecoded), QStringLiteral("/a%20b"));
    QVERIFY(!url.hasQuery());
    QVERIFY(!url.hasFragment());
}

void BinderParcelUriTest::decodesAnEncodedPath()
{
    Received message(written([](BinderParcel &parcel) {
        parcel.writeInt32(3);
        parcel.writeString(QStringLiteral("file"));
        writePart(parcel, 1, "");
        writePart(parcel, 1, "/a%20b");
        writePart(parcel, 1, nullptr);
        writePart(parcel, 1, nullptr);
    }));

    const QUrl url = message.parcel.readUri();

    QCOMPARE(url.path(QUrl::FullyDecoded), QStringLiteral("/a b"));
}

void BinderParcelUriTest::decodesPartsOfUnknownRepresentation()
{
    Received message(written([](BinderParcel &parcel) {
        parcel.writeInt32(2);
        parcel.writeString(QStringLiteral("a"));
        writePart(parcel, 77, "%41");
        writePart(parcel, -1, "%42");
    }));

    const QUrl url = message.parcel.readUri();

    QCOMPARE(url.path(), QStringLiteral("A"));
    QCOMPARE(url.fragment(), QStringLiteral("B"));
}

void BinderParcelUriTest::leavesTheSecondStringOfAPartInBothFormsUnread()
{
    Received message(written([](BinderParcel &parcel) {
        parcel.writeInt32(2);
        parcel.writeString(QStringLiteral("a"));
        writePart(parcel, 0, "%41");
        writePart(parcel, 0, "%42");
        parcel.writeString(QStringLiteral("B"));
    }));

    const QUrl url = message.parcel.readUri();

    QCOMPARE(url.path(), QStringLiteral("A"));
    QCOMPARE(url.fragment(), QStringLiteral("B"));
    QCOMPARE(message.parcel.readString(), QStringLiteral("B"));
}

void BinderParcelUriTest::readsAHierarchicalUriCutShort()
{
    Received message(written([](BinderParcel &parcel) {
        parcel.writeInt32(3);
        parcel.writeString(QStringLiteral("http"));
        writePart(parcel, 1, "host");
    }));

    QCOMPARE(message.parcel.readUri(), QUrl(QStringLiteral("http://host")));
    QCOMPARE(message.parcel.readInt32(), -1);
    QCOMPARE(log().size(), 0);
}

QTEST_GUILESS_MAIN(BinderParcelUriTest)
#include "tst_binderparceluri.moc"
