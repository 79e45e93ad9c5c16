#include "launcher/apklauncher.h"
#include "launcher/sharetargets.h"
#include "support/testcase.h"

#include <QtTest>

namespace {

ApkLauncher target(const QString &packageName, const QString &className)
{
    ApkLauncher launcher;
    launcher.label = QStringLiteral("Label");
    launcher.caption = QStringLiteral("Caption");
    launcher.packageName = packageName;
    launcher.className = className;
    launcher.shareMimeTypes =
        QStringList{QStringLiteral("text/plain"), QStringLiteral("image/png")};
    return launcher;
}

ApkLauncher target()
{
    return target(QStringLiteral("a.b"), QStringLiteral("a.b.Share"));
}

ApkLauncher otherTarget()
{
    return target(QStringLiteral("c"), QStringLiteral("c.D"));
}

QJsonObject root(const ShareTargets &targets)
{
    return QJsonDocument::fromJson(targets.toJson()).object();
}

} // namespace

class ShareTargetsTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void mergesTargets();
    void replacesATarget();
    void tellsWhetherATargetIsNew();
    void removesAPackage();
    void spellsItAsQtDoes();
};

void ShareTargetsTest::mergesTargets()
{
    ApkLauncher multi = target(QStringLiteral("a.b"), QStringLiteral("a.b.Many"));
    multi.multi = true;

    ShareTargets targets;
    targets.set(target());
    targets.set(multi);
    targets.set(otherTarget());

    QCOMPARE(root(targets).keys(), QStringList({QStringLiteral("a.b"), QStringLiteral("c")}));
    const QJsonObject package = root(targets).value(QStringLiteral("a.b")).toObject();
    QCOMPARE(package.keys(),
             QStringList({QStringLiteral("a.b.Many"), QStringLiteral("a.b.Share")}));
    const QJsonObject expected{
        {QStringLiteral("label"), QStringLiteral("Label")},
        {QStringLiteral("caption"), QStringLiteral("Caption")},
        {QStringLiteral("icon"), QStringLiteral("/var/lib/bramd/bramd_handler_a_b-a_b_Many.png")},
        {QStringLiteral("mimetypes"),
         QJsonArray{QStringLiteral("text/plain"), QStringLiteral("image/png")}},
        {QStringLiteral("multi"), true},
    };
    QCOMPARE(package.value(QStringLiteral("a.b.Many")).toObject(), expected);
}

void ShareTargetsTest::replacesATarget()
{
    ApkLauncher newer = target();
    newer.label = QStringLiteral("Newer");

    ShareTargets targets;
    targets.set(target());
    targets.set(newer);

    ShareTargets expected;
    expected.set(newer);
    QCOMPARE(targets.toJson(), expected.toJson());
}

void ShareTargetsTest::tellsWhetherATargetIsNew()
{
    ApkLauncher newer = target();
    newer.label = QStringLiteral("Newer");

    ShareTargets targets;
    QVERIFY(targets.set(target()));
    QVERIFY(!targets.set(target()));
    QVERIFY(targets.set(newer));
    QVERIFY(targets.set(target()));
    targets.removePackage(target().packageName);
    QVERIFY(targets.set(target()));
}

void ShareTargetsTest::removesAPackage()
{
    ShareTargets targets;
    targets.set(target());
    const QByteArray one = targets.toJson();
    targets.set(otherTarget());

    targets.removePackage(QStringLiteral("c"));
    QCOMPARE(targets.toJson(), one);
    targets.removePackage(QStringLiteral("a"));
    QCOMPARE(targets.toJson(), one);
    targets.removePackage(QStringLiteral("a.b"));
    QCOMPARE(targets.toJson(), QByteArray("{\n}\n"));
}

void ShareTargetsTest::spellsItAsQtDoes()
{
    ApkLauncher odd = target(QString::fromUtf8("\xF0\x9F\x98\x80\"\\"), QString(QChar(0xFF21)));
    odd.label = QStringLiteral("\"}, \\ \b\t\n \u65E5") + QChar(0xD83D) + QChar(0x7F) + QChar(1);
    odd.shareMimeTypes = QStringList(QString());
    ApkLauncher none = target(QStringLiteral("Z"), QStringLiteral("_"));
    none.multi = true;

    ShareTargets targets;
    for (const ApkLauncher &launcher : {target(), otherTarget(), odd, none,
                                        target(QStringLiteral("a.b"), QStringLiteral("a.b.A"))})
        targets.set(launcher);

    const QJsonDocument document = QJsonDocument::fromJson(targets.toJson());
    QCOMPARE(document.object().size(), 4);
    QCOMPARE(targets.toJson(), document.toJson());
}

QTEST_GUILESS_MAIN(ShareTargetsTest)
#include "tst_sharetargets.moc"
