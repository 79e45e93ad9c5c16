#include "daemon/packageform.h"
#include "support/testcase.h"

#include <QtTest>

class TestPackageForm : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void a_file_name_is_what_follows_the_last_slash_data();
    void a_file_name_is_what_follows_the_last_slash();
    void a_name_is_reduced_to_its_package_data();
    void a_name_is_reduced_to_its_package();
};

void TestPackageForm::a_file_name_is_what_follows_the_last_slash_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");

    QTest::newRow("path") << QStringLiteral("/x/y/a.apk") << QStringLiteral("a.apk");
    QTest::newRow("no slash") << QStringLiteral("a.apk") << QStringLiteral("a.apk");
    QTest::newRow("slash at the end") << QStringLiteral("/x/y/") << QString();
    QTest::newRow("parent") << QStringLiteral("/x/..") << QStringLiteral("..");
    QTest::newRow("empty") << QString() << QString();
}

void TestPackageForm::a_file_name_is_what_follows_the_last_slash()
{
    QFETCH(QString, path);

    QTEST(fileName(path), "name");
}

void TestPackageForm::a_name_is_reduced_to_its_package_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("package");

    const QString package = QStringLiteral("com.example.app");
    QTest::newRow("path of an APK") << QStringLiteral("/x/y/com.example.app.apk") << package;
    QTest::newRow("APK") << QStringLiteral("com.example.app.apk") << package;
    QTest::newRow("package") << QStringLiteral("com.example.app") << package;
    QTest::newRow("package after a slash") << QStringLiteral("/x/com.example.app") << package;
    QTest::newRow("the suffix is case-sensitive")
        << QStringLiteral("a.APK") << QStringLiteral("a.APK");
    QTest::newRow("only the last suffix goes")
        << QStringLiteral("a.apk.apk") << QStringLiteral("a.apk");
    QTest::newRow("nothing but the suffix") << QStringLiteral("/x/.apk") << QString();
}

void TestPackageForm::a_name_is_reduced_to_its_package()
{
    QFETCH(QString, name);

    QTEST(packageForm(name), "package");
}

QTEST_GUILESS_MAIN(TestPackageForm)
#include "test_packageform.moc"
