#include "runtime/manifest.h"
#include "support/testcase.h"

#include <QtTest>

using namespace SimRuntime;

namespace {

const char Resources[] = R"(
      config (default):
        resource 0x7f030000 a.b:string/app: t=0x03 d=0x00000000 (s=0x0008 r=0x00)
          (string8) "The App"
        resource 0x7f030001 a.b:bool/off: t=0x12 d=0x00000000 (s=0x0008 r=0x00)
          (color) #00000000
)";

// As printed by aapt, shortened.
const char Head[] = R"(N: android=http://schemas.android.com/apk/res/android
  E: manifest (line=3)
    A: android:versionCode(0x0101021b)=(type 0x10)0x8c
    A: android:versionName(0x0101021c)="1.4" (Raw: "1.4")
    A: package="a.b" (Raw: "a.b")
    E: uses-sdk (line=0)
      A: android:minSdkVersion(0x0101020c)=(type 0x10)0x15
    E: application (line=5)
      A: android:label(0x01010001)=@0x7f030000
      A: android:icon(0x01010002)=@0x7f020000
)";

const char Launcher[] = R"(
        E: intent-filter (line=8)
          E: action (line=9)
            A: android:name(0x01010003)="android.intent.action.MAIN" (Raw: "")
          E: category (line=10)
            A: android:name(0x01010003)="android.intent.category.LAUNCHER" (Raw: "")
)";

QByteArray activity(const QByteArray &attributes, const QByteArray &filters)
{
    return QByteArray("      E: activity (line=7)\n") + attributes + filters;
}

QByteArray filter(const char *action, const QByteArray &data, bool byDefault = true)
{
    QByteArray lines = "        E: intent-filter (line=8)\n          E: action (line=9)\n"
                       "            A: android:name(0x01010003)=\"android.intent.action.";
    lines += action + QByteArray("\" (Raw: \"\")\n");
    if (byDefault)
        lines += "          E: category (line=9)\n            A: android:name(0x01010003)="
                 "\"android.intent.category.DEFAULT\" (Raw: \"\")\n";
    return lines + data;
}

QByteArray data(const char *attribute, const char *value)
{
    return QByteArray("          E: data (line=9)\n            A: android:") + attribute +
           "(0x0)=\"" + value + "\" (Raw: \"" + value + "\")\n";
}

constexpr char Named[] = "        A: android:name(0x01010003)=\".Main\" (Raw: \".Main\")\n";

ApkInfo read(const QByteArray &components)
{
    const auto tree = parseXmlTree(Head + components);
    return readManifest(tree.value_or(XmlElement()), ResourceTable::parse(Resources),
                        [](const XmlValue &icon, const QString &label) {
                            return QByteArray::number(icon.number, 16) + ' ' + label.toUtf8();
                        });
}

} // namespace

class ManifestTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void readsWhatIdentifiesTheApp();
    void findsLaunchers();
    void completesClassNames_data();
    void completesClassNames();
    void leavesOutWhatCannotBeStarted_data();
    void leavesOutWhatCannotBeStarted();
    void findsViewers();
    void takesNoSchemesFromFiltersForDocuments();
    void findsShareTargets();
    void joinsTheFiltersOfOneActivity();
    void leavesOutFiltersThatNobodyReaches();
    void collectsProviderAuthorities();
    void checksPackageNames_data();
    void checksPackageNames();
    void findsNothingInOtherText();
};

void ManifestTest::readsWhatIdentifiesTheApp()
{
    const ApkInfo info = read({});

    QCOMPARE(info.package, QStringLiteral("a.b"));
    QCOMPARE(info.versionCode, 140);
    QCOMPARE(info.versionName, QStringLiteral("1.4"));
    QCOMPARE(info.label, QStringLiteral("The App"));
    QCOMPARE(info.minimumSdk, 21);
}

void ManifestTest::findsLaunchers()
{
    const ApkInfo info =
        read(activity(Named, Launcher) +
             activity("        A: android:label(0x01010001)=\"Own\" (Raw: \"Own\")\n"
                      "        A: android:icon(0x01010002)=@0x7f020007\n"
                      "        A: android:name(0x01010003)=\".Two\" (Raw: \".Two\")\n",
                      Launcher));

    QCOMPARE(info.launchers.size(), 2);
    QCOMPARE(info.launchers.at(0).className, QStringLiteral("a.b.Main"));
    QCOMPARE(info.launchers.at(0).label, QStringLiteral("The App"));
    QCOMPARE(info.launchers.at(0).icon, QByteArray("7f020000 The App"));
    QCOMPARE(info.launchers.at(1).label, QStringLiteral("Own"));
    QCOMPARE(info.launchers.at(1).icon, QByteArray("7f020007 Own"));
    QVERIFY(info.handlers.isEmpty());
}

void ManifestTest::completesClassNames_data()
{
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<QString>("complete");
    QTest::newRow("relative") << QByteArray(".Main") << QStringLiteral("a.b.Main");
    QTest::newRow("bare") << QByteArray("Main") << QStringLiteral("a.b.Main");
    QTest::newRow("absolute") << QByteArray("c.d.Main") << QStringLiteral("c.d.Main");
}

void ManifestTest::completesClassNames()
{
    QFETCH(QByteArray, written);
    QFETCH(QString, complete);
    const QByteArray name = "        A: android:name(0x01010003)=\"" + written + "\" (Raw: \"\")\n";

    QCOMPARE(read(activity(name, Launcher)).launchers.constFirst().className, complete);
}

