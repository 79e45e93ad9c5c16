#include "daemon/windowwait.h"
#include "runtime/runtimelevel.h"
#include "runtime/runtimetest.h"

#include <QtTest>

#include <functional>

namespace {

const QString Package = QStringLiteral("a.b");
const QString NotFound = QStringLiteral("Window for \"a.b\" not yet found. Sleeping 500ms");

constexpr quint32 HasWindow = 103;

FakeReply found()
{
    return FakeReply::data(FakeParcel().int32(1));
}

FakeReply notFound()
{
    return FakeReply::data(FakeParcel().int32(0));
}

enum class Death { WhileAsked, Alone, Replaced, WithTheRuntime };

} // namespace

Q_DECLARE_METATYPE(FakeReply)
Q_DECLARE_METATYPE(Death)

class TestWindowWait : public RuntimeTest
{
    Q_OBJECT

private Q_SLOTS:
    void looks_are_half_a_second_apart_data();
    void looks_are_half_a_second_apart();
    void the_package_is_asked_for();
    void an_odd_answer_is_taken_for_what_it_says_data();
    void an_odd_answer_is_taken_for_what_it_says();
    void without_a_compositor_nothing_is_waited_for();
    void without_a_runtime_nothing_is_waited_for();
    void a_compositor_that_dies_shows_nothing_any_more_data();
    void a_compositor_that_dies_shows_nothing_any_more();

private:
    void setUp() override;

    /// Waits; `meanwhile` is called in each pause with the number of pauses so far.
    void wait(const std::function<void(int)> &meanwhile = {});
    int looks() const { return static_cast<int>(m_compositor->transactions().size()); }
    int pauses() const { return m_pauses.size(); }

    std::shared_ptr<FakeObject> m_compositor;
    QList<unsigned long> m_pauses;
};

void TestWindowWait::setUp()
{
    m_compositor = m_binder->addService("SurfaceFlinger");
    m_pauses.clear();
}

void TestWindowWait::wait(const std::function<void(int)> &meanwhile)
{
    waitForWindow(Package, [&](unsigned long milliseconds) {
        m_pauses.append(milliseconds);
        if (meanwhile)
            meanwhile(pauses());
    });
    QVERIFY(!m_binder->isOpen()); // everything was released
}

void TestWindowWait::looks_are_half_a_second_apart_data()
{
    QTest::addColumn<int>("windowAt"); // which look finds it
    QTest::addColumn<int>("expectedLooks");
    QTest::addColumn<int>("expectedPauses");

    QTest::newRow("there at once") << 1 << 1 << 0;
    QTest::newRow("at the second look") << 2 << 2 << 1;
    QTest::newRow("at the fourth look") << 4 << 4 << 3;
    QTest::newRow("at the last look") << 10 << 10 << 9;
    QTest::newRow("too late") << 11 << 10 << 10;
    QTest::newRow("never") << 1000 << 10 << 10;
}

void TestWindowWait::looks_are_half_a_second_apart()
{
    QFETCH(int, windowAt);
    QFETCH(int, expectedPauses);
    m_compositor->setHandler(
        [&](const FakeTransaction &) { return looks() >= windowAt ? found() : notFound(); });

    wait();

    QTEST(looks(), "expectedLooks");
    QList<unsigned long> halfSeconds;
    QStringList lines;
    for (int i = 0; i < expectedPauses; ++i) {
        halfSeconds.append(500);
        lines.append(NotFound);
    }
    QCOMPARE(m_pauses, halfSeconds);
    QCOMPARE(takeLog(QtDebugMsg, QStringLiteral("com.corvo.bramd.daemon")), lines);
}

void TestWindowWait::the_package_is_asked_for()
{
    m_compositor->setReply(HasWindow, found());

    wait();

    const auto calls = m_compositor->takeTransactions();
    QCOMPARE(calls.size(), std::size_t(1));
    QCOMPARE(calls.front().code, HasWindow);
    QVERIFY(!calls.front().isOneWay());
    QCOMPARE(calls.front().data,
             RuntimeLevel::token("android.ui.ISurfaceComposer").string16(Package).data());
}

