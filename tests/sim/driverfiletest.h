#pragma once

#include "sim/drivertest.h"

/// File descriptors in messages.
class DriverFileTest : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void aFileArrivesOpen();
    void severalFilesArriveInOrder();
    void aFileOutlivesItsBuffer();
    void anObjectThatAcceptsNoFilesIsNotSentAny();
    void aReplyCarriesFilesOnlyIfTheCallAcceptsThem_data();
    void aReplyCarriesFilesOnlyIfTheCallAcceptsThem();
    void aDescriptorThatIsNotOpenIsRefused();
};
