// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// The texts that passes report and that tools look for. They are the device's own, letter for letter, odd spellings too.

// The translation table, on standard output. The first two come before the third; each may be missing.
constexpr char kSourceReport[] = "src value:%s\n";
constexpr char kCipherReport[] = "lpOutPassword=%s, %d\n";
constexpr char kRecordReport[] = "Translate dst: %s %s %s value:%s bThisKeyEncrypt:%d\n";
constexpr char kLockReport[] = "bEncrypt=%d\n";
constexpr char kNoTableReport[] = "The file [%s] not exist !\n";
constexpr char kNoDestinationReport[] = "Can's load user's inifile!\n"; ///< ends the pass
constexpr char kNoSourceReport[] = "Can's load user's inifile [%s]!\n";

// The application log
constexpr char kNoRecordReport[] = "No config translate record!\n";
constexpr char kNoUserIniReport[] = "Can's load user's inifile!\n";
constexpr char kNoFactoryIniReport[] = "Can's load factory user's inifile!\n";

// Traces
constexpr char kNoEntryListReport[] = "Fail to get encrypt config !!";
constexpr char kNoEntryFileReport[] = "Fail to load file [%s] !!";
constexpr char kEncipheredReport[] = "Encrypt:(%s)->(%s)";
constexpr char kDecipheredReport[] = "Decrypt:(%s)->(%s)";
constexpr char kNoDialFileReport[] = "The file [%s] can't be loaded !"; ///< dial plan and dial-now rules
constexpr char kNoDoorPhonesReport[] = "Can't load the DoorPhone file [%s]!";
constexpr char kNoDSSKeysReport[] = "Can't load the dsskey file [%s]!";
constexpr char kNoContactsReport[] = "Fail to load file [%s]. Error Desc [%s]";
constexpr char kEmptyContactListReport[] = "Contact list is empty !!";
constexpr char kNoRemoteBooksReport[] = "Fail to load remote phonebook !!";
