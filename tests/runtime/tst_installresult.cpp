#include "runtime/installresult.h"
#include "support/testcase.h"

#include <QtTest>

#include <limits>

namespace {

QString textId(int returnCode)
{
    return QString::fromLatin1(InstallResult::failureTextId(returnCode));
}

} // namespace

class InstallResultTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void mapsEveryCode_data();
    void mapsEveryCode();
    void takesAllOthersForOther();
};

void InstallResultTest::mapsEveryCode_data()
{
    QTest::addColumn<QVector<int>>("codes");

    QTest::newRow("Aborted") << QVector<int>({-115, -22, -21});
    QTest::newRow("bramd-install-fail-incompat")
        << QVector<int>({-113, -111, -17, -16, -14, -12, -9});
    QTest::newRow("bramd-install-fail-conflict")
        << QVector<int>({-112, -25, -24, -13, -10, -8, -7, -6, -5, -1});
    QTest::newRow("bramd-install-fail-invalid") << QVector<int>(
        {-109, -108, -107, -106, -105, -104, -103, -102, -101, -100, -26, -23, -15, -11, -3, -2});
    QTest::newRow("bramd-install-fail-storage") << QVector<int>({-20, -19, -18, -4});
}

void InstallResultTest::mapsEveryCode()
{
    QFETCH(QVector<int>, codes);
    const QString expected = QString::fromLatin1(QTest::currentDataTag());

    for (int code = -200; code <= 200; ++code)
        QVERIFY2((textId(code) == expected) == codes.contains(code),
                 qPrintable(QString::number(code)));
}

void InstallResultTest::takesAllOthersForOther()
{
    const QString other = QStringLiteral("bramd-install-fail-other");
    for (const int code : {std::numeric_limits<int>::min(), -116, -114, -110, -99, -60, -27, 0, 2,
                           std::numeric_limits<int>::max()}) {
        QCOMPARE(textId(code), other);
    }
}

QTEST_GUILESS_MAIN(InstallResultTest)
#include "tst_installresult.moc"
