#include "daemon/packagerequests.h"
#include "support/testcase.h"

#include <QtTest>

Q_DECLARE_METATYPE(PackageMod)

namespace {

PackageMod install(const char *path, bool silent = false)
{
    return {QLatin1String(path), true, silent};
}

PackageMod uninstall(const char *package)
{
    return {QLatin1String(package), false, true};
}

} // namespace

class TestPackageRequests : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void requests_are_released_in_order_data();
    void requests_are_released_in_order();
    void a_released_request_is_gone();
    void the_same_request_passes_again_after_a_release();
    void a_request_added_meanwhile_is_released_too();
    void a_release_within_a_release_goes_on_where_that_one_is();
    void what_nobody_takes_waits_on_with_those_behind_it();
    void what_was_handed_over_before_is_not_handed_over_again();
    void a_request_is_readable_in_the_log_data();
    void a_request_is_readable_in_the_log();

private:
    static QVector<PackageMod> released(PackageRequests &requests);
};

QVector<PackageMod> TestPackageRequests::released(PackageRequests &requests)
{
    QVector<PackageMod> handed;
    requests.release([&handed](const PackageMod &request) {
        handed.append(request);
        return true;
    });
    return handed;
}

void TestPackageRequests::requests_are_released_in_order_data()
{
    QTest::addColumn<QVector<PackageMod>>("added");
    QTest::addColumn<QVector<PackageMod>>("handedOver");

    using List = QVector<PackageMod>;
    QTest::newRow("none") << List() << List();
    QTest::newRow("install and removal of one app are both kept")
        << List{install("a.apk"), uninstall("a"), install("b.apk")}
        << List{install("a.apk"), uninstall("a"), install("b.apk")};
    QTest::newRow("the first of equal ones stays")
        << List{install("a.apk"), install("b.apk"), install("a.apk"), install("a.apk")}
        << List{install("a.apk"), install("b.apk")};
    QTest::newRow("a silent request is another one")
        << List{install("a.apk"), install("a.apk", true)}
        << List{install("a.apk"), install("a.apk", true)};
    QTest::newRow("a repeated removal after an installation is dropped too")
        << List{uninstall("a"), install("a.apk"), uninstall("a")}
        << List{uninstall("a"), install("a.apk")};
}

void TestPackageRequests::requests_are_released_in_order()
{
    QFETCH(QVector<PackageMod>, added);
    PackageRequests requests;
    for (const PackageMod &request : qAsConst(added))
        requests.add(request);

    QTEST(released(requests), "handedOver");
}

void TestPackageRequests::a_released_request_is_gone()
{
    PackageRequests requests;
    requests.add(install("a.apk"));
    released(requests);

    QCOMPARE(released(requests), QVector<PackageMod>());
}

void TestPackageRequests::the_same_request_passes_again_after_a_release()
{
    PackageRequests requests;
    requests.add(install("a.apk"));
    released(requests);
    requests.add(install("a.apk"));

    QCOMPARE(released(requests), QVector<PackageMod>{install("a.apk")});
}

void TestPackageRequests::a_request_added_meanwhile_is_released_too()
{
    PackageRequests requests;
    requests.add(install("a.apk"));
    QVector<PackageMod> handed;

    requests.release([&requests, &handed](const PackageMod &request) {
        if (handed.isEmpty())
            requests.add(install("b.apk"));
        handed.append(request);
        return true;
    });

    QCOMPARE(handed, QVector<PackageMod>({install("a.apk"), install("b.apk")}));
}

void TestPackageRequests::a_release_within_a_release_goes_on_where_that_one_is()
{
    PackageRequests requests;
    requests.add(install("a.apk"));
    requests.add(install("b.apk"));
    QVector<PackageMod> handed;

    requests.release([&requests, &handed](const PackageMod &request) {
        handed.append(request);
        handed += released(requests);
        return true;
    });

    QCOMPARE(handed, QVector<PackageMod>({install("a.apk"), install("b.apk")}));
}

void TestPackageRequests::what_nobody_takes_waits_on_with_those_behind_it()
{
    PackageRequests requests;
    const QVector<PackageMod> all{install("a.apk"), uninstall("b"), install("c.apk")};
    for (const PackageMod &request : all)
        requests.add(request);
    QVector<PackageMod> offered;

    requests.release([&offered](const PackageMod &request) {
        offered.append(request);
        return request.install;
    });

    QCOMPARE(offered, all.mid(0, 2));
    QCOMPARE(released(requests), all.mid(1));
}

void TestPackageRequests::what_was_handed_over_before_is_not_handed_over_again()
{
    PackageRequests requests;
    for (const PackageMod &request :
         {install("a.apk"), uninstall("b"), install("a.apk"), uninstall("b")})
        requests.add(request);

    requests.release([](const PackageMod &request) { return request.install; });

    QCOMPARE(released(requests), QVector<PackageMod>{uninstall("b")});
}

void TestPackageRequests::a_request_is_readable_in_the_log_data()
{
    QTest::addColumn<bool>("install");
    QTest::addColumn<bool>("silent");
    QTest::addColumn<QString>("text");

    QTest::newRow("install") << true << false << QStringLiteral("PackageMod(\"a\", install)");
    QTest::newRow("silent install")
        << true << true << QStringLiteral("PackageMod(\"a\", install, silent)");
    QTest::newRow("uninstall") << false << false << QStringLiteral("PackageMod(\"a\", uninstall)");
}

void TestPackageRequests::a_request_is_readable_in_the_log()
{
    QFETCH(bool, install);
    QFETCH(bool, silent);
    QString text;

    QDebug(&text) << PackageMod{QStringLiteral("a"), install, silent};

    QTEST(text.trimmed(), "text");
}

QTEST_GUILESS_MAIN(TestPackageRequests)
#include "test_packagerequests.moc"
