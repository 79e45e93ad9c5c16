#include "daemon/overthebus.h"
#include "daemon/sharerequest.h"
#include "daemon/spelledout.h"
#include "support/testcase.h"

#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QRegularExpression>
#include <QtTest>

using Maps = QList<QVariantMap>;
using Texts = QMap<QString, QString>;

namespace {

QString text(const char *ascii)
{
    return QString::fromLatin1(ascii);
}

/// A configuration that names everything but the resources.
QVariantMap configuration(const QString &mimeType, const QVariant &resources)
{
    return {{text("mimeType"), mimeType},
            {text("resources"), resources},
            {text("selectedTransferMethodInfo"),
             QVariantMap{{text("methodId"), text("org.example/org.example.Share")}}}};
}

QVariantMap fileConfiguration(const QVariant &resources)
{
    return configuration(text("image/jpeg"), resources);
}

QVariant variantOf(const QVariant &value)
{
    return QVariant::fromValue(QDBusVariant(value));
}

/// The lines of an intent that is sent to the target of configuration().
QStringList sent(const char *action, const char *type, const char *extras = nullptr)
{
    QStringList lines{text("action 'android.intent.action.%1'").arg(text(action)),
                      text("type '%1'").arg(text(type)), text("package 'org.example'"),
                      text("componentPackage 'org.example'"),
                      text("componentClass 'org.example.Share'")};
    if (extras)
        lines.append(text("extras {%1}").arg(text(extras)));
    return lines;
}

QStringList sentText(const char *extras = nullptr)
{
    return sent("SEND", "text/plain", extras);
}

} // namespace

class TestShareRequest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void files_are_streams_data();
    void files_are_streams();
    void text_needs_a_subject_data();
    void text_needs_a_subject();
    void the_type_of_text_is_plain_and_of_files_the_given_one_data();
    void the_type_of_text_is_plain_and_of_files_the_given_one();
    void a_resource_that_names_no_file_is_left_out_with_a_warning_data();
    void a_resource_that_names_no_file_is_left_out_with_a_warning();
    void nothing_is_shared_without_resources_data();
    void nothing_is_shared_without_resources();
    void the_method_names_package_and_class_data();
    void the_method_names_package_and_class();
    void a_method_that_names_no_app_gives_an_intent_without_target_data();
    void a_method_that_names_no_app_gives_an_intent_without_target();
    void unknown_keys_are_left_out_with_a_warning_data();
    void unknown_keys_are_left_out_with_a_warning();
    void what_is_read_is_logged_in_the_order_of_the_keys();
    void hostile_configurations_are_read_to_the_end_data();
    void hostile_configurations_are_read_to_the_end();

private:
    /// The lines of the intent for a configuration that a sender puts on the bus.
    QStringList shared(const QVariantMap &configuration);

    OverTheBus m_bus;
};

void TestShareRequest::initTestCase()
{
    qDBusRegisterMetaType<Maps>();
    qDBusRegisterMetaType<Texts>();
    QVERIFY(m_bus.start());
}

QStringList TestShareRequest::shared(const QVariantMap &configuration)
{
    const auto intent = ShareRequest::fromConfiguration(m_bus.carry(configuration)).toIntent();
    return intent ? spelledOut(*intent) : QStringList(text("not shared"));
}

