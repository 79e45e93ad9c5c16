#include "config/runtimetext.h"
#include "support/testcase.h"

#include <QtTest>

class RuntimeTextTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void turnsEveryControlCharacterIntoASpace();
    void keepsEverythingElse_data();
    void keepsEverythingElse();
    void replacesHalvesOfPairs_data();
    void replacesHalvesOfPairs();
    void quotesTheBeginningOfLongTexts();
    void tellsUsableNames_data();
    void tellsUsableNames();
};

void RuntimeTextTest::turnsEveryControlCharacterIntoASpace()
{
    QVector<ushort> controls{0x2028, 0x2029};
    for (ushort code = 0; code < 0x20; ++code)
        controls.append(code);
    for (ushort code = 0x7F; code < 0xA0; ++code)
        controls.append(code);

    for (const ushort code : qAsConst(controls)) {
        const QString text = QStringLiteral("a") + QChar(code) + QStringLiteral("Exec=x");
        QCOMPARE(RuntimeText::singleLine(text), QStringLiteral("a Exec=x"));
        QVERIFY(!RuntimeText::isUsableName(text));
    }
}

void RuntimeTextTest::keepsEverythingElse_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("nothing") << QString();
    QTest::newRow("spaces at both ends") << QStringLiteral("  a  ");
    QTest::newRow("backslashes and percent signs") << QStringLiteral("\\n \\s %f %%");
    QTest::newRow("printable ASCII at the borders") << QStringLiteral(" ~");
    QTest::newRow("no-break space") << QString(QChar(0xA0));
    QTest::newRow("a surrogate pair") << QString::fromUtf8("\xF0\x9F\x98\x80x");
    QTest::newRow("two pairs") << QString::fromUtf8("\xF0\x9F\x98\x80\xF0\x9F\x98\x80");
    QTest::newRow("right-to-left text") << QString::fromUtf8("\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D");
    QTest::newRow("beside the separators") << QString(QChar(0x2027)) + QChar(0x202A);
}

void RuntimeTextTest::keepsEverythingElse()
{
    QFETCH(QString, text);

    QCOMPARE(RuntimeText::singleLine(text), text);
}

void RuntimeTextTest::replacesHalvesOfPairs_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("line");

    const QChar high(0xD83D);
    const QChar low(0xDE00);
    const QChar replaced(QChar::ReplacementCharacter);
    const auto text = [](std::initializer_list<QChar> characters) {
        return QString(characters.begin(), static_cast<int>(characters.size()));
    };
    QTest::newRow("high alone") << text({high}) << text({replaced});
    QTest::newRow("low alone") << text({low}) << text({replaced});
    QTest::newRow("high at the end")
        << text({QLatin1Char('a'), high}) << text({QLatin1Char('a'), replaced});
    QTest::newRow("low before high") << text({low, high}) << text({replaced, replaced});
    QTest::newRow("high before a pair") << text({high, high, low}) << text({replaced, high, low});
    QTest::newRow("low after a pair") << text({high, low, low}) << text({high, low, replaced});
    QTest::newRow("line break between the halves")
        << text({high, QLatin1Char('\n'), low}) << text({replaced, QLatin1Char(' '), replaced});
}

void RuntimeTextTest::replacesHalvesOfPairs()
{
    QFETCH(QString, text);
    QFETCH(QString, line);

    QCOMPARE(RuntimeText::singleLine(text), line);
    if (!text.contains(QLatin1Char('\n')))
        QCOMPARE(RuntimeText::wellFormed(text), line);
    QVERIFY(!RuntimeText::isUsableName(text));
}

void RuntimeTextTest::quotesTheBeginningOfLongTexts()
{
    QCOMPARE(RuntimeText::excerpt(QStringLiteral("a.b")), QStringLiteral("a.b"));
    QCOMPARE(RuntimeText::excerpt(QString(1000000, QLatin1Char('a'))),
             QString(255, QLatin1Char('a')));
}

void RuntimeTextTest::tellsUsableNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("usable");

    QTest::newRow("package") << QStringLiteral("com.example.app_2") << true;
    QTest::newRow("inner class") << QStringLiteral("com.example.Main$Inner") << true;
    QTest::newRow("other letters") << QString::fromUtf8("com.\xC3\xA9xample") << true;
    QTest::newRow("null") << QString() << false;
    QTest::newRow("empty") << QStringLiteral("") << false;
    QTest::newRow("slash") << QStringLiteral("a/b") << false;
    QTest::newRow("slash first") << QStringLiteral("/a") << false;
    QTest::newRow("digit, underscore, dash inside") << QStringLiteral("2_a-b") << true;
    QTest::newRow("letters beyond the first plane")
        << QString::fromUtf8("a.\xF0\x9D\x94\x80") << true;
    QTest::newRow("dots") << QStringLiteral("..") << true;
    QTest::newRow("dash first") << QStringLiteral("-d") << false;
    QTest::newRow("no-break space") << QStringLiteral("a\u00A0b") << false;
    QTest::newRow("ideographic space") << QStringLiteral("a\u3000b") << false;
    QTest::newRow("right-to-left mark") << QStringLiteral("a\u200Fb") << false;
    QTest::newRow("right-to-left override") << QStringLiteral("a\u202Eb") << false;
    QTest::newRow("mark beyond the first plane") << QString::fromUtf8("a\xF3\xA0\x80\x81") << false;
    const QByteArray others(" !\"#%&'()*+,:;<=>?@[\\]^`{|}~");
    for (const char character : others) {
        QTest::newRow((QByteArray("character ") + character).constData())
            << QStringLiteral("a%1b").arg(QLatin1Char(character)) << false;
    }
    QTest::newRow("line break last") << QStringLiteral("a\n") << false;
}

void RuntimeTextTest::tellsUsableNames()
{
    QFETCH(QString, name);
    QFETCH(bool, usable);

    QCOMPARE(RuntimeText::isUsableName(name), usable);
}

QTEST_GUILESS_MAIN(RuntimeTextTest)
#include "tst_runtimetext.moc"
