#include "daemon/intents.h"
#include "daemon/spelledout.h"
#include "support/testcase.h"

#include <QtTest>

namespace {

struct Arguments
{
    QString action;
    QString data;
    QString type;
    QString packageName;
    QString className;
    QString category;
    QVariantMap extras;
};

Intent launch(const Arguments &of)
{
    return Intents::launch(of.action, of.data, of.type, of.packageName, of.className, of.category,
                           of.extras);
}

} // namespace

Q_DECLARE_METATYPE(Arguments)

class TestIntents : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void an_argument_sets_its_field_only_data();
    void an_argument_sets_its_field_only();
    void arguments_that_came_as_empty_texts_stay_unset();
    void extras_of_every_type_are_copied();
    void a_location_becomes_the_runtimes_url_data();
    void a_location_becomes_the_runtimes_url();
    void a_location_that_does_not_parse_is_left_out_with_a_warning_data();
    void a_location_that_does_not_parse_is_left_out_with_a_warning();
    void data_that_does_not_parse_leaves_the_rest_of_the_intent();
    void app_settings_point_at_the_package_data();
    void app_settings_point_at_the_package();
    void app_settings_of_what_no_url_can_hold_name_no_app_data();
    void app_settings_of_what_no_url_can_hold_name_no_app();
    void licenses_are_a_page_of_the_settings();
};

void TestIntents::an_argument_sets_its_field_only_data()
{
    QTest::addColumn<Arguments>("arguments");
    QTest::addColumn<QStringList>("fields");

    const QString other = QStringLiteral("org.example.OTHER");
    const QString otherLine = QStringLiteral("action 'org.example.OTHER'");
    const QString mainLine = QStringLiteral("action 'android.intent.action.MAIN'");
    const QString mainFlags = QStringLiteral("flags 0x10004000");
    const QString package = QStringLiteral("org.example");
    const QString activity = QStringLiteral("org.example.Activity");

    QTest::newRow("nothing: MAIN") << Arguments() << QStringList({mainLine, mainFlags});
    QTest::newRow("MAIN by name has its flags, too")
        << Arguments{QStringLiteral("android.intent.action.MAIN"), {}, {}, {}, {}, {}, {}}
        << QStringList({mainLine, mainFlags});
    QTest::newRow("no other action has flags")
        << Arguments{other, {}, {}, {}, {}, {}, {}} << QStringList({otherLine});
    QTest::newRow("action: the case counts")
        << Arguments{QStringLiteral("android.intent.action.main"), {}, {}, {}, {}, {}, {}}
        << QStringList({QStringLiteral("action 'android.intent.action.main'")});
    QTest::newRow("data")
        << Arguments{other, QStringLiteral("https://example.org/a?b=c#d"), {}, {}, {}, {}, {}}
        << QStringList({otherLine, QStringLiteral("data <https://example.org/a?b=c#d>")});
    QTest::newRow("data: a host path is mapped")
        << Arguments{other, QStringLiteral("/home/user/android_storage/a.pdf"), {}, {}, {}, {}, {}}
        << QStringList({otherLine, QStringLiteral("data <file:///storage/emulated/0/a.pdf>")});
    QTest::newRow("type") << Arguments{other, {}, QStringLiteral("image/png"), {}, {}, {}, {}}
                          << QStringList({otherLine, QStringLiteral("type 'image/png'")});
    QTest::newRow("package") << Arguments{other, {}, {}, package, {}, {}, {}}
                             << QStringList({otherLine, QStringLiteral("package 'org.example'")});
    QTest::newRow("package and class are a component")
        << Arguments{other, {}, {}, package, activity, {}, {}}
        << QStringList({otherLine, QStringLiteral("package 'org.example'"),
                        QStringLiteral("componentPackage 'org.example'"),
                        QStringLiteral("componentClass 'org.example.Activity'")});
    QTest::newRow("a class alone is ignored")
        << Arguments{other, {}, {}, {}, activity, {}, {}} << QStringList({otherLine});
    QTest::newRow("category") << Arguments{other, {}, {}, {}, {}, QStringLiteral("a category"), {}}
                              << QStringList({otherLine,
                                              QStringLiteral("categories strings['a category']")});
    QTest::newRow("extras")
        << Arguments{other, {}, {}, {}, {}, {}, {{QStringLiteral("key"), QStringLiteral("text")}}}
        << QStringList({otherLine, QStringLiteral("extras {'key': 'text'}")});
    QTest::newRow("everything")
        << Arguments{QString(), QStringLiteral("tel:5"), QStringLiteral("a/b"),       package,
                     activity,  QStringLiteral("c"),     {{QStringLiteral("key"), 7}}}
        << QStringList({mainLine, QStringLiteral("data <tel:5>"), QStringLiteral("type 'a/b'"),
                        mainFlags, QStringLiteral("package 'org.example'"),
                        QStringLiteral("componentPackage 'org.example'"),
                        QStringLiteral("componentClass 'org.example.Activity'"),
                        QStringLiteral("categories strings['c']"),
                        QStringLiteral("extras {'key': int(7)}")});
}

