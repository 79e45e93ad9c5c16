#include "daemon/buscredentials.h"
#include "support/testcase.h"

#include <QtTest>

class TestBusCredentials : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void all_that_is_told_is_known();
    void what_is_not_told_is_not_known_data();
    void what_is_not_told_is_not_known();
};

void TestBusCredentials::all_that_is_told_is_known()
{
    const QVariantMap reply{
        {QStringLiteral("ProcessID"), 4711U},
        {QStringLiteral("UnixUserID"), 0U},
        {QStringLiteral("UnixGroupIDs"), QVariant::fromValue(QList<uint>{6, 0})}};

    const BusCredentials credentials = BusCredentials::fromReply(reply);

    QVERIFY(credentials.processId == 4711U);
    QVERIFY(credentials.user == 0U);
    QCOMPARE(credentials.groups, (QVector<uint>{6, 0}));
}

void TestBusCredentials::what_is_not_told_is_not_known_data()
{
    QTest::addColumn<QVariantMap>("reply");

    QTest::newRow("nothing") << QVariantMap();
    QTest::newRow("other types") << QVariantMap{{QStringLiteral("ProcessID"), -1},
                                                {QStringLiteral("UnixUserID"), QStringLiteral("0")},
                                                {QStringLiteral("UnixGroupIDs"), 0U}};
}

void TestBusCredentials::what_is_not_told_is_not_known()
{
    QFETCH(QVariantMap, reply);

    const BusCredentials credentials = BusCredentials::fromReply(reply);

    QVERIFY(!credentials.processId);
    QVERIFY(!credentials.user);
    QVERIFY(credentials.groups.isEmpty());
}

QTEST_GUILESS_MAIN(TestBusCredentials)
#include "test_buscredentials.moc"
