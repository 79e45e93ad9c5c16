#include "support/testcase.h"
#include "tools/ctl/literals.h"
#include "tools/ctl/texttable.h"

#include <QtTest>

class TextTableTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void alignsColumns();
    void countsWideCharactersTwiceAndMarksNever();
    void keepsCellsToTheirLine();
    void namesBytesShortly_data();
    void namesBytesShortly();
};

void TextTableTest::alignsColumns()
{
    QCOMPARE(TextTable::lines(
                 {{"PKG"_q, "NAME"_q, ""_q}, {"a.b.c"_q, "x"_q}, {"d"_q, ""_q, "hidden"_q}}),
             QStringList({"PKG    NAME"_q, "a.b.c  x"_q, "d            hidden"_q}));
    QCOMPARE(TextTable::lines({}), QStringList());
}

void TextTableTest::countsWideCharactersTwiceAndMarksNever()
{
    QVERIFY(setlocale(LC_CTYPE, "C.UTF-8") != nullptr); // part of the C library's package
    QCOMPARE(TextTable::width(QStringLiteral("天気")), 4);
    QCOMPARE(TextTable::width(QStringLiteral("u\u0308ber")), 4);
    QCOMPARE(TextTable::width(QStringLiteral("Köln")), 4);
}

void TextTableTest::keepsCellsToTheirLine()
{
    QCOMPARE(TextTable::lines({{QStringLiteral("a\nb\x1b[2J"), "c"_q}}),
             QStringList("a b [2J  c"_q));
}

void TextTableTest::namesBytesShortly_data()
{
    QTest::addColumn<quint64>("number");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << quint64(0) << "0 bytes"_q;
    QTest::newRow("few") << quint64(999) << "999 bytes"_q;
    QTest::newRow("thousands") << quint64(16940) << "16.9 kB"_q;
    QTest::newRow("billions") << quint64(1430000000) << "1.4 GB"_q;
    QTest::newRow("more than a signed number") << ~quint64(0) << "9.2 EB"_q;
}

void TextTableTest::namesBytesShortly()
{
    QFETCH(quint64, number);
    QTEST(TextTable::bytes(number), "text");
}

QTEST_GUILESS_MAIN(TextTableTest)
#include "tst_texttable.moc"