void TestIntents::an_argument_sets_its_field_only()
{
    QFETCH(Arguments, arguments);

    QTEST(spelledOut(launch(arguments)), "fields");
}

// The bus has no null strings.
void TestIntents::arguments_that_came_as_empty_texts_stay_unset()
{
    const QString empty = QStringLiteral("");

    const Intent intent = Intents::launch(empty, empty, empty, empty, empty, empty, {});

    QCOMPARE(spelledOut(intent), QStringList({QStringLiteral("action 'android.intent.action.MAIN'"),
                                              QStringLiteral("flags 0x10004000")}));
}

// What of it the runtime can be told is for the encoding to say.
void TestIntents::extras_of_every_type_are_copied()
{
    const QVariantMap extras{
        {QStringLiteral(""), QVariant()},
        {QStringLiteral("bytes"), QByteArray("ab")},
        {QStringLiteral("double"), 0.5},
        {QStringLiteral("list"), QVariantList{1, QStringLiteral("two")}},
        {QStringLiteral("map"), QVariantMap{{QStringLiteral("in"), true}}},
        {QStringLiteral("null"), QString()},
        {QStringLiteral("texts"), QStringList({QStringLiteral("a"), QStringLiteral("b")})},
    };

    const Intent intent = launch({{}, {}, {}, {}, {}, {}, extras});

    QCOMPARE(spelledOut(QVariant(intent.extras)),
             QStringLiteral("{'': nothing, 'bytes': QByteArray(ab), 'double': double(0.5), "
                            "'list': [int(1), 'two'], 'map': {'in': bool(true)}, 'null': null, "
                            "'texts': strings['a', 'b']}"));
}

void TestIntents::a_location_becomes_the_runtimes_url_data()
{
    QTest::addColumn<QString>("location");
    QTest::addColumn<QString>("url");

    QTest::newRow("path in the home directory")
        << QStringLiteral("/home/user/a b.pdf")
        << QStringLiteral("file:///storage/8ff87de4-0b37-4799-b09a-82773e869e07/a%20b.pdf");
    QTest::newRow("file URL of a path in the home directory")
        << QStringLiteral("file:///home/user/a%20b.pdf")
        << QStringLiteral("file:///storage/8ff87de4-0b37-4799-b09a-82773e869e07/a%20b.pdf");
    QTest::newRow("path on a memory card") << QStringLiteral("/run/media/user/card/a.mp3")
                                           << QStringLiteral("file:///storage/card/a.mp3");
    QTest::newRow("path elsewhere") << QStringLiteral("/tmp/a") << QStringLiteral("file:///tmp/a");
    QTest::newRow("path with signs that mean something in a URL")
        << QStringLiteral("/tmp/50%?#.txt") << QStringLiteral("file:///tmp/50%25%3F%23.txt");
    QTest::newRow("URL") << QStringLiteral("https://example.org/a?b=c")
                         << QStringLiteral("https://example.org/a?b=c");
    QTest::newRow("URL with a blank in it")
        << QStringLiteral("https://example.org/a b") << QStringLiteral("https://example.org/a%20b");
    QTest::newRow("URL without slashes")
        << QStringLiteral("mailto:a@example.org") << QStringLiteral("mailto:a@example.org");
    QTest::newRow("word") << QStringLiteral("word") << QStringLiteral("word");
}

void TestIntents::a_location_becomes_the_runtimes_url()
{
    QFETCH(QString, location);

    const QUrl url = Intents::runtimeUrl(location);

    QTEST(url.toString(QUrl::FullyEncoded), "url");
}