void TestShareRequest::files_are_streams_data()
{
    QTest::addColumn<QVariant>("resources");
    QTest::addColumn<QStringList>("intent");

    const QString first = text("/home/user/android_storage/1.jpg");
    const QString second = text("file:///home/user/android_storage/2.jpg");
    const QString third = text("/run/media/user/card/3.jpg");
    const QStringList one = sent(
        "SEND", "image/jpeg", "'android.intent.extra.STREAM': <file:///storage/emulated/0/1.jpg>");
    const QStringList two =
        sent("SEND_MULTIPLE", "image/jpeg",
             "'android.intent.extra.STREAM': [<file:///storage/emulated/0/2.jpg>, "
             "<file:///storage/emulated/0/1.jpg>]");

    QTest::newRow("as with one") << QVariant(QStringList(first)) << one;
    QTest::newRow("av with one") << QVariant(QVariantList{first}) << one;
    QTest::newRow("v with as") << variantOf(QStringList(first)) << one;
    QTest::newRow("as with two: the order stays") << QVariant(QStringList({second, first})) << two;
    QTest::newRow("av with two") << QVariant(QVariantList({second, first})) << two;
    QTest::newRow("av of v") << QVariant(QVariantList({variantOf(second), variantOf(first)}))
                             << two;
    QTest::newRow("three") << QVariant(QStringList({third, second, first}))
                           << sent("SEND_MULTIPLE", "image/jpeg",
                                   "'android.intent.extra.STREAM': [<file:///storage/card/3.jpg>, "
                                   "<file:///storage/emulated/0/2.jpg>, "
                                   "<file:///storage/emulated/0/1.jpg>]");
    QTest::newRow("the same twice")
        << QVariant(QStringList({third, third}))
        << sent("SEND_MULTIPLE", "image/jpeg",
                "'android.intent.extra.STREAM': [<file:///storage/card/3.jpg>, "
                "<file:///storage/card/3.jpg>]");
    QTest::newRow("URL of another scheme")
        << QVariant(QStringList(text("https://example.org/a?b=c")))
        << sent("SEND", "image/jpeg", "'android.intent.extra.STREAM': <https://example.org/a?b=c>");
    QTest::newRow("a number is read as text")
        << QVariant(QVariantList{5})
        << sent("SEND", "image/jpeg", "'android.intent.extra.STREAM': <5>");
}

void TestShareRequest::files_are_streams()
{
    QFETCH(QVariant, resources);

    QTEST(shared(fileConfiguration(resources)), "intent");
}

void TestShareRequest::text_needs_a_subject_data()
{
    QTest::addColumn<QVariant>("resources");
    QTest::addColumn<QStringList>("intent");

    const std::pair<QString, QVariant> name(text("name"), text("N"));
    const std::pair<QString, QVariant> link(text("linkTitle"), text("L"));
    const std::pair<QString, QVariant> data(text("data"), text("D"));
    const std::pair<QString, QVariant> status(text("status"), text("S"));
    const auto row = [](const char *title, const QVariantMap &item, const char *extras) {
        QTest::newRow(title) << QVariant::fromValue(Maps{item}) << sentText(extras);
    };
    const char *const nameOnly =
        "'android.intent.extra.SUBJECT': 'N', 'android.intent.extra.TEXT': null";
    const char *const nameAndData =
        "'android.intent.extra.SUBJECT': 'N', 'android.intent.extra.TEXT': 'D'";
    const char *const nameAndStatus =
        "'android.intent.extra.SUBJECT': 'N', 'android.intent.extra.TEXT': 'S'";
    const char *const linkOnly =
        "'android.intent.extra.SUBJECT': 'L', 'android.intent.extra.TEXT': null";
    const char *const linkAndData =
        "'android.intent.extra.SUBJECT': 'L', 'android.intent.extra.TEXT': 'D'";
    const char *const linkAndStatus =
        "'android.intent.extra.SUBJECT': 'L', 'android.intent.extra.TEXT': 'S'";

    row("nothing", {}, nullptr);
    row("status", {status}, nullptr);
    row("data", {data}, nullptr);
    row("data, status", {data, status}, nullptr);
    row("link", {link}, linkOnly);
    row("link, status", {link, status}, linkAndStatus);
    row("link, data", {link, data}, linkAndData);
    row("link, data, status", {link, data, status}, linkAndData);
    row("name", {name}, nameOnly);
    row("name, status", {name, status}, nameAndStatus);
    row("name, data", {name, data}, nameAndData);
    row("name, data, status", {name, data, status}, nameAndData);
    row("name, link", {name, link}, nameOnly);
    row("name, link, status", {name, link, status}, nameAndStatus);
    row("name, link, data", {name, link, data}, nameAndData);
    row("name, link, data, status", {name, link, data, status}, nameAndData);

    const std::pair<QString, QVariant> noName(text("name"), text(""));
    const std::pair<QString, QVariant> noData(text("data"), text(""));
    row("an empty name gives way", {noName, link, data}, linkAndData);
    row("empty data give way", {name, noData, status}, nameAndStatus);
    row("an empty name is no subject", {noName, data}, nullptr);
    row("an empty link title is no subject", {{text("linkTitle"), text("")}, data}, nullptr);
    row("the case of a key counts", {{text("Name"), text("N")}, data}, nullptr);
    row("other keys are not read", {name, data, {text("type"), text("T")}}, nameAndData);
    row("values may be wrapped", {{text("name"), variantOf(text("N"))}, data}, nameAndData);
    row("a number is read as text", {{text("name"), 5}, data},
        "'android.intent.extra.SUBJECT': '5', 'android.intent.extra.TEXT': 'D'");
    row("a list is no subject", {{text("name"), QVariantList({text("N"), text("M")})}, link, data},
        linkAndData);
    row("a map is no text", {name, {text("data"), QVariantMap{data}}, status}, nameAndStatus);

    QTest::newRow("av with a{sv}")
        << QVariant(QVariantList{QVariantMap{name, data}}) << sentText(nameAndData);
    QTest::newRow("av with a{ss}")
        << QVariant(QVariantList{
               QVariant::fromValue(Texts{{text("name"), text("N")}, {text("data"), text("D")}})})
        << sentText(nameAndData);
    QTest::newRow("only the first of several")
        << QVariant::fromValue(Maps({{link, data}, {name, status}})) << sentText(linkAndData);
    QTest::newRow("a text is no map") << QVariant(QStringList(text("words"))) << sentText();
    QTest::newRow("a path is no map") << QVariant(QStringList(text("/tmp/a.txt"))) << sentText();
}

