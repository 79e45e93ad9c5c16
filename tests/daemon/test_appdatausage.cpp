#include "daemon/appdatausage.h"
#include "support/hostfiles.h"
#include "support/testcase.h"

#include <QElapsedTimer>
#include <QFile>
#include <QtTest>

#include <cerrno>
#include <csignal>

namespace {

const QString Category = QStringLiteral("com.corvo.bramd.daemon");
const QString Unknown = QStringLiteral("Could not determine android app data usage");
const QString Directory = QStringLiteral("/run/data/");

/// A shell script in the place of du while the object lives.
class FakeDu
{
public:
    explicit FakeDu(const QByteArray &script)
        : m_mount(install(script))
    {
    }

private:
    static HostFiles::Mount install(const QByteArray &script)
    {
        const QString path = QStringLiteral("/run/du");
        HostFiles::write(path, "#!/bin/sh\n" + script + '\n');
        QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner);
        return HostFiles::Mount::file(path, QStringLiteral("/usr/bin/du"));
    }

    HostFiles::Mount m_mount;
};

} // namespace

class TestAppDataUsage : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void the_number_before_the_first_tab_is_the_size_data();
    void the_number_before_the_first_tab_is_the_size();
    void without_a_tab_there_is_no_size_data();
    void without_a_tab_there_is_no_size();
    void the_answer_of_du_is_believed_data();
    void the_answer_of_du_is_believed();
    void an_answer_that_says_nothing_is_reported_data();
    void an_answer_that_says_nothing_is_reported();
    void du_is_asked_for_the_apparent_size_on_one_file_system();
    void a_missing_du_is_reported();
    void a_du_that_hangs_is_ended();
    void files_below_are_counted();
    void a_missing_directory_is_reported();
};

void TestAppDataUsage::init()
{
    TestCase::init();
    HostFiles::makeEmptyDirectory(Directory);
}

void TestAppDataUsage::the_number_before_the_first_tab_is_the_size_data()
{
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<quint64>("size");

    QTest::newRow("usual") << QByteArray("123456\t/data\n") << quint64(123456);
    QTest::newRow("zero") << QByteArray("0\t/data\n") << quint64(0);
    QTest::newRow("no end of line") << QByteArray("5\t/data") << quint64(5);
    QTest::newRow("nothing behind the tab") << QByteArray("5\t") << quint64(5);
    QTest::newRow("tabs in the name") << QByteArray("5\t/a\tb\t6\n") << quint64(5);
    QTest::newRow("several lines") << QByteArray("5\t/a\n7\t/b\n") << quint64(5);
    QTest::newRow("a line of words first") << QByteArray("oh\n5\t/a\n") << quint64(0);
    QTest::newRow("beyond 32 bits") << QByteArray("4294967296\t/a\n") << quint64(4294967296);
    QTest::newRow("the greatest number")
        << QByteArray("18446744073709551615\t/a\n") << quint64(18446744073709551615ULL);
    QTest::newRow("one more") << QByteArray("18446744073709551616\t/a\n") << quint64(0);
    QTest::newRow("negative") << QByteArray("-5\t/a\n") << quint64(0);
    QTest::newRow("a fraction") << QByteArray("5.5\t/a\n") << quint64(0);
    QTest::newRow("a unit") << QByteArray("5K\t/a\n") << quint64(0);
    QTest::newRow("hexadecimal") << QByteArray("0x10\t/a\n") << quint64(0);
    QTest::newRow("leading zeros are decimal") << QByteArray("010\t/a\n") << quint64(10);
    QTest::newRow("no number") << QByteArray("many\t/a\n") << quint64(0);
    QTest::newRow("nothing before the tab") << QByteArray("\t/a\n") << quint64(0);
    QTest::newRow("a tab only") << QByteArray("\t") << quint64(0);
    QTest::newRow("not UTF-8") << QByteArray("5\t/\xff\xfe\n") << quint64(5);
    QTest::newRow("a number that is not UTF-8") << QByteArray("5\xff\t/a\n") << quint64(0);
    QTest::newRow("a zero byte behind the tab") << QByteArray("5\t/a\0\t9", 8) << quint64(5);
}

void TestAppDataUsage::the_number_before_the_first_tab_is_the_size()
{
    QFETCH(QByteArray, output);

    const std::optional<quint64> size = sizeFromDu(output);

    QVERIFY(size.has_value());
    QTEST(*size, "size");
}

void TestAppDataUsage::without_a_tab_there_is_no_size_data()
{
    QTest::addColumn<QByteArray>("output");

    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("a number") << QByteArray("123456\n");
    QTest::newRow("a space") << QByteArray("123456 /data\n");
    QTest::newRow("a zero byte before the tab") << QByteArray("5\0\t/a\n", 6);
}

void TestAppDataUsage::without_a_tab_there_is_no_size()
{
    QFETCH(QByteArray, output);

    QVERIFY(!sizeFromDu(output).has_value());
}

