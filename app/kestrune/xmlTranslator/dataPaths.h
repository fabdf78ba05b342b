// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// The old XML data files and the new ones that the translators write. Some paths differ only in letter case.

constexpr char kOldContacts[] = "/config/data/contactData.xml";
constexpr char kNewContactList[] = "/config/data/contact_list.xml";
constexpr char kNewContactGroups[] = "/config/data/contact_group_list.xml";
constexpr char kOldDialPlan[] = "/config/data/dialplan.xml";
constexpr char kNewDialPlan[] = "/config/data/DialPlan.xml";
constexpr char kOldDialNow[] = "/config/data/dialnow.xml";
constexpr char kNewDialNow[] = "/config/data/DialNow.xml";
constexpr char kOldDSSKeys[] = "/config/data/dsskey.xml";
constexpr char kNewDSSKeys[] = "/config/data/memkey.xml";
constexpr char kDoorPhones[] = "/config/data/doorphonedata.xml"; // rewritten in place
constexpr char kOldRemoteBooks[] = "/config/data/remotebook.xml";
constexpr char kNewRemoteBooks[] = "/config/data/remote_phonebook_list.xml";