void TestIntents::a_location_that_does_not_parse_is_left_out_with_a_warning_data()
{
    QTest::addColumn<QString>("location");

    QTest::newRow("empty") << QString();
    QTest::newRow("open bracket in the host") << QStringLiteral("https://[example/");
    QTest::newRow("port out of range") << QStringLiteral("https://example.org:99999/");
    QTest::newRow("blank in the host") << QStringLiteral("https://exa mple.org/");
    QTest::newRow("scheme that starts with a digit") << QStringLiteral("1a:b");
    QTest::newRow("only a colon") << QStringLiteral(":");
    QTest::newRow("very long") << QString(1000000, QLatin1Char(':'));
}

void TestIntents::a_location_that_does_not_parse_is_left_out_with_a_warning()
{
    QFETCH(QString, location);

    QCOMPARE(Intents::runtimeUrl(location), QUrl());
    QCOMPARE(takeLog(QtWarningMsg, QStringLiteral("com.corvo.bramd.daemon")),
             QStringList({QStringLiteral("Neither a path nor a URL, left out: \"%1\"")
                              .arg(location.left(255))}));
}

void TestIntents::data_that_does_not_parse_leaves_the_rest_of_the_intent()
{
    const Intent intent = launch({QStringLiteral("A"),
                                  QStringLiteral("https://[example/"),
                                  QStringLiteral("text/html"),
                                  QStringLiteral("org.example"),
                                  {},
                                  {},
                                  {}});

    QCOMPARE(spelledOut(intent),
             QStringList({QStringLiteral("action 'A'"), QStringLiteral("type 'text/html'"),
                          QStringLiteral("package 'org.example'")}));
    QCOMPARE(takeLog(QtWarningMsg).size(), 1);
}

void TestIntents::app_settings_point_at_the_package_data()
{
    QTest::addColumn<QString>("packageName");
    QTest::addColumn<QString>("url");

    QTest::newRow("package") << QStringLiteral("org.example")
                             << QStringLiteral("package:org.example");
    QTest::newRow("unknown to everyone") << QStringLiteral("x") << QStringLiteral("package:x");
    QTest::newRow("empty") << QString() << QStringLiteral("package:");
    QTest::newRow("signs that mean something in a URL")
        << QStringLiteral("a?b#c%20d") << QStringLiteral("package:a%3Fb%23c%2520d");
    QTest::newRow("not a scheme") << QStringLiteral("https:b") << QStringLiteral("package:https:b");
}

void TestIntents::app_settings_point_at_the_package()
{
    QFETCH(QString, packageName);

    const Intent intent = Intents::appSettings(packageName);

    QCOMPARE(intent.data.scheme(), QStringLiteral("package"));
    QCOMPARE(intent.data.path(QUrl::FullyDecoded), packageName);
    QTEST(intent.data.toString(QUrl::FullyEncoded), "url");
    Intent rest = intent;
    rest.data = QUrl();
    QCOMPARE(spelledOut(rest),
             QStringList({QStringLiteral("action 'android.settings.APPLICATION_DETAILS_SETTINGS'"),
                          QStringLiteral("flags 0x10008000"),
                          QStringLiteral("package 'com.android.settings'")}));
}

void TestIntents::app_settings_of_what_no_url_can_hold_name_no_app_data()
{
    QTest::addColumn<QString>("packageName");

    QTest::newRow("short") << QStringLiteral("//x");
    QTest::newRow("very long") << QString(1000000, QLatin1Char('/'));
}

void TestIntents::app_settings_of_what_no_url_can_hold_name_no_app()
{
    QFETCH(QString, packageName);

    const Intent intent = Intents::appSettings(packageName);

    QCOMPARE(intent.data, QUrl());
    QCOMPARE(intent.package, QStringLiteral("com.android.settings"));
    QCOMPARE(takeLog(QtWarningMsg, QStringLiteral("com.corvo.bramd.daemon")),
             QStringList({QStringLiteral("Cannot be a package name, left out: \"%1\"")
                              .arg(packageName.left(255))}));
}

void TestIntents::licenses_are_a_page_of_the_settings()
{
    QCOMPARE(spelledOut(Intents::licenses()),
             QStringList({QStringLiteral("action 'android.settings.LEGAL_INFO'"),
                          QStringLiteral("flags 0x10008000"),
                          QStringLiteral("package 'com.android.settings'")}));
}

QTEST_GUILESS_MAIN(TestIntents)
#include "test_intents.moc"
