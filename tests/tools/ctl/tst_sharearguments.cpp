#include "support/hostfiles.h"
#include "support/testcase.h"
#include "tools/ctl/invocation.h"
#include "tools/ctl/literals.h"
#include "tools/ctl/sharearguments.h"
#include "tools/ctl/shareplan.h"

#include <QDir>
#include <QtTest>

namespace {

const QString Home = QStringLiteral("/home/tester");

Invocation share(const QStringList &words, const QMap<QString, QStringList> &options = {})
{
    Invocation invocation;
    invocation.arguments = words;
    invocation.options = options;
    return invocation;
}

} // namespace

/// In a private root: what is written below /home is nobody else's.
class ShareArgumentsTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void tellsFilesFromWords_data();
    void tellsFilesFromWords();
    void sharesFiles();
    void sharesTexts_data();
    void sharesTexts();
    void refusesWhatWasMeantAsFiles_data();
    void refusesWhatWasMeantAsFiles();
    void takesAnythingAsTextWhenToldSo();
    void refusesOptionsThatDoNotApply();
};

void ShareArgumentsTest::initTestCase()
{
    HostFiles::makeEmptyDirectory(Home + QLatin1String("/Pictures"));
    HostFiles::write(Home + QLatin1String("/letter.pdf"), "%PDF-1.4\n");
    HostFiles::write(Home + QLatin1String("/Pictures/sea.jpg"), "\xff\xd8\xff");
    QVERIFY(QDir::setCurrent(Home));
}

void ShareArgumentsTest::tellsFilesFromWords_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<bool>("amongOthers");
    QTest::addColumn<bool>("alone");
    const auto row = [](const char *word, bool amongOthers, bool alone) {
        QTest::newRow(word) << QString::fromUtf8(word) << amongOthers << alone;
    };
    row("/no/such.pdf", true, true);
    row("./letter", true, true);
    row("../letter", true, true);
    row("~/letter", true, true);
    row("file:///no/such", true, true);
    row("lettre.pdf", false, true);
    row("Pictures/see.jpg", false, true);
    row("Pictures", false, true);
    row("Hello", false, false);
    row("Hello.", false, false);
    row("v1.2.3", false, false);
    row("...", false, false);
    row("~100", false, false);
    row("Read letter.pdf and/or weep", false, false);
    row("https://example.org/letter.pdf", false, false);
}

void ShareArgumentsTest::tellsFilesFromWords()
{
    QFETCH(QString, word);
    QTEST(ShareArguments::looksLikeFile(word, false), "amongOthers");
    QTEST(ShareArguments::looksLikeFile(word, true), "alone");
}

void ShareArgumentsTest::sharesFiles()
{
    ShareItems items;
    QVERIFY(ShareArguments::read(share({"letter.pdf"_q, "Pictures/sea.jpg"_q}), items).isDone());
    QCOMPARE(items.files,
             QStringList({"/home/tester/letter.pdf"_q, "/home/tester/Pictures/sea.jpg"_q}));
    QCOMPARE(items.mimeType, "*/*"_q);

    ShareItems typed;
    QVERIFY(
        ShareArguments::read(share({"letter.pdf"_q}, {{"--type"_q, {"x/y"_q}}}), typed).isDone());
    QCOMPARE(typed.mimeType, "x/y"_q);
}

void ShareArgumentsTest::sharesTexts_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::newRow("one word") << QStringList{"Hello"_q};
    QTest::newRow("several words") << QStringList{"Buy"_q, "and/or"_q, "fetch"_q, "it.pdf"_q};
    QTest::newRow("a word that a directory is named by") << QStringList{"My"_q, "Pictures"_q};
    QTest::newRow("a link") << QStringList{"https://example.org/a.pdf"_q};
}

void ShareArgumentsTest::sharesTexts()
{
    QFETCH(QStringList, words);
    ShareItems items;
    QVERIFY(ShareArguments::read(share(words), items).isDone());
    QVERIFY(items.isText());
    QCOMPARE(items.text, words.join(QLatin1Char(' ')));
    QCOMPARE(items.title, items.text);
}

void ShareArgumentsTest::refusesWhatWasMeantAsFiles_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QString>("says");
    QTest::newRow("two paths") << QStringList{"/no/a.pdf"_q, "/no/b.pdf"_q}
                               << "There is no file “/no/a.pdf”. Look at its spelling; to share "
                                  "these words as they are, give --text."_q;
    QTest::newRow("a path behind words")
        << QStringList{"Hello"_q, "./b"_q} << "There is no file “./b”."_q;
    QTest::newRow("a relative path")
        << QStringList{"Pictures/see.jpg"_q} << "There is no file “Pictures/see.jpg”."_q;
    QTest::newRow("a name") << QStringList{"lettre.pdf"_q} << "There is no file “lettre.pdf”."_q;
    QTest::newRow("a directory") << QStringList{"Pictures"_q}
                                 << "“Pictures” is a directory: name the files in it."_q;
    QTest::newRow("a directory beside a file")
        << QStringList{"letter.pdf"_q, "Pictures"_q}
        << "“Pictures” is a directory: name the files in it. Share files or a text, not both."_q;
    QTest::newRow("a word beside a file")
        << QStringList{"letter.pdf"_q, "Hello"_q}
        << "There is no file “Hello”. Share files or a text, not both."_q;
    QTest::newRow("a file that the runtime does not see")
        << QStringList{"/etc/passwd"_q} << "The runtime does not see “/etc/passwd”:"_q;
}

void ShareArgumentsTest::refusesWhatWasMeantAsFiles()
{
    QFETCH(QStringList, words);
    QFETCH(QString, says);
    ShareItems items;
    const Outcome outcome = ShareArguments::read(share(words), items);
    QVERIFY(outcome.status == ExitStatus::Refused);
    QVERIFY2(outcome.sentence.startsWith(says), qPrintable(outcome.sentence));
}

void ShareArgumentsTest::takesAnythingAsTextWhenToldSo()
{
    ShareItems items;
    QVERIFY(ShareArguments::read(share({"/no/a.pdf"_q, "letter.pdf"_q},
                                       {{"--text"_q, {}}, {"--title"_q, {"List"_q}}}),
                                 items)
                .isDone());
    QCOMPARE(items.text, "/no/a.pdf letter.pdf"_q);
    QCOMPARE(items.title, "List"_q);
    QCOMPARE(items.files, QStringList());
}

void ShareArgumentsTest::refusesOptionsThatDoNotApply()
{
    ShareItems items;
    const Outcome typed =
        ShareArguments::read(share({"Hello"_q}, {{"--type"_q, {"x/y"_q}}}), items);
    QVERIFY(typed.status == ExitStatus::Usage);
    ShareItems files;
    const Outcome titled =
        ShareArguments::read(share({"letter.pdf"_q}, {{"--title"_q, {"List"_q}}}), files);
    QVERIFY(titled.status == ExitStatus::Usage);
}

QTEST_GUILESS_MAIN(ShareArgumentsTest)
#include "tst_sharearguments.moc"
