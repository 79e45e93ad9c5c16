#include "launcher/jsontext.h"
#include "support/testcase.h"

#include <QtTest>

class JsonTextTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void spellsStringsAsQtDoes_data();
    void spellsStringsAsQtDoes();
    void spellsEveryCharacterAsQtDoes();
};

namespace {

QByteArray spelledByQt(const QString &text)
{
    const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    return array.mid(1, array.size() - 2);
}

} // namespace

void JsonTextTest::spellsStringsAsQtDoes_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("null") << QString();
    QTest::newRow("plain") << QStringLiteral("Paper Trail");
    QTest::newRow("another script") << QStringLiteral("\u65E5\u672C");
    QTest::newRow("surrogate pair") << QString::fromUtf8("\xF0\x9F\x98\x80");
    QTest::newRow("half of a pair") << QString(QChar(0xD83D)) + QLatin1Char('a');
    QTest::newRow("byte order mark") << QString(QChar(0xFEFF)) + QLatin1Char('a');
    QTest::newRow("escaped") << QStringLiteral("a\"b\\c\nd/e");
}

void JsonTextTest::spellsStringsAsQtDoes()
{
    QFETCH(QString, text);

    QCOMPARE(JsonText::string(text), spelledByQt(text));
}

void JsonTextTest::spellsEveryCharacterAsQtDoes()
{
    for (uint character = 0; character <= 0xFFFF; ++character) {
        const QString text(1, QChar(character));
        if (JsonText::string(text) != spelledByQt(text))
            QFAIL(qPrintable(QStringLiteral("U+%1").arg(character, 4, 16)));
    }
}

QTEST_GUILESS_MAIN(JsonTextTest)
#include "tst_jsontext.moc"
