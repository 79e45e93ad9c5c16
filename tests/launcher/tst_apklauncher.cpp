#include "launcher/apklauncher.h"
#include "support/testcase.h"

#include <QtTest>

namespace {

/// A handler with these lists; everything else is empty.
ApkLauncher handler(const char *mimeTypes, const char *urlSchemes, const char *urlHandlers,
                    const char *shareMimeTypes)
{
    return ApkLauncher(QString(), QString(), QByteArray(), QString(), QString(), QString(),
                       QString::fromLatin1(mimeTypes), QString::fromLatin1(urlSchemes),
                       QString::fromLatin1(urlHandlers), QString::fromLatin1(shareMimeTypes), false,
                       false);
}

QStringList list(std::initializer_list<const char *> items)
{
    QStringList result;
    for (const char *item : items)
        result.append(QString::fromLatin1(item));
    return result;
}

} // namespace

class ApkLauncherTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void takesTheFirstSixArgumentsAsTheyAre();
    void storesExtraFlagBeforeMulti();
    void splitsTheLists_data();
    void splitsTheLists();
    void isAHandlerWhenItOpensOrTakesContent();
    void travelsInVariants();
    void comparesEveryMember();
};

void ApkLauncherTest::takesTheFirstSixArgumentsAsTheyAre()
{
    const ApkLauncher launcher(QStringLiteral("L;l"), QStringLiteral("C;c"), QByteArray("\0;p", 3),
                               QStringLiteral("a.b;"), QStringLiteral("a.b.Main;"),
                               QStringLiteral("1;0"), QString(), QString(), QString(), QString(),
                               false, false);

    QCOMPARE(launcher.label, QStringLiteral("L;l"));
    QCOMPARE(launcher.caption, QStringLiteral("C;c"));
    QCOMPARE(launcher.icon, QByteArray("\0;p", 3));
    QCOMPARE(launcher.packageName, QStringLiteral("a.b;"));
    QCOMPARE(launcher.className, QStringLiteral("a.b.Main;"));
    QCOMPARE(launcher.packageVersion, QStringLiteral("1;0"));
    QCOMPARE(launcher.mimeTypes, QStringList());
    QCOMPARE(launcher.shareMimeTypes, QStringList());
}

void ApkLauncherTest::storesExtraFlagBeforeMulti()
{
    const QString none;
    const ApkLauncher extra(none, none, QByteArray(), none, none, none, none, none, none, none,
                            true, false);
    const ApkLauncher multi(none, none, QByteArray(), none, none, none, none, none, none, none,
                            false, true);

    QVERIFY(extra.extraFlag && !extra.multi);
    QVERIFY(!multi.extraFlag && multi.multi);
}

void ApkLauncherTest::splitsTheLists_data()
{
    QTest::addColumn<ApkLauncher>("launcher");
    QTest::addColumn<QStringList>("mimeTypes");
    QTest::addColumn<QStringList>("shareMimeTypes");

    QTest::newRow("no lists") << handler("", "", "", "") << QStringList() << QStringList();
    QTest::newRow("one MIME type")
        << handler("text/plain", "", "", "") << list({"text/plain"}) << QStringList();
    QTest::newRow("empty MIME types stay")
        << handler(";;", "", "", "") << list({"", "", ""}) << QStringList();
    QTest::newRow("empty MIME types stay between others")
        << handler("a/b;;c/d;", "", "", "") << list({"a/b", "", "c/d", ""}) << QStringList();
    QTest::newRow("empty schemes go")
        << handler("", ";;", "", "") << QStringList() << QStringList();
    QTest::newRow("empty URL handlers go")
        << handler("", "", ";;", "") << QStringList() << QStringList();
    QTest::newRow("empty share types go")
        << handler("", "", "", ";;") << QStringList() << QStringList();
    QTest::newRow("MIME types, then schemes, then URL handlers")
        << handler("a/b;c/d", ";tel;;sms", "example.org;", "")
        << list({"a/b", "c/d", "x-scheme-handler/tel", "x-scheme-handler/sms",
                 "x-url-handler/example.org"})
        << QStringList();
    QTest::newRow("share types as they are") << handler("", "", "", ";image/*;;text/plain")
                                             << QStringList() << list({"image/*", "text/plain"});
    QTest::newRow("items with place markers")
        << handler("", "%1;%2", "", "") << list({"x-scheme-handler/%1", "x-scheme-handler/%2"})
        << QStringList();
}

void ApkLauncherTest::splitsTheLists()
{
    QFETCH(ApkLauncher, launcher);
    QFETCH(QStringList, mimeTypes);
    QFETCH(QStringList, shareMimeTypes);

    QCOMPARE(launcher.mimeTypes, mimeTypes);
    QCOMPARE(launcher.shareMimeTypes, shareMimeTypes);
}

void ApkLauncherTest::isAHandlerWhenItOpensOrTakesContent()
{
    QVERIFY(!handler("", "", "", "").isHandler());
    QVERIFY(handler("text/plain", "", "", "").isHandler());
    QVERIFY(handler("", "tel", "", "").isHandler());
    QVERIFY(handler("", "", "", "text/plain").isHandler());
}

void ApkLauncherTest::travelsInVariants()
{
    const ApkLauncher launcher = handler("a/b", "tel", "example.org", "image/*");

    QCOMPARE(QVariant::fromValue(launcher).value<ApkLauncher>(), launcher);
    QCOMPARE(QVariant().value<ApkLauncher>(), ApkLauncher());
}

void ApkLauncherTest::comparesEveryMember()
{
    const ApkLauncher plain;
    QVector<ApkLauncher> others(10);
    others[0].label = QStringLiteral("x");
    others[1].caption = QStringLiteral("x");
    others[2].icon = "x";
    others[3].packageName = QStringLiteral("x");
    others[4].className = QStringLiteral("x");
    others[5].packageVersion = QStringLiteral("x");
    others[6].mimeTypes = list({"x"});
    others[7].shareMimeTypes = list({"x"});
    others[8].multi = true;
    others[9].extraFlag = true;

    QVERIFY(plain == ApkLauncher());
    for (const ApkLauncher &other : qAsConst(others))
        QVERIFY(!(plain == other));
}

QTEST_GUILESS_MAIN(ApkLauncherTest)
#include "tst_apklauncher.moc"
