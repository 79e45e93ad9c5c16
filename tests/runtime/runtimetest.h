#pragma once

#include "fakes/fakebinder.h"
#include "fakes/runtimehost.h"
#include "support/testcase.h"

#include <memory>

/// Base of the tests of what talks to the runtime: a host and a binder device of the test's own,
/// where a runtime of the level under test runs during each test function.
class RuntimeTest : public TestCase
{
    Q_OBJECT

protected Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

protected:
    /// Called before the runtime's unit becomes active, and before it ends.
    virtual void setUp() {}
    virtual void tearDown() {}

    RuntimeHost m_host;
    FakeBinder *m_binder = nullptr;
};

/// The same for one client of one service of the runtime, made anew for each test function.
template <typename Client>
class RuntimeClientTest : public RuntimeTest
{
protected:
    explicit RuntimeClientTest(const char *serviceName)
        : m_serviceName(serviceName)
    {
    }

    void setUp() override
    {
        m_service = m_binder->addService(m_serviceName);
        m_client = std::make_unique<Client>();
    }

    void tearDown() override { m_client.reset(); }

    const QByteArray m_serviceName;
    std::shared_ptr<FakeObject> m_service;
    std::unique_ptr<Client> m_client;
};
