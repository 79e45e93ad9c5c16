// The driver tests: what the binder client library relies on, one rule each, run against the
// simulated device or, as tst_driver_kernel, against a kernel's.

#include "sim/drivercalltest.h"
#include "sim/driverdeathtest.h"
#include "sim/driverfiletest.h"
#include "sim/driverobjecttest.h"
#include "sim/driveronewaytest.h"
#include "sim/driverreferencetest.h"
#include "sim/driversetuptest.h"
#include "sim/driverspacetest.h"

#include <QCoreApplication>
#include <QtTest>

template <typename Test>
int run(const QStringList &arguments)
{
    Test test;
    return QTest::qExec(&test, arguments);
}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    int failures = 0;
    failures += run<DriverSetupTest>(arguments);
    failures += run<DriverCallTest>(arguments);
    failures += run<DriverOneWayTest>(arguments);
    failures += run<DriverObjectTest>(arguments);
    failures += run<DriverReferenceTest>(arguments);
    failures += run<DriverSpaceTest>(arguments);
    failures += run<DriverFileTest>(arguments);
    failures += run<DriverDeathTest>(arguments);
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
