#include "support/testcase.h"
#include "tools/common/fileargument.h"
#include "tools/ctl/literals.h"
#include "tools/ctl/shareplan.h"

#include <QtTest>

namespace {

ShareTarget target(const QStringList &types, bool takesSeveral = false)
{
    ShareTarget made;
    made.packageName = QStringLiteral("a.b");
    made.className = QStringLiteral("a.b.C$D");
    made.mimeTypes = types;
    made.takesSeveral = takesSeveral;
    return made;
}

ShareItems filesOf(const QStringList &files, const QString &type)
{
    ShareItems items;
    items.files = files;
    items.mimeType = type;
    return items;
}

} // namespace

class SharePlanTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void findsTheCommonType_data();
    void findsTheCommonType();
    void alwaysHasATitle_data();
    void alwaysHasATitle();
    void knowsWhatATargetTakes_data();
    void knowsWhatATargetTakes();
    void tellsWhyNot();
    void configuresATextWithItsName();
    void configuresFiles();
    void neverCallsAFileAText();
    void knowsSplitArchives_data();
    void knowsSplitArchives();
};

void SharePlanTest::findsTheCommonType_data()
{
    QTest::addColumn<QStringList>("types");
    QTest::addColumn<QString>("common");
    QTest::newRow("none") << QStringList() << "*/*"_q;
    QTest::newRow("one") << QStringList("image/png"_q) << "image/png"_q;
    QTest::newRow("equal") << QStringList({"image/png"_q, "image/png"_q}) << "image/png"_q;
    QTest::newRow("family") << QStringList({"image/png"_q, "image/jpeg"_q, "image/png"_q})
                            << "image/*"_q;
    QTest::newRow("mixed") << QStringList({"image/png"_q, "image/jpeg"_q, "audio/mpeg"_q})
                           << "*/*"_q;
    QTest::newRow("mixed stays so")
        << QStringList({"image/png"_q, "audio/mpeg"_q, "image/png"_q}) << "*/*"_q;
}

void SharePlanTest::findsTheCommonType()
{
    QFETCH(QStringList, types);
    QTEST(SharePlan::commonType(types), "common");
}

void SharePlanTest::alwaysHasATitle_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("title");
    QTest::newRow("short") << "Buy milk"_q
                           << "Buy milk"_q;
    QTest::newRow("first line") << "\n Buy\tmilk\nand tea"_q
                                << "Buy milk"_q;
    QTest::newRow("white space") << " \n "_q
                                 << "Text"_q;
    QTest::newRow("long") << QString(100, QLatin1Char('x'))
                          << QString(59, QLatin1Char('x')) + QChar(0x2026);
}

void SharePlanTest::alwaysHasATitle()
{
    QFETCH(QString, text);
    QTEST(SharePlan::titleOf(text), "title");
}

void SharePlanTest::knowsWhatATargetTakes_data()
{
    QTest::addColumn<QString>("accepted");
    QTest::addColumn<QString>("type");
    QTest::addColumn<bool>("takes");
    QTest::newRow("the same") << "image/png"_q
                              << "image/png"_q << true;
    QTest::newRow("another") << "image/png"_q
                             << "image/jpeg"_q << false;
    QTest::newRow("family") << "image/*"_q
                            << "image/png"_q << true;
    QTest::newRow("other family") << "image/*"_q
                                  << "imagery/png"_q << false;
    QTest::newRow("anything") << "*/*"_q
                              << "a/b"_q << true;
    QTest::newRow("several for one") << "image/png"_q
                                     << "image/*"_q << false;
}

void SharePlanTest::knowsWhatATargetTakes()
{
    QFETCH(QString, accepted);
    QFETCH(QString, type);
    QTEST(target({QStringLiteral("x/y"), accepted}).takes(type), "takes");
}

void SharePlanTest::tellsWhyNot()
{
    const ShareItems one = filesOf({"/a"_q}, QStringLiteral("image/png"));
    const ShareItems two = filesOf({"/a"_q, "/b"_q}, QStringLiteral("image/png"));
    QCOMPARE(SharePlan::complaint(target({"image/*"_q}), one), QString());
    QCOMPARE(SharePlan::complaint(target({"image/*"_q}, true), two), QString());
    QVERIFY(SharePlan::complaint(target({"image/*"_q}), two).contains(QLatin1String("one by one")));
    QVERIFY(SharePlan::complaint(target({"audio/*"_q}), one)
                .startsWith(QLatin1String("a.b/a.b.C$D does not take image/png but: audio/*.")));
}

void SharePlanTest::configuresATextWithItsName()
{
    ShareItems items;
    items.text = QStringLiteral("Buy milk");
    items.title = QStringLiteral("List");
    QCOMPARE(SharePlan::configuration(target({"text/plain"_q}), items),
             QVariantMap(
                 {{"mimeType"_q, "text/plain"_q},
                  {"resources"_q,
                   QVariantList{QVariantMap{{"name"_q, "List"_q}, {"data"_q, "Buy milk"_q}}}},
                  {"selectedTransferMethodInfo"_q, QVariantMap{{"methodId"_q, "a.b/a.b.C$D"_q}}}}));
}

void SharePlanTest::configuresFiles()
{
    const QVariantMap configuration = SharePlan::configuration(
        target({"image/*"_q}, true), filesOf({"/a"_q, "/b"_q}, QStringLiteral("image/png")));
    QCOMPARE(configuration.value("mimeType"_q), QVariant("image/png"_q));
    QCOMPARE(configuration.value("resources"_q), QVariant(QVariantList{"/a"_q, "/b"_q}));
}

void SharePlanTest::neverCallsAFileAText()
{
    const QVariantMap configuration = SharePlan::configuration(
        target({"text/plain"_q}), filesOf({"/a.txt"_q}, QStringLiteral("text/plain")));
    QCOMPARE(configuration.value("mimeType"_q), QVariant("*/*"_q));
}

void SharePlanTest::knowsSplitArchives_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("isSplit");
    QTest::newRow("apk") << "/a/b.apk"_q << false;
    QTest::newRow("xapk") << "/a/b.xapk"_q << true;
    QTest::newRow("apks") << "/a/b.apks"_q << true;
    QTest::newRow("apkm, large") << "/a/b.ApkM"_q << true;
    QTest::newRow("only the ending") << "/a.apks/b.apk"_q << false;
    QTest::newRow("needs the dot") << "/a/xapk"_q << false;
}

void SharePlanTest::knowsSplitArchives()
{
    QFETCH(QString, path);
    QTEST(FileArgument::isSplitArchive(path), "isSplit");
}

QTEST_GUILESS_MAIN(SharePlanTest)
#include "tst_shareplan.moc"