void TestShareRequest::text_needs_a_subject()
{
    QFETCH(QVariant, resources);

    QTEST(shared(configuration(text("text/x-url"), resources)), "intent");
}

void TestShareRequest::the_type_of_text_is_plain_and_of_files_the_given_one_data()
{
    QTest::addColumn<QVariantMap>("mimeType");
    QTest::addColumn<QString>("type");

    const auto row = [](const char *title, const QVariant &mimeType, const QString &type) {
        QTest::newRow(title) << QVariantMap{{text("mimeType"), mimeType}} << type;
    };
    row("text", text("text/plain"), text("text/plain"));
    row("text of another kind", text("text/vcard"), text("text/plain"));
    row("text of no kind", text("text/"), text("text/plain"));
    row("no slash: a file", text("text"), text("text"));
    row("upper case: a file", text("TEXT/plain"), text("TEXT/plain"));
    row("text further behind: a file", text("x-text/plain"), text("x-text/plain"));
    row("file", text("image/jpeg"), text("image/jpeg"));
    row("any file", text("*/*"), text("*/*"));
    row("wrapped", variantOf(text("image/jpeg")), text("image/jpeg"));
    row("empty: unset", text(""), QString());
    row("no text: unset", QVariantList{text("image/jpeg")}, QString());
    row("map: unset", QVariantMap{{text("mimeType"), text("image/jpeg")}}, QString());
    QTest::newRow("missing: unset") << QVariantMap() << QString();
}

void TestShareRequest::the_type_of_text_is_plain_and_of_files_the_given_one()
{
    QFETCH(QVariantMap, mimeType);
    QVariantMap values = fileConfiguration(QStringList(text("/tmp/a")));
    values.remove(text("mimeType"));
    for (auto entry = mimeType.begin(); entry != mimeType.end(); ++entry)
        values.insert(entry.key(), entry.value());

    const auto intent = ShareRequest::fromConfiguration(m_bus.carry(values)).toIntent();

    QVERIFY(intent);
    QTEST(intent->type, "type");
    QCOMPARE(intent->type.isNull(), intent->type.isEmpty());
}

