// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "allV4XToV50.h"

#include "contactV4XToV50.h"
#include "dataPaths.h"
#include "dialNowV4XToV50.h"
#include "dialPlanV4XToV50.h"
#include "doorPhoneV4XToV50.h"
#include "dssKeyV4XToV50.h"
#include "remoteBookV4XToV50.h"

int AllV4XToV50()
{
    // A failure in one translator does not stop the next.
    (void)ContactV4XToV50(kOldContacts, kNewContactList, kNewContactGroups);
    (void)DialPlanV4XToV50(kOldDialPlan, kNewDialPlan);
    (void)DialNowV4XToV50(kOldDialNow, kNewDialNow);
    (void)DSSKeyV4XToV50(kOldDSSKeys, kNewDSSKeys);
    (void)DoorPhoneV4XToV50(kDoorPhones, kDoorPhones);
    return RemoteBookV4XToV50(kOldRemoteBooks, kNewRemoteBooks);
}
