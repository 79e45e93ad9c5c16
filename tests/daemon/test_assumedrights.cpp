#include "daemon/assumedrights.h"
#include "daemon/userrights.h"
#include "support/otherusers.h"
#include "support/systemcalls.h"
#include "support/testcase.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr uint user = 100000;
constexpr uint firstGroup = 100001;
constexpr uint secondGroup = 100002;

/// Ids, groups and capabilities of this thread, as the kernel tells them.
QStringList state()
{
    QFile status(QStringLiteral("/proc/thread-self/status"));
    QStringList lines;
    if (status.open(QIODevice::ReadOnly)) {
        const QStringList all = QString::fromLatin1(status.readAll()).split(QLatin1Char('\n'));
        lines = all.filter(QRegularExpression(QStringLiteral("^(Uid|Gid|Groups|Cap\\w+):")));
    }
    lines.append(QString::number(::prctl(PR_GET_DUMPABLE)));
    return lines;
}

QVector<unsigned> calls(const char *which)
{
    static const QMap<QByteArray, QVector<unsigned>> numbers{
#ifdef SYS_setfsuid32
        {"user", {SYS_setfsuid32}},
        {"group", {SYS_setfsgid32}},
        {"groups", {SYS_setgroups32}},
#else
        {"user", {SYS_setfsuid}},
        {"group", {SYS_setfsgid}},
        {"groups", {SYS_setgroups}},
#endif
    };
    return numbers.value(which);
}

} // namespace

class TestAssumedRights : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void files_are_opened_with_the_rights_of_the_user_data();
    void files_are_opened_with_the_rights_of_the_user();
    void everything_is_as_before_afterwards();
    void other_threads_keep_their_rights();
    void who_may_not_is_told_so_data();
    void who_may_not_is_told_so();
    void a_process_that_does_not_get_back_ends();

private:
    QScopedPointer<QTemporaryDir> m_directory;
};

void TestAssumedRights::init()
{
    TestCase::init();
    if (!OtherUsers::exist())
        QSKIP("Needs a second user: run the tests as root");
    QCOMPARE(::prctl(PR_SET_DUMPABLE, 1), 0);
    m_directory.reset(new QTemporaryDir);
    QCOMPARE(::chmod(QFile::encodeName(m_directory->path()).constData(), 0755), 0);
}

void TestAssumedRights::files_are_opened_with_the_rights_of_the_user_data()
{
    QTest::addColumn<uint>("owner");
    QTest::addColumn<uint>("group");
    QTest::addColumn<uint>("mode");
    QTest::addColumn<bool>("opens");

    QTest::newRow("own") << user << 0U << 0400U << true;
    QTest::newRow("own, but closed") << user << firstGroup << 0044U << false;
    QTest::newRow("of everybody") << 0U << 0U << 0004U << true;
    QTest::newRow("of root") << 0U << 0U << 0600U << false;
    QTest::newRow("of root's group") << 0U << 0U << 0640U << false;
    QTest::newRow("of the first group") << 0U << firstGroup << 0040U << true;
    QTest::newRow("of a further group") << 0U << secondGroup << 0040U << true;
    QTest::newRow("of another group") << 0U << secondGroup + 1 << 0640U << false;
    QTest::newRow("closed to a group, open to others") << 0U << secondGroup << 0604U << false;
}

void TestAssumedRights::files_are_opened_with_the_rights_of_the_user()
{
    QFETCH(uint, owner);
    QFETCH(uint, group);
    QFETCH(uint, mode);
    QFile file(m_directory->filePath(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(::fchown(file.handle(), owner, group), 0);
    QCOMPARE(::fchmod(file.handle(), mode), 0);
    file.close();

    bool opened = false;
    {
        const AssumedRights rights({user, {firstGroup, secondGroup}});
        QVERIFY(rights.areAssumed());
        opened = file.open(QIODevice::ReadOnly);
    }
    file.close();

    QTEST(opened, "opens");
    QVERIFY(file.open(QIODevice::ReadOnly)); // root's rights are back
}

void TestAssumedRights::everything_is_as_before_afterwards()
{
    QStringList before;
    QStringList meanwhile;
    QStringList after;
    // In a thread of its own, whose groups can be set.
    std::thread([&] {
        const gid_t groups[] = {5, 6};
        if (::syscall(SYS_setgroups, 2, groups) != 0)
            return;
        before = state();
        {
            const AssumedRights rights({user, {firstGroup}});
            meanwhile = state();
        }
        after = state();
    }).join();

    QVERIFY(before.contains(QStringLiteral("Uid:\t0\t0\t0\t0")));
    QVERIFY(before.contains(QStringLiteral("Gid:\t0\t0\t0\t0")));
    QVERIFY(before.contains(QStringLiteral("Groups:\t5 6 ")));
    QCOMPARE(before.last(), QStringLiteral("1"));
    QVERIFY(before != meanwhile);
    QCOMPARE(after, before);
}

void TestAssumedRights::other_threads_keep_their_rights()
{
    const auto stateOfOther = [] {
        QStringList lines;
        std::thread([&] { lines = state(); }).join();
        lines.removeLast(); // what may be dumped is the process
        return lines;
    };
    QStringList meanwhile;
    std::thread other;
    std::atomic<bool> assumed(false);
    other = std::thread([&] {
        while (!assumed)
            std::this_thread::yield();
        meanwhile = state();
        assumed = false;
    });
    const QStringList before = stateOfOther();
    {
        const AssumedRights rights({user, {firstGroup}});
        assumed = true;
        while (assumed)
            std::this_thread::yield();
    }
    other.join();
    meanwhile.removeLast();

    QCOMPARE(meanwhile, before);
}

void TestAssumedRights::who_may_not_is_told_so_data()
{
    QTest::addColumn<QByteArray>("refused");

    QTest::newRow("user") << QByteArray("user");
    QTest::newRow("group") << QByteArray("group");
    QTest::newRow("groups") << QByteArray("groups");
}

void TestAssumedRights::who_may_not_is_told_so()
{
    QFETCH(QByteArray, refused);
    bool isRefused = false;
    bool assumed = true;
    std::thread([&] {
        isRefused = SystemCalls::refuse(calls(refused.constData()));
        assumed = AssumedRights({user, {firstGroup}}).areAssumed();
    }).join();

    QVERIFY(isRefused);
    QVERIFY(!assumed);
}

void TestAssumedRights::a_process_that_does_not_get_back_ends()
{
    const pid_t child = ::fork();
    if (child == 0) {
        qInstallMessageHandler(nullptr);
        if (SystemCalls::refuse(calls("user"), 0U))
            AssumedRights({user, {firstGroup}});
        ::_exit(EXIT_SUCCESS);
    }
    int status = 0;

    QCOMPARE(::waitpid(child, &status, 0), child);

    QVERIFY(WIFSIGNALED(status));
    QCOMPARE(WTERMSIG(status), SIGABRT);
}

QTEST_GUILESS_MAIN(TestAssumedRights)
#include "test_assumedrights.moc"
