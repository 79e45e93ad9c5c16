#include "sim/runtime/servicefixture.h"

using namespace SimRuntime;

ServiceFixture::ServiceFixture(int sdk, const QString &record)
{
    auto driver = std::make_unique<ScriptedDriver>();
    m_driver = driver.get();
    m_loop = std::make_unique<BinderLoop>(std::move(driver));
    m_loop->start();
    m_recorder.open(record);
    m_environment.sdk = sdk;
    m_environment.loop = m_loop.get();
    m_environment.recorder = &m_recorder;
    m_environment.faults = &m_faults;
}

ParcelWriter ServiceFixture::request(const char *descriptor) const
{
    ParcelWriter writer;
    writeInterfaceToken(&writer, QLatin1String(descriptor), m_environment.sdk);
    return writer;
}

IncomingCall ServiceFixture::callOf(quint32 code, const ParcelWriter &request) const
{
    IncomingCall call;
    call.code = code;
    call.uid = m_uid;
    call.parcel = request.parcel();
    return call;
}
