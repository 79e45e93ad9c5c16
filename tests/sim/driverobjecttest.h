#pragma once

#include "sim/drivertest.h"

/// Objects in messages: their numbers here and there, and which messages are refused.
class DriverObjectTest : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void anOwnObjectArrivesAsAHandle();
    void anObjectIsAnnouncedBeforeTheCompletion();
    void anObjectIsAnnouncedOnce();
    void anObjectHasOneHandlePerFile();
    void aHandleArrivesAsTheReceiversHandle();
    void anObjectComesHomeAsItself();
    void aWeakObjectArrivesAsAWeakHandle();
    void aWeakHandleComesHomeWeak();
    void theFlagsOfTheFirstSendingCount();
    void handlesAreTheLowestThatAreFree();
    void manyObjectsTravelInOneMessage();
    void badObjectsAreRefused_data();
    void badObjectsAreRefused();
    void anotherCookieForTheSameObjectIsRefused();
    void aWeakHandleIsNoStrongOne();
    void whatARefusedMessageCarriedIsNotAnnounced();
    void aRefusedReplyFailsTheCall();
};
