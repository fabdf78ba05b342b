// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "allV4XToV50.h"

#include "contactV4XToV50.h"
#include "dialNowV4XToV50.h"
#include "dialPlanV4XToV50.h"
#include "doorPhoneV4XToV50.h"
#include "dssKeyV4XToV50.h"
#include "phoneFacts.h"
#include "remoteBookV4XToV50.h"

// clang-format off
const XmlTranslation kXmlTranslations[6] = {
    {"contacts",           kOldContacts,    [] { return ContactV4XToV50(kOldContacts.path, kNewContactList, kNewContactGroups); }},
    {"dial plan",          kOldDialPlan,    [] { return DialPlanV4XToV50(kOldDialPlan.path, kNewDialPlan); }},
    {"dial-now rules",     kOldDialNow,     [] { return DialNowV4XToV50(kOldDialNow.path, kNewDialNow); }},
    {"DSS keys",           kOldDSSKeys,     [] { return DSSKeyV4XToV50(kOldDSSKeys.path, kNewDSSKeys); }},
    {"door phones",        kDoorPhones,     [] { return DoorPhoneV4XToV50(kDoorPhones.path, kDoorPhones.path); }},
    {"remote phone books", kOldRemoteBooks, [] { return RemoteBookV4XToV50(kOldRemoteBooks.path, kNewRemoteBooks); }},
};
// clang-format on

int AllV4XToV50()
{
    int result = 0;
    for (const XmlTranslation& translation : kXmlTranslations)
        result = translation.translate(); // a failure does not keep the next translator from running
    return result;
}
