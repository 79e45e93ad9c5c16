#include "daemon/sharerequesttest.h"

#include <QtTest>

class TestShareRequest : public ShareRequestTest
{
    Q_OBJECT

private Q_SLOTS:
    void the_method_names_package_and_class_data();
    void the_method_names_package_and_class();
    void a_method_that_names_no_app_gives_an_intent_without_target_data();
    void a_method_that_names_no_app_gives_an_intent_without_target();
    void unknown_keys_are_left_out_with_a_warning_data();
    void unknown_keys_are_left_out_with_a_warning();
    void what_is_read_is_logged_in_the_order_of_the_keys();
    void hostile_configurations_are_read_to_the_end_data();
    void hostile_configurations_are_read_to_the_end();
};

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

    const auto intent = intentFor(values);

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
    QTest::newRow("very long")
        << QVariant(QVariantMap{{text("methodId"), QString(1000000, QLatin1Char('a'))}})
        << QLatin1Char('"') + QString(255, QLatin1Char('a')) + QLatin1Char('"');
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

    const auto intent = intentFor(configuration);

    QVERIFY(intent);
    QTEST(intent->extras.size(), "extras");
    QVERIFY(!intent->package.isEmpty());
}

QTEST_GUILESS_MAIN(TestShareRequest)
#include "test_sharerequest.moc"
