#include "daemon/processowner.h"
#include "daemon/userrights.h"
#include "support/otherusers.h"
#include "support/testcase.h"

#include <QFileInfo>
#include <QtTest>

#include <sys/prctl.h>
#include <unistd.h>

namespace {

constexpr uid_t nobody = UserRights::nobody;

bool becomeNobody()
{
    return ::setresgid(nobody, nobody, nobody) == 0 && ::setresuid(nobody, nobody, nobody) == 0;
}

std::optional<ProcessOwner> ownerOf(const OtherUsers::WaitingProcess &process)
{
    return ProcessOwner::of(static_cast<uint>(process.id()));
}

} // namespace

class TestProcessOwner : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void a_process_has_numbers_and_names();
    void a_process_that_does_not_exist_has_no_owner();
    void a_process_that_is_not_dumpable_keeps_its_owner();
    void a_process_that_was_given_other_rights_belongs_to_these();
};

void TestProcessOwner::a_process_has_numbers_and_names()
{
    const auto owner = ProcessOwner::of(static_cast<uint>(::getpid()));

    QVERIFY(owner);
    QCOMPARE(owner->userId, 0U);
    QCOMPARE(owner->user, QStringLiteral("root"));
    QCOMPARE(owner->groupId, ::getegid());
    QCOMPARE(owner->group, QFileInfo(QStringLiteral("/proc/self")).group());
}

void TestProcessOwner::a_process_that_does_not_exist_has_no_owner()
{
    QVERIFY(!ProcessOwner::of(0));
    QVERIFY(!ProcessOwner::of(0xffffffff));
}

void TestProcessOwner::a_process_that_is_not_dumpable_keeps_its_owner()
{
    if (!OtherUsers::exist())
        QSKIP("Needs a second user: run the tests as root");
    const OtherUsers::WaitingProcess process(
        [] { return becomeNobody() && ::prctl(PR_SET_DUMPABLE, 0) == 0; });

    const auto owner = ownerOf(process);

    QVERIFY(owner);
    QCOMPARE(owner->userId, nobody);
    QCOMPARE(owner->groupId, nobody);
    const QString inside = QStringLiteral("/proc/%1/status").arg(process.id());
    QCOMPARE(QFileInfo(inside).ownerId(), 0U); // the trap
}

void TestProcessOwner::a_process_that_was_given_other_rights_belongs_to_these()
{
    if (!OtherUsers::exist())
        QSKIP("Needs a second user: run the tests as root");
    // As a program that the file system gives to root and the group "disk" starts out.
    const OtherUsers::WaitingProcess process(
        [] { return ::setresgid(nobody, 6, 6) == 0 && ::setresuid(nobody, 0, 0) == 0; });

    const auto owner = ownerOf(process);

    QVERIFY(owner);
    QCOMPARE(owner->user, QStringLiteral("root"));
    QCOMPARE(owner->group, QStringLiteral("disk"));
}

QTEST_GUILESS_MAIN(TestProcessOwner)
#include "test_processowner.moc"
