#pragma once

#include "sim/drivertest.h"

/// References and the announcements about them, and the buffers that hold them.
class DriverReferenceTest : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void aBufferHoldsItsHandles();
    void anAcquiredHandleOutlivesItsBuffer();
    void theOwnerIsToldWhenTheLastReferenceGoes();
    void aWeakReferenceKeepsTheObjectKnown();
    void everyReferenceCounts();
    void aReleaseWaitsForTheAnswerToTheAcquire();
    void aReleaseWaitsUntilTheOwnerIsIdle();
    void changesThatCancelOutSayNothing();
    void aCallHoldsItsTargetUntilItIsFreed();
    void anObjectIsAnnouncedAnewAfterItWasForgotten();
    void anObjectThatComesHomeIsHeldByItsBuffer();
    void aReferenceReleasedTooOftenIsIgnored();
    void anUnknownHandleIsIgnored();
    void anAnswerThatIsNotDueIsIgnored();
    void whatIsFreedTwiceIsIgnored();
    void whatWasNeverReceivedCannotBeFreed();
    void whatIsNotReadYetCannotBeFreed();
    void whatIsNotFreedBeforeClosingIsNoted();
    void handle0CanBeAcquired();
    void theContextManagerCannotAcquireHandle0();
    void handle0IsNotAcquiredWithoutAContextManager();
    void handle0AlwaysCallsTheCurrentContextManager();
    void aNewContextManagerGetsNumber0OnlyWhenItIsFree();
    void aDeadHandleStaysUntilItIsReleased();
    void theReferencesOfAClosedFileGo();
};