void TestAppDataUsage::the_answer_of_du_is_believed_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<quint64>("usage");

    QTest::newRow("usual") << QByteArray(R"(printf '123456\t/run/data\n')") << quint64(123456);
    QTest::newRow("failed") << QByteArray(R"(printf '77\t/a\n'; exit 1)") << quint64(77);
    QTest::newRow("complaints apart")
        << QByteArray(R"(echo no >&2; printf '5\t/a\n'; echo no >&2; exit 1)") << quint64(5);
    QTest::newRow("no number") << QByteArray(R"(printf 'many\t/a\n')") << quint64(0);
    QTest::newRow("more than a pipe holds")
        << QByteArray(R"(printf '5\t'; head -c 5000000 /dev/zero | tr '\0' x)") << quint64(5);
    QTest::newRow("more complaints than a pipe holds")
        << QByteArray(R"(head -c 5000000 /dev/zero >&2; printf '5\t/a\n')") << quint64(5);
    QTest::newRow("in pieces") << QByteArray(
                                      R"(printf 1; sleep 0.1; printf '2\t'; sleep 0.1; echo /a)")
                               << quint64(12);
    QTest::newRow("a process left behind")
        << QByteArray(R"(sleep 1000 & printf '5\t/a\n')") << quint64(5);
    QTest::newRow("input ends at once") << QByteArray(R"(cat; printf '5\t/a\n')") << quint64(5);
}

void TestAppDataUsage::the_answer_of_du_is_believed()
{
    QFETCH(QByteArray, script);
    const FakeDu du(script);

    QTEST(appDataUsage(Directory), "usage");
}

void TestAppDataUsage::an_answer_that_says_nothing_is_reported_data()
{
    QTest::addColumn<QByteArray>("script");

    QTest::newRow("nothing") << QByteArray("exit 0");
    QTest::newRow("nothing, and failed") << QByteArray("exit 1");
    QTest::newRow("no tab") << QByteArray("echo 123456");
    QTest::newRow("a complaint only") << QByteArray(R"(printf '5\t/a\n' >&2)");
    QTest::newRow("a zero byte first") << QByteArray(R"(printf '123\0\t/a\n')");
    QTest::newRow("killed") << QByteArray(R"(printf '5\t/a\n'; kill -KILL $$)");
    QTest::newRow("crashed") << QByteArray(R"(printf '5\t/a\n'; kill -SEGV $$)");
}

void TestAppDataUsage::an_answer_that_says_nothing_is_reported()
{
    QFETCH(QByteArray, script);
    const FakeDu du(script);

    QCOMPARE(appDataUsage(Directory), quint64(0));

    QCOMPARE(takeLog(QtWarningMsg, Category), QStringList(Unknown));
}

void TestAppDataUsage::du_is_asked_for_the_apparent_size_on_one_file_system()
{
    const FakeDu du(R"(printf '%s\n' "$0" "$@" > /run/arguments; printf '1\t/\n')");

    QCOMPARE(appDataUsage(QStringLiteral("/run/data/Grüße und mehr/")), quint64(1));

    QCOMPARE(HostFiles::read(QStringLiteral("/run/arguments")),
             QByteArray("/usr/bin/du\n-sxb\n/run/data/Gr\xc3\xbc\xc3\x9f"
                        "e und mehr/\n"));
}

void TestAppDataUsage::a_missing_du_is_reported()
{
    const HostFiles::Mount none = HostFiles::Mount::memory(QStringLiteral("/usr/bin"), "size=4k");

    QCOMPARE(appDataUsage(Directory), quint64(0));

    QCOMPARE(takeLog(QtWarningMsg, Category), QStringList(Unknown));
}

void TestAppDataUsage::a_du_that_hangs_is_ended()
{
    const FakeDu du(R"(echo $$ > /run/du-process; printf '5\t/a\n'; exec sleep 1000)");
    QElapsedTimer elapsed;
    elapsed.start();

    QCOMPARE(appDataUsage(Directory, 1000), quint64(0));

    QVERIFY(elapsed.elapsed() >= 1000);
    QCOMPARE(takeLog(QtWarningMsg, Category), QStringList(Unknown));
    const pid_t process = HostFiles::read(QStringLiteral("/run/du-process")).trimmed().toInt();
    QVERIFY(process > 0);
    QVERIFY(::kill(process, 0) < 0 && errno == ESRCH);
}

void TestAppDataUsage::files_below_are_counted()
{
    HostFiles::makeEmptyDirectory(Directory + QStringLiteral("app/files"));
    const QString file = Directory + QStringLiteral("app/files/map");
    HostFiles::write(file, QByteArray());
    const quint64 before = appDataUsage(Directory);

    HostFiles::write(file, QByteArray(123456, 'x'));

    QCOMPARE(appDataUsage(Directory), before + 123456);
}

void TestAppDataUsage::a_missing_directory_is_reported()
{
    QCOMPARE(appDataUsage(QStringLiteral("/run/nowhere/")), quint64(0));

    QCOMPARE(takeLog(QtWarningMsg, Category), QStringList(Unknown));
}

QTEST_GUILESS_MAIN(TestAppDataUsage)
#include "test_appdatausage.moc"
