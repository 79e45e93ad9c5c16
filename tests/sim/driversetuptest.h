#pragma once

#include "sim/drivertest.h"

/// Opening, mapping, becoming the context manager, reading and writing as such.
class DriverSetupTest : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void aDeviceThatIsNotThereCannotBeOpened();
    void theProtocolIsVersion8();
    void anUnknownControlIsRefused();
    void aDeviceIsMappedOnce();
    void thereIsOneContextManager();
    void anotherCanFollowWhenTheContextManagerIsGone();
    void aReadOfNothingFailsWithItsWriteHalfDone();
    void anUnknownCommandEndsTheWrite();
    void theDescriptorStaysReadableUntilTheWorkIsRead();
    void aReadBufferThatIsTooSmallLosesNothing();
    void aWriteThatOnlyWritesDoesNotRead();
};