void TestWindowWait::an_odd_answer_is_taken_for_what_it_says_data()
{
    QTest::addColumn<FakeReply>("reply");
    QTest::addColumn<int>("expectedLooks");
    QTest::addColumn<int>("expectedWarnings"); // of the driver's refusals

    QTest::newRow("another number") << FakeReply::data(FakeParcel().int32(2)) << 1 << 0;
    QTest::newRow("a negative number") << FakeReply::data(FakeParcel().int32(-1)) << 1 << 0;
    QTest::newRow("yes and more") << FakeReply::data(FakeParcel().int32(1).int32(0)) << 1 << 0;
    QTest::newRow("no and more") << FakeReply::data(FakeParcel().int32(0).int32(1)) << 10 << 0;
    QTest::newRow("nothing") << FakeReply() << 10 << 0;
    QTest::newRow("half a word") << FakeReply::data(FakeParcel(QByteArray(2, '\1'))) << 10 << 0;
    QTest::newRow("a refusal") << FakeReply::statusCode(-74) << 10 << 0;
    QTest::newRow("a positive status") << FakeReply::statusCode(1) << 10 << 0;
    QTest::newRow("a failure") << FakeReply::failed() << 10 << 10;
    QTest::newRow("no answer while frozen") << FakeReply::frozen() << 10 << 10;
}

void TestWindowWait::an_odd_answer_is_taken_for_what_it_says()
{
    QFETCH(FakeReply, reply);
    m_compositor->setReply(HasWindow, reply);

    wait();

    QTEST(looks(), "expectedLooks");
    QTEST(takeLog(QtWarningMsg).size(), "expectedWarnings");
}

void TestWindowWait::without_a_compositor_nothing_is_waited_for()
{
    m_binder->removeService("SurfaceFlinger");

    wait();

    QCOMPARE(pauses(), 0);
    QCOMPARE(looks(), 0);
}

void TestWindowWait::without_a_runtime_nothing_is_waited_for()
{
    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));

    wait();

    QCOMPARE(pauses(), 0);
    QCOMPARE(looks(), 0);
}

void TestWindowWait::a_compositor_that_dies_shows_nothing_any_more_data()
{
    QTest::addColumn<Death>("death");

    QTest::newRow("while it is asked") << Death::WhileAsked;
    QTest::newRow("between two looks") << Death::Alone;
    QTest::newRow("and is followed by another one") << Death::Replaced;
    QTest::newRow("with all of the runtime") << Death::WithTheRuntime;
}

// A wait asks the compositor that it has found: the looks that are left after its death fail.
void TestWindowWait::a_compositor_that_dies_shows_nothing_any_more()
{
    QFETCH(Death, death);
    std::shared_ptr<FakeObject> next;
    m_compositor->setHandler([&](const FakeTransaction &) {
        return death == Death::WhileAsked && looks() == 2 ? FakeReply::dead() : notFound();
    });

    wait([&](int pause) {
        if (pause != 2)
            return;
        if (death == Death::Replaced) {
            next = m_binder->addService("SurfaceFlinger");
            next->setReply(HasWindow, found());
        }
        if (death == Death::WithTheRuntime)
            m_binder->killRuntime();
        else
            m_binder->kill(m_compositor);
    });

    QCOMPARE(looks(), 2);
    QCOMPARE(pauses(), 10);
    QVERIFY(next == nullptr || next->transactions().empty());
    QCOMPARE(takeLog(QtDebugMsg, QStringLiteral("com.corvo.bramd.daemon")).size(), 10);
    if (death == Death::WithTheRuntime)
        m_binder->startContextManager();
}

QTEST_GUILESS_MAIN(TestWindowWait)
#include "test_windowwait.moc"
