#pragma once

#include "sim/drivertest.h"

/// Two-way calls: their way there and back, what is delivered during one and what is held back.
class DriverCallTest : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void aCallArrivesWithWhatTheCalleeNeeds();
    void aReplyComesWithTheCallsCompletion();
    void aStatusReplyIsMarked();
    void anEmptyMessageHasAnAddressOfItsOwn();
    void aCallToTheAbsentContextManagerIsDead();
    void aCallToAnUnknownHandleFails();
    void theContextManagerCannotCallHandle0();
    void aReplyWithNothingToAnswerFails();
    void aFailedCallStopsTheWriteUntilItIsRead();
    void aFailedReplyStopsTheWriteUntilItIsRead();
    void aReadEndsAfterOneCall();
    void aSecondCallWhileWaitingFails();
    void unrelatedCallsWaitUntilTheThreadIsIdle();
    void unrelatedCallsWaitWhileOneIsServed();
    void aCallBackIsDeliveredInsideTheCall();
    void aCallBackThroughOthersIsDeliveredInsideTheCall();
    void aReplyAnswersTheInnermostCall();
    void callsCanBeMadeWhileOneIsServed();
    void aCalleeThatDiesBeforeReadingMakesTheCallDead();
    void aCalleeThatDiesWhileServingMakesTheCallDead();
    void aCalleeThatDiesInsideACallOfItsOwnIsMissedWhenThatEnds();
    void aReplyToADeadCallerIsDropped();
    void theRequestCanBeFreedBeforeTheReply();
};