void TestShareRequest::a_resource_that_names_no_file_is_left_out_with_a_warning_data()
{
    QTest::addColumn<QVariantList>("resources");
    QTest::addColumn<QStringList>("leftOut");
    QTest::addColumn<QStringList>("intent");

    const QString file = text("/tmp/a");
    const QString other = text("/tmp/b");
    const QString broken = text("https://[example/");
    const QStringList none = sent("SEND", "image/jpeg");
    const QStringList one =
        sent("SEND", "image/jpeg", "'android.intent.extra.STREAM': <file:///tmp/a>");
    const QStringList two = sent("SEND_MULTIPLE", "image/jpeg",
                                 "'android.intent.extra.STREAM': [<file:///tmp/a>, "
                                 "<file:///tmp/b>]");

    QTest::newRow("map") << QVariantList{QVariantMap{{text("name"), file}}}
                         << QStringList(text("\"\"")) << none;
    QTest::newRow("list") << QVariantList{QVariantList{file}} << QStringList(text("\"\"")) << none;
    QTest::newRow("object path") << QVariantList{QVariant::fromValue(QDBusObjectPath(file))}
                                 << QStringList(text("\"\"")) << none;
    QTest::newRow("empty") << QVariantList{text("")} << QStringList(text("\"\"")) << none;
    QTest::newRow("not to be parsed")
        << QVariantList{broken} << QStringList(text("\"https://[example/\"")) << none;
    QTest::newRow("all of several")
        << QVariantList({broken, QVariantMap()})
        << QStringList({text("\"https://[example/\""), text("\"\"")}) << none;
    QTest::newRow("all but one") << QVariantList({broken, file})
                                 << QStringList(text("\"https://[example/\"")) << one;
    QTest::newRow("one of three") << QVariantList({file, QVariantMap(), other})
                                  << QStringList(text("\"\"")) << two;
}

void TestShareRequest::a_resource_that_names_no_file_is_left_out_with_a_warning()
{
    QFETCH(QVariantList, resources);
    QFETCH(QStringList, leftOut);

    QTEST(shared(fileConfiguration(resources)), "intent");

    leftOut.replaceInStrings(QRegularExpression(text("^")),
                             text("Neither a path nor a URL, left out: "));
    QCOMPARE(takeLog(QtWarningMsg, text("com.corvo.bramd.daemon")), leftOut);
}

void TestShareRequest::nothing_is_shared_without_resources_data()
{
    QTest::addColumn<QVariantMap>("configuration");

    QVariantMap missing = fileConfiguration({});
    missing.remove(text("resources"));
    QTest::newRow("nothing at all") << QVariantMap();
    QTest::newRow("missing") << missing;
    QTest::newRow("empty as") << fileConfiguration(QStringList());
    QTest::newRow("empty av") << fileConfiguration(QVariantList());
    QTest::newRow("empty aa{sv}") << configuration(text("text/plain"), QVariant::fromValue(Maps()));
    QTest::newRow("text") << fileConfiguration(text("/tmp/a"));
    QTest::newRow("bytes") << fileConfiguration(QByteArray("/tmp/a"));
    QTest::newRow("number") << fileConfiguration(5);
    QTest::newRow("map") << fileConfiguration(QVariantMap{{text("0"), text("/tmp/a")}});
    QTest::newRow("map for text") << configuration(text("text/plain"),
                                                   QVariantMap{{text("name"), text("N")}});
}

void TestShareRequest::nothing_is_shared_without_resources()
{
    QFETCH(QVariantMap, configuration);

    QCOMPARE(shared(configuration), QStringList(text("not shared")));
}

void TestShareRequest::the_method_names_package_and_class_data()
{
    QTest::addColumn<QVariant>("method");
    QTest::addColumn<QString>("package");
    QTest::addColumn<QString>("className");

    const QString id = text("methodId");
    const QString target = text("org.example/.Share");
    const QString package = text("org.example");
    const QString share = text(".Share");
    QTest::newRow("a{sv}") << QVariant(QVariantMap{{id, target}}) << package << share;
    QTest::newRow("a{ss}") << QVariant::fromValue(Texts{{id, target}}) << package << share;
    QTest::newRow("v with a{sv}") << variantOf(QVariantMap{{id, target}}) << package << share;
    QTest::newRow("v in it") << QVariant(QVariantMap{{id, variantOf(target)}}) << package << share;
    QTest::newRow("other keys are not read")
        << QVariant(QVariantMap{{id, target}, {text("a"), QVariantMap()}, {text("z"), 5}})
        << package << share;
    QTest::newRow("what follows a second slash is not read")
        << QVariant(QVariantMap{{id, text("org.example/.Share/x")}}) << package << share;
    QTest::newRow("empty parts count")
        << QVariant(QVariantMap{{id, text("org.example//.Share")}}) << package << text("");
    QTest::newRow("no class") << QVariant(QVariantMap{{id, text("org.example/")}}) << package
                              << text("");
}

