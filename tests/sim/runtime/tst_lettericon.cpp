#include "runtime/lettericon.h"
#include "runtime/png.h"
#include "support/testcase.h"

#include <QtTest>

using namespace SimRuntime;

class LetterIconTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void isAPngThatOthersRead();
    void encodesPixelsInOrder();
    void showsTheFirstLetter();
    void looksTheSameEveryTime();
};

namespace {

QByteArray inflatedPixels(const QByteArray &png)
{
    const int start = png.indexOf("IDAT") + 4;
    const QByteArray lengthForQt = QByteArray::fromHex("00000000");
    return qUncompress(lengthForQt + png.mid(start, png.indexOf("IEND") - 8 - start));
}

} // namespace

void LetterIconTest::isAPngThatOthersRead()
{
    const QByteArray icon = letterIcon(QStringLiteral("App"));

    // Signature, header of 192 by 192 pixels, and the end with its known checksum.
    QVERIFY(icon.toHex().startsWith("89504e470d0a1a0a0000000d49484452000000c0000000c00806000000"));
    QVERIFY(icon.toHex().endsWith("0000000049454e44ae426082"));
}

void LetterIconTest::encodesPixelsInOrder()
{
    const QByteArray png = encodePng(2, {0xff112233, 0x80445566, 0x00000000, 0xffffffff});

    QCOMPARE(inflatedPixels(png).toHex(), QByteArray("00"
                                                     "112233ff"
                                                     "44556680"
                                                     "00"
                                                     "00000000"
                                                     "ffffffff"));
}

void LetterIconTest::showsTheFirstLetter()
{
    const auto pixels = [](const char *label) {
        QByteArray shape = inflatedPixels(letterIcon(QString::fromUtf8(label)));
        const QByteArray background = shape.mid(1, 4);
        shape.replace(background, "back");
        return shape;
    };

    QCOMPARE(pixels("abc"), pixels("Axyz"));
    QVERIFY(pixels("abc") != pixels("bcd"));
    QCOMPARE(pixels("\xc3\x89t\xc3\xa9"), pixels("E")); // an accent
    QCOMPARE(pixels("\xe5\xa4\xa9"), pixels(""));       // another script: the ring
    QVERIFY(pixels("\xe5\xa4\xa9") != pixels("O"));
}

void LetterIconTest::looksTheSameEveryTime()
{
    QCOMPARE(letterIcon(QStringLiteral("App")), letterIcon(QStringLiteral("App")));
}

QTEST_GUILESS_MAIN(LetterIconTest)
#include "tst_lettericon.moc"
