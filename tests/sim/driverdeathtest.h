#pragma once

#include "sim/drivertest.h"

/// Death notifications.
class DriverDeathTest : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void aCrashIsTold();
    void aClosedFileIsADeath();
    void eachDeathEndsItsRead();
    void everyoneWhoAskedIsTold();
    void whoDidNotAskIsNotTold();
    void aDeadObjectIsToldAtOnce();
    void aWeakReferenceIsEnough();
    void aSecondRequestIsDropped();
    void aRequestWithoutAReferenceIsIgnored();
    void whatIsClearedBeforeIsConfirmedAndNotTold();
    void whatIsClearedWithAnotherCookieStays();
    void whatIsClearedAfterTheDeathWasQueuedIsStillTold();
    void whatIsClearedAfterTheDeathWasReadIsConfirmedAfterTheAnswer();
    void whatIsClearedAfterTheAnswerIsConfirmed();
    void afterClearingANewRequestIsTaken();
    void deathsWaitUntilTheThreadIsIdle();
    void aConfirmationComesInsideACall();
    void theLastReleaseDropsTheRequest();
    void theLastReleaseDropsADeathThatIsQueued();
    void anAnswerForAForgottenCookieIsFine();
    void anAnswerThatNobodyAskedForIsIgnored();
    void theContextManagerCanBeWatched();
};
