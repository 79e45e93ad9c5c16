#include "daemon/notices.h"
#include "platform/host/fakenotifications.h"
#include "platform/host/privatebus.h"
#include "platform/host/sessionbus.h"
#include "support/testcase.h"

#include <QDBusArgument>
#include <QtTest>

class TestNotices : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void a_text_is_a_body_without_title_and_application();
    void a_text_is_sent_without_escaping();
    void a_warning_has_a_lock_and_is_urgent();
    void a_result_has_the_application_and_its_icons();
    void a_result_may_have_a_body();

private:
    QVariantList published(const Notification &notice) const;
    static QVariantMap hints(const QVariantList &arguments);

    PrivateBus m_bus;
};

void TestNotices::initTestCase()
{
    QVERIFY(m_bus.start());
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_bus.address().toUtf8());
}

QVariantList TestNotices::published(const Notification &notice) const
{
    FakeNotifications service(m_bus.address());
    SessionBus bus;
    notice.publish(bus);
    const bool arrived = QTest::qWaitFor([&service] { return !service.messages.isEmpty(); });
    return arrived ? service.messages.first().arguments() : QVariantList();
}

QVariantMap TestNotices::hints(const QVariantList &arguments)
{
    return qdbus_cast<QVariantMap>(arguments.value(6));
}

void TestNotices::a_text_is_a_body_without_title_and_application()
{
    const QVariantList arguments = published(Notices::text(QStringLiteral("words"), false));

    QCOMPARE(arguments.mid(0, 5),
             QVariantList({QString(), 0U, QString(), QString(), QStringLiteral("words")}));
    QCOMPARE(hints(arguments),
             QVariantMap({{QStringLiteral("transient"), true},
                          {QStringLiteral("image-path"), QStringLiteral("icon-s-android")}}));
}

void TestNotices::a_text_is_sent_without_escaping()
{
    const QString text = QStringLiteral("<b>Q&A</b> &amp; <a href=\"x\">more</a>");

    QCOMPARE(published(Notices::text(text, false)).value(4), QVariant(text));
}

void TestNotices::a_warning_has_a_lock_and_is_urgent()
{
    const QVariantList arguments = published(Notices::text(QStringLiteral("words"), true));

    QCOMPARE(arguments.mid(0, 5),
             QVariantList({QString(), 0U, QString(), QString(), QStringLiteral("words")}));
    QCOMPARE(hints(arguments),
             QVariantMap({{QStringLiteral("transient"), true},
                          {QStringLiteral("urgency"), QVariant::fromValue(uchar(2))},
                          {QStringLiteral("image-path"), QStringLiteral("icon-lock-warning")}}));
}

void TestNotices::a_result_has_the_application_and_its_icons()
{
    const QVariantList arguments = published(Notices::result(QStringLiteral("done")));

    QCOMPARE(arguments.mid(0, 5),
             QVariantList({QStringLiteral("bramd-ap-name"), 0U, QStringLiteral("icon-s-android"),
                           QStringLiteral("done"), QString()}));
    QCOMPARE(hints(arguments),
             QVariantMap({{QStringLiteral("transient"), true},
                          {QStringLiteral("image-path"), QStringLiteral("icon-s-android")}}));
}

void TestNotices::a_result_may_have_a_body()
{
    const Notification notice =
        Notices::result(QStringLiteral("failed"), QStringLiteral("no space"));

    QCOMPARE(published(notice).value(4), QVariant(QStringLiteral("no space")));
}

QTEST_GUILESS_MAIN(TestNotices)
#include "test_notices.moc"
