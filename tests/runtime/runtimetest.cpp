#include "runtime/runtimetest.h"

#include "runtime/runtimelevel.h"

#include <QtTest>

void RuntimeTest::initTestCase()
{
    QVERIFY(m_host.start());
    m_binder = new FakeBinder; // never destroyed, like what holds it as long as the process lives
    m_binder->setSdkLevel(RuntimeLevel::sdk());
}

void RuntimeTest::init()
{
    TestCase::init();
    setUp();
    QVERIFY(m_host.setUnitState(QStringLiteral("active")));
}

void RuntimeTest::cleanup()
{
    tearDown();
    QVERIFY(m_host.setUnitState(QStringLiteral("deactivating")));
    QVERIFY(m_host.setUnitState(QStringLiteral("inactive")));
    TestCase::cleanup();
}