void TestShareRequest::the_method_names_package_and_class()
{
    QFETCH(QVariant, method);
    QFETCH(QString, package);
    QVariantMap values = fileConfiguration(QStringList(text("/tmp/a")));
    values.insert(text("selectedTransferMethodInfo"), method);

    const auto intent = ShareRequest::fromConfiguration(m_bus.carry(values)).toIntent();

    QVERIFY(intent);
    QCOMPARE(intent->package, package);
    QCOMPARE(intent->componentPackage, package);
    QTEST(intent->componentClass, "className");
    // A component without a class would be one the runtime cannot even name.
    QVERIFY(!intent->componentClass.isNull());
}

void TestShareRequest::a_method_that_names_no_app_gives_an_intent_without_target_data()
{
    QTest::addColumn<QVariant>("method");
    QTest::addColumn<QString>("logged");

    const QString id = text("methodId");
    QTest::newRow("no slash") << QVariant(QVariantMap{{id, text("org.example")}})
                              << text("\"org.example\"");
    QTest::newRow("empty") << QVariant(QVariantMap{{id, text("")}}) << text("\"\"");
    QTest::newRow("no package") << QVariant(QVariantMap{{id, text("/.Share")}})
                                << text("\"/.Share\"");
    QTest::newRow("only a slash") << QVariant(QVariantMap{{id, text("/")}}) << text("\"/\"");
    QTest::newRow("missing") << QVariant(QVariantMap{{text("methodid"), text("a/b")}})
                             << text("\"\"");
    QTest::newRow("no text") << QVariant(QVariantMap{{id, QVariantList({text("a/b"), 5})}})
                             << text("\"\"");
    QTest::newRow("no map") << QVariant(text("a/b")) << text("\"\"");
    QTest::newRow("empty map") << QVariant(QVariantMap()) << text("\"\"");
}

void TestShareRequest::a_method_that_names_no_app_gives_an_intent_without_target()
{
    QFETCH(QVariant, method);
    QFETCH(QString, logged);
    QVariantMap values = fileConfiguration(QStringList(text("/tmp/a")));
    values.insert(text("selectedTransferMethodInfo"), method);

    QCOMPARE(shared(values),
             QStringList({text("action 'android.intent.action.SEND'"), text("type 'image/jpeg'"),
                          text("extras {'android.intent.extra.STREAM': <file:///tmp/a>}")}));

    QCOMPARE(
        takeLog(QtWarningMsg, text("com.corvo.bramd.daemon")),
        QStringList(text("Sharing with no app in particular, methodId names none: ") + logged));
}

void TestShareRequest::unknown_keys_are_left_out_with_a_warning_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("logged");

    QTest::newRow("text") << text("colour") << QVariant(text("red"))
                          << text("Unrecognized key ' \"colour\" ' with value: "
                                  "QVariant(QString, \"red\")");
    QTest::newRow("the case counts")
        << text("Resources") << QVariant(5)
        << text("Unrecognized key ' \"Resources\" ' with value: QVariant(int, 5)");
    QTest::newRow("empty key") << text("") << QVariant(true)
                               << text("Unrecognized key ' \"\" ' with value: "
                                       "QVariant(bool, true)");
    QTest::newRow("nested") << text("z")
                            << QVariant::fromValue(Maps{{{text("a"), QVariantList{1}}}})
                            << text("Unrecognized key ' \"z\" ' with value: "
                                    "QVariant(QVariantList, (QVariant(QVariantMap, "
                                    "QMap((\"a\", QVariant(QVariantList, (QVariant(int, 1))))))))");
}

