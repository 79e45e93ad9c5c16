#include "daemon/sessionaddress.h"
#include "support/testcase.h"

#include <QtTest>

class TestSessionAddress : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void the_address_holds_the_user_id_in_decimal();
};

void TestSessionAddress::the_address_holds_the_user_id_in_decimal()
{
    QCOMPARE(sessionBusAddress(100000),
             QByteArray("unix:path=/run/user/100000/dbus/user_bus_socket"));
    QCOMPARE(sessionBusAddress(4294967294U),
             QByteArray("unix:path=/run/user/4294967294/dbus/user_bus_socket"));
}

QTEST_GUILESS_MAIN(TestSessionAddress)
#include "test_sessionaddress.moc"
