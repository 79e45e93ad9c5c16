#include "daemon/sharerequesttest.h"

#include <QDBusObjectPath>
#include <QRegularExpression>
#include <QtTest>

class TestSharedResources : public ShareRequestTest
{
    Q_OBJECT

private Q_SLOTS:
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
    void more_files_than_fit_into_a_request_are_not_shared();
    void any_number_of_texts_is_shared_as_the_first_one();

private:
    static QStringList sentText(const char *extras = nullptr);
};

QStringList TestSharedResources::sentText(const char *extras)
{
    return sent("SEND", "text/plain", extras);
}

void TestSharedResources::files_are_streams_data()
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

void TestSharedResources::files_are_streams()
{
    QFETCH(QVariant, resources);

    QTEST(shared(fileConfiguration(resources)), "intent");
}

void TestSharedResources::text_needs_a_subject_data()
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

void TestSharedResources::text_needs_a_subject()
{
    QFETCH(QVariant, resources);

    QTEST(shared(configuration(text("text/x-url"), resources)), "intent");
}

void TestSharedResources::the_type_of_text_is_plain_and_of_files_the_given_one_data()
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

void TestSharedResources::the_type_of_text_is_plain_and_of_files_the_given_one()
{
    QFETCH(QVariantMap, mimeType);
    QVariantMap values = fileConfiguration(QStringList(text("/tmp/a")));
    values.remove(text("mimeType"));
    for (auto entry = mimeType.begin(); entry != mimeType.end(); ++entry)
        values.insert(entry.key(), entry.value());

    const auto intent = intentFor(values);

    QVERIFY(intent);
    QTEST(intent->type, "type");
    QCOMPARE(intent->type.isNull(), intent->type.isEmpty());
}

void TestSharedResources::a_resource_that_names_no_file_is_left_out_with_a_warning_data()
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
    QTest::newRow("list") << QVariantList{QVariant(QVariantList{file})} << QStringList(text("\"\""))
                          << none;
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

void TestSharedResources::a_resource_that_names_no_file_is_left_out_with_a_warning()
{
    QFETCH(QVariantList, resources);
    QFETCH(QStringList, leftOut);

    QTEST(shared(fileConfiguration(resources)), "intent");

    leftOut.replaceInStrings(QRegularExpression(text("^")),
                             text("Neither a path nor a URL, left out: "));
    QCOMPARE(takeLog(QtWarningMsg, text("com.corvo.bramd.daemon")), leftOut);
}

void TestSharedResources::nothing_is_shared_without_resources_data()
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

void TestSharedResources::nothing_is_shared_without_resources()
{
    QFETCH(QVariantMap, configuration);

    QCOMPARE(shared(configuration), QStringList(text("not shared")));
}

void TestSharedResources::more_files_than_fit_into_a_request_are_not_shared()
{
    constexpr int Most = 1024 * 1024 / 48;
    QStringList files(QVector<QString>(Most, text("/a")).toList());
    const auto intent = intentFor(fileConfiguration(files));
    QVERIFY(intent);
    QCOMPARE(intent->extras.value(text("android.intent.extra.STREAM")).toList().size(), Most);

    files.append(text("/a"));
    QVERIFY(!intentFor(fileConfiguration(files)));
    QCOMPARE(takeLog(QtWarningMsg),
             QStringList(text("Too many files to share, sharing none: %1").arg(Most + 1)));
}

void TestSharedResources::any_number_of_texts_is_shared_as_the_first_one()
{
    const Texts item{{text("name"), text("n")}, {text("data"), text("d")}};
    QVariantList items{QVariant::fromValue(item)};
    for (int number = 0; number < 30000; ++number)
        items.append(number);

    QCOMPARE(shared(configuration(text("text/plain"), items)),
             sentText("'android.intent.extra.SUBJECT': 'n', 'android.intent.extra.TEXT': 'd'"));
}

QTEST_GUILESS_MAIN(TestSharedResources)
#include "test_sharedresources.moc"
