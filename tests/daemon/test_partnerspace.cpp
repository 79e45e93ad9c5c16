#include "daemon/partnerspace.h"
#include "support/testcase.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

class TestPartnerSpace : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void a_marker_is_an_empty_file_of_the_same_name();
    void a_marker_that_is_there_already_stays();
    void a_marker_that_cannot_be_made_is_reported();
    void the_number_of_a_file_is_folded_away_when_unmarking_data();
    void the_number_of_a_file_is_folded_away_when_unmarking();
    void unmarking_removes_the_folded_marker_only();
    void unmarking_what_is_not_marked_says_nothing();

private:
    QString path(const char *name) const { return m_directory->filePath(QLatin1String(name)); }
    PartnerSpace partnerSpace() const
    {
        return PartnerSpace(m_directory->path() + QLatin1Char('/'));
    }

    QScopedPointer<QTemporaryDir> m_directory;
};

void TestPartnerSpace::init()
{
    TestCase::init();
    m_directory.reset(new QTemporaryDir);
}

void TestPartnerSpace::a_marker_is_an_empty_file_of_the_same_name()
{
    partnerSpace().mark(QStringLiteral("a-12.apk"));

    QVERIFY(QFile::exists(path("a-12.apk")));
    QCOMPARE(QFileInfo(path("a-12.apk")).size(), 0);
}

void TestPartnerSpace::a_marker_that_is_there_already_stays()
{
    partnerSpace().mark(QStringLiteral("a.apk"));
    partnerSpace().mark(QStringLiteral("a.apk"));

    QVERIFY(QFile::exists(path("a.apk")));
}

void TestPartnerSpace::a_marker_that_cannot_be_made_is_reported()
{
    PartnerSpace(QStringLiteral("/nonexistent/")).mark(QStringLiteral("a.apk"));

    QVERIFY(
        takeLogLine(QtWarningMsg,
                    QStringLiteral("Cannot create partner space marker: \"/nonexistent/a.apk\"")));
}

void TestPartnerSpace::the_number_of_a_file_is_folded_away_when_unmarking_data()
{
    QTest::addColumn<QString>("apkName");
    QTest::addColumn<QString>("marker");

    QTest::newRow("number") << QStringLiteral("a-12.apk") << QStringLiteral("a.apk");
    QTest::newRow("no number") << QStringLiteral("a.apk") << QStringLiteral("a.apk");
    QTest::newRow("no digits") << QStringLiteral("a-x.apk") << QStringLiteral("a-x.apk");
    QTest::newRow("only the first of two")
        << QStringLiteral("a-1.apk-2.apk") << QStringLiteral("a.apk-2.apk");
    QTest::newRow("not at the end") << QStringLiteral("a-1.apkx") << QStringLiteral("a.apkx");
    QTest::newRow("case-sensitive") << QStringLiteral("a-1.APK") << QStringLiteral("a-1.APK");
    QTest::newRow("package") << QStringLiteral("com.a") << QStringLiteral("com.a");
}

void TestPartnerSpace::the_number_of_a_file_is_folded_away_when_unmarking()
{
    QFETCH(QString, apkName);

    QTEST(PartnerSpace::markerToRemove(apkName), "marker");
}

void TestPartnerSpace::unmarking_removes_the_folded_marker_only()
{
    partnerSpace().mark(QStringLiteral("a-12.apk"));
    partnerSpace().mark(QStringLiteral("a.apk"));

    partnerSpace().unmark(QStringLiteral("a-12.apk"));

    QVERIFY(QFile::exists(path("a-12.apk")));
    QVERIFY(!QFile::exists(path("a.apk")));
}

void TestPartnerSpace::unmarking_what_is_not_marked_says_nothing()
{
    partnerSpace().unmark(QStringLiteral("a.apk"));
    partnerSpace().unmark(QStringLiteral(".."));
    partnerSpace().unmark(QString());

    QVERIFY(m_directory->isValid() && QFile::exists(m_directory->path()));
    QVERIFY(log().isEmpty());
}

QTEST_GUILESS_MAIN(TestPartnerSpace)
#include "test_partnerspace.moc"
