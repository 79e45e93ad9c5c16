#include "launcher/desktopdatabase.h"
#include "launcher/updatedatabasestub.h"
#include "support/testcase.h"

#include <QtTest>

class DesktopDatabaseTest : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void runsTheProgramQuietly();
    void waitsForTheProgram();
    void doesNotMindAMissingProgram();
    void endsAProgramThatHangs();
};

void DesktopDatabaseTest::runsTheProgramQuietly()
{
    UpdateDatabaseStub stub;

    DesktopDatabase::refresh();

    QCOMPARE(stub.takeRuns(), QByteArray("-q\n"));
}

void DesktopDatabaseTest::waitsForTheProgram()
{
    UpdateDatabaseStub stub("sleep 0.2; echo done >> /run/database-runs");

    DesktopDatabase::refresh();

    QCOMPARE(stub.takeRuns(), QByteArray("-q\ndone\n"));
}

void DesktopDatabaseTest::doesNotMindAMissingProgram()
{
    const HostFiles::Mount none = HostFiles::Mount::memory(QStringLiteral("/usr/bin"), "size=4k");

    DesktopDatabase::refresh();

    QCOMPARE(takeLog(QtWarningMsg), QStringList());
}

void DesktopDatabaseTest::endsAProgramThatHangs()
{
    UpdateDatabaseStub stub("exec sleep 1000");

    DesktopDatabase::refresh(500);

    QVERIFY(takeLogLine(QtWarningMsg, QStringLiteral("Ending program that does not finish: "
                                                     "\"/usr/bin/update-desktop-database\"")));
}

QTEST_GUILESS_MAIN(DesktopDatabaseTest)
#include "tst_desktopdatabase.moc"
