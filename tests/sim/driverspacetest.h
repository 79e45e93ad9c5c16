#pragma once

#include "sim/drivertest.h"

/// What fits into a receiver's mapping, and what becomes of what does not.
class DriverSpaceTest : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void aMessageCanFillTheMapping();
    void aMessageThatIsTooLargeFailsWithoutACompletion();
    void offsetsTakeRoomToo();
    void messagesThatAreNotFreedTakeRoom();
    void freedPiecesJoin();
    void aReplyThatIsTooLargeFailsTheCall();
    void whoHasNoMappingCannotBeCalled();
    void whoHasNoMappingGetsNoReply();
    void noMoreThan4MiBOfAMappingAreUsed();
    void aHugeMessageFails();
};