void TestShareRequest::unknown_keys_are_left_out_with_a_warning()
{
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    QVariantMap values = fileConfiguration(QStringList(text("/tmp/a")));
    values.insert(key, value);

    QCOMPARE(shared(values),
             sent("SEND", "image/jpeg", "'android.intent.extra.STREAM': <file:///tmp/a>"));

    QTEST(takeLog(QtWarningMsg, text("com.corvo.bramd.daemon")).join(QLatin1Char('\n')), "logged");
}

void TestShareRequest::what_is_read_is_logged_in_the_order_of_the_keys()
{
    QVariantMap values =
        configuration(text("text/plain"), QVariant::fromValue(Maps{{{text("name"), text("N")}}}));
    values.insert(text("title"), text("Holiday"));
    values.insert(text("selectedTransferMethodInfo"), QVariantMap{{text("methodId"), text("a/b")}});
    const QVariantMap files = fileConfiguration(QStringList({text("/tmp/a"), text("/tmp/b")}));

    shared(values);

    QCOMPARE(takeLog(QtDebugMsg, text("com.corvo.bramd.daemon")),
             QStringList({text("MimeType: \"text/plain\""), text("Resources: \"\""),
                          text("SelectedTransferMethodInfo: "
                               "QMap((\"methodId\", QVariant(QString, \"a/b\")))"),
                          text("Title: \"Holiday\""),
                          text("Share Text: QMap((\"android.intent.extra.SUBJECT\", "
                               "QVariant(QString, \"N\"))(\"android.intent.extra.TEXT\", "
                               "QVariant(QString, \"\")))")}));

    shared(files);

    QVERIFY(takeLogLine(QtDebugMsg, text("Resources: \"/tmp/a, /tmp/b\"")));
}

void TestShareRequest::hostile_configurations_are_read_to_the_end_data()
{
    QTest::addColumn<QVariantMap>("configuration");
    QTest::addColumn<int>("extras");

    QStringList paths;
    QVariantMap entries;
    for (int i = 0; i < 3000; ++i) {
        paths.append(text("/tmp/%1").arg(i));
        entries.insert(QString::number(i), i);
    }
    QVariant deep = text("x");
    for (int i = 0; i < 11; ++i)
        deep = QVariantMap{{text("name"), QVariantList{deep}}};
    QVariantMap manyEntries = entries;
    manyEntries.insert(text("methodId"), text("a/b"));
    QVariantMap largeMethod = fileConfiguration(QStringList(text("/tmp/a")));
    largeMethod.insert(text("selectedTransferMethodInfo"), manyEntries);
    QVariantMap longMethod = fileConfiguration(QStringList(text("/tmp/a")));
    longMethod.insert(text("selectedTransferMethodInfo"),
                      QVariantMap{{text("methodId"), QString(200000, u'/').prepend(u'a')}});

    QTest::newRow("many files") << fileConfiguration(paths) << 1;
    QTest::newRow("a long path") << fileConfiguration(
                                        QStringList(QString(200000, u'x').prepend(u'/')))
                                 << 1;
    QTest::newRow("a long text") << configuration(text("text/plain"),
                                                  QVariant::fromValue(Maps{
                                                      {{text("name"), QString(200000, u'x')}}}))
                                 << 2;
    QTest::newRow("a map with many entries")
        << configuration(text("text/plain"), QVariant::fromValue(Maps{entries})) << 0;
    QTest::newRow("nested text") << configuration(text("text/plain"), QVariantList{deep}) << 0;
    QTest::newRow("a target with many entries") << largeMethod << 1;
    QTest::newRow("a target with many parts") << longMethod << 1;
}

void TestShareRequest::hostile_configurations_are_read_to_the_end()
{
    QFETCH(QVariantMap, configuration);

    const auto intent = ShareRequest::fromConfiguration(m_bus.carry(configuration)).toIntent();

    QVERIFY(intent);
    QTEST(intent->extras.size(), "extras");
    QVERIFY(!intent->package.isEmpty());
}

QTEST_GUILESS_MAIN(TestShareRequest)
#include "test_sharerequest.moc"
