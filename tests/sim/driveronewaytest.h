#pragma once

#include "sim/drivertest.h"

/// One-way calls: accepted at once, delivered one at a time per object, limited in space.
class DriverOneWayTest : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void aOneWayCallIsCompleteOnceItIsTaken();
    void theSenderOfAOneWayCallIsNotTold();
    void oneAtATimeIsDeliveredPerObject();
    void theirOrderIsKept();
    void objectsDoNotWaitForEachOther();
    void theyWaitUntilTheCalleeIsIdle();
    void twoWayCallsOvertakeWaitingOneWayCalls();
    void theyMayTakeHalfOfTheMapping();
    void freeingThemMakesRoom();
    void aOneWayCallToADeadObjectIsDead();
};