void ManifestTest::leavesOutWhatCannotBeStarted_data()
{
    QTest::addColumn<QByteArray>("attribute");
    QTest::newRow("disabled") << QByteArray("enabled(0x0101000e)=(type 0x12)0x0");
    QTest::newRow("disabled by a resource") << QByteArray("enabled(0x0101000e)=@0x7f030001");
    QTest::newRow("not exported") << QByteArray("exported(0x01010010)=(type 0x12)0x0");
}

void ManifestTest::leavesOutWhatCannotBeStarted()
{
    QFETCH(QByteArray, attribute);

    const QByteArray attributes = Named + QByteArray("        A: android:") + attribute + '\n';
    const ApkInfo info =
        read(activity(attributes, Launcher + filter("VIEW", data("mimeType", "a/b"))));

    QVERIFY(info.launchers.isEmpty());
    QVERIFY(info.handlers.isEmpty());
}

void ManifestTest::findsViewers()
{
    const ApkInfo info = read(activity(
        "        A: android:label(0x01010001)=\"Open\" (Raw: \"Open\")\n"
        "        A: android:name(0x01010003)=\".Open\" (Raw: \".Open\")\n",
        filter("VIEW", data("scheme", "https") + data("scheme", "geo") + data("host", "x.org"))));

    QCOMPARE(info.handlers.size(), 1);
    const HandlerActivity &handler = info.handlers.constFirst();
    QCOMPARE(handler.className, QStringLiteral("a.b.Open"));
    QCOMPARE(handler.label, QStringLiteral("The App"));
    QCOMPARE(handler.caption, QStringLiteral("Open"));
    QCOMPARE(handler.schemes, (QStringList{QStringLiteral("https"), QStringLiteral("geo")}));
    QCOMPARE(handler.hosts, QStringList{QStringLiteral("x.org")});
    QVERIFY(handler.mimeTypes.isEmpty() && handler.shareMimeTypes.isEmpty() && !handler.multi);
    QCOMPARE(handler.icon, QByteArray("7f020000 The App"));
}

void ManifestTest::takesNoSchemesFromFiltersForDocuments()
{
    const ApkInfo info =
        read(activity(Named, filter("VIEW", data("scheme", "content") + data("scheme", "file") +
                                                data("mimeType", "application/pdf"))));

    QCOMPARE(info.handlers.constFirst().mimeTypes, QStringList{QStringLiteral("application/pdf")});
    QVERIFY(info.handlers.constFirst().schemes.isEmpty());
}

void ManifestTest::findsShareTargets()
{
    const ApkInfo one =
        read(activity(Named, filter("SEND", data("mimeType", "a/b") + data("mimeType", "c/*"))));
    const ApkInfo many = read(activity(Named, filter("SEND_MULTIPLE", data("mimeType", "a/b"))));

    QCOMPARE(one.handlers.constFirst().shareMimeTypes,
             (QStringList{QStringLiteral("a/b"), QStringLiteral("c/*")}));
    QVERIFY(!one.handlers.constFirst().multi);
    QCOMPARE(many.handlers.constFirst().shareMimeTypes, QStringList{QStringLiteral("a/b")});
    QVERIFY(many.handlers.constFirst().multi);
}

void ManifestTest::joinsTheFiltersOfOneActivity()
{
    const ApkInfo info = read(activity(Named, Launcher + filter("VIEW", data("mimeType", "a/b")) +
                                                  filter("SEND", data("mimeType", "a/b")) +
                                                  filter("VIEW", data("mimeType", "a/b"))));

    QCOMPARE(info.launchers.size(), 1);
    QCOMPARE(info.handlers.size(), 1);
    QCOMPARE(info.handlers.constFirst().mimeTypes, QStringList{QStringLiteral("a/b")});
    QCOMPARE(info.handlers.constFirst().shareMimeTypes, QStringList{QStringLiteral("a/b")});
}

void ManifestTest::leavesOutFiltersThatNobodyReaches()
{
    QVERIFY(
        read(activity(Named, filter("VIEW", data("mimeType", "a/b"), false))).handlers.isEmpty());
    QVERIFY(read(activity(Named, filter("EDIT", data("mimeType", "a/b")))).handlers.isEmpty());
    QVERIFY(read(activity(Named, filter("VIEW", {}))).handlers.isEmpty());
}

void ManifestTest::collectsProviderAuthorities()
{
    const ApkInfo info =
        read("      E: provider (line=13)\n"
             "        A: android:authorities(0x01010018)=\"a.x;a.y\" (Raw: \"\")\n");

    QCOMPARE(info.authorities, (QStringList{QStringLiteral("a.x"), QStringLiteral("a.y")}));
}

void ManifestTest::checksPackageNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("valid");
    QTest::newRow("two parts") << QStringLiteral("a.b") << true;
    QTest::newRow("digits and underscores") << QStringLiteral("org.example_1.App2") << true;
    QTest::newRow("one part") << QStringLiteral("app") << false;
    QTest::newRow("empty part") << QStringLiteral("a..b") << false;
    QTest::newRow("digit first") << QStringLiteral("a.1b") << false;
    QTest::newRow("slash") << QStringLiteral("a.b/c") << false;
    QTest::newRow("line break at the end") << QStringLiteral("a.b\n") << false;
    QTest::newRow("empty") << QStringLiteral("") << false;
    QTest::newRow("too long") << QStringLiteral("a.") + QString(254, QLatin1Char('b')) << false;
}

void ManifestTest::checksPackageNames()
{
    QFETCH(QString, name);
    QFETCH(bool, valid);

    QCOMPARE(isValidPackageName(name), valid);
}

void ManifestTest::findsNothingInOtherText()
{
    QVERIFY(!parseXmlTree({}));
    QVERIFY(!parseXmlTree("ERROR: AndroidManifest.xml is corrupt\n"));
}

QTEST_GUILESS_MAIN(ManifestTest)
#include "tst_manifest.moc"
