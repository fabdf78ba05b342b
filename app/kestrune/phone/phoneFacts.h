// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>

/// What passes, tools and benchmarks have to know about the phone: its files, the settings that steer a run, and its limits.

// Configuration files
constexpr char kUserIni[] = "/config/user/user.ini";
constexpr char kFactoryUserIni[] = "/phone/factory/user/user.ini";
constexpr char kSystemIni[] = "/config/system/system.ini";
constexpr char kVersionIni[] = "/config/version.ini";
constexpr char kTableFile[] = "/phone/resource/kestrune.xml";

/// Mode "1" passes settings to mode "2" in this file.
constexpr char kHandOverFile[] = "/tmp/VersionInfo.cfg";
/// A copy of it while an upgrade is pending, because a power cut empties "/tmp".
constexpr char kHandOverCopy[] = "/config/kestrune-handover";

/// The account files are numbered from 0 to this.
constexpr int kLastAccount = 16;
/// The password pass handles only the first four accounts.
constexpr int kConvertedAccounts = 4;
constexpr char kDirectIPFile[] = "/config/user/voip/directip.cfg";
constexpr char kFactoryAccount[] = "/phone/factory/user/voip/sipAccount16.cfg";

/// What all account files begin with.
constexpr char kAccountFilePrefix[] = "/config/user/voip/sipAccount";

/// What tools call all of them.
constexpr char kAllAccounts[] = "/config/user/voip/sipAccount*.cfg";

/// @return "/config/user/voip/sipAccount<number>.cfg"
std::string AccountFilePath(int number);

constexpr char kFactoryCertificates[] = "/phone/factory/certs/phoneca/";
constexpr char kUserCertificates[] = "/config/certs/phoneca/";

// Settings that steer a run
constexpr char kLockSection[] = "PhoneSetting"; ///< of user.ini and of the factory's
constexpr char kLockKey[] = "EnLock";
constexpr char kSyncSection[] = "SyncConfig"; ///< of version.ini
constexpr char kEnableKey[] = "bEnableFromOld";
constexpr char kBacklightSection[] = "Backlight"; ///< of user.ini
constexpr char kBacklightKey[] = "nBacklightTime";
/// A backlight time up to this is in minutes, a greater one in seconds.
constexpr int kLongestBacklightMinutes = 59;

// Other keys that passes read or write by themselves
constexpr char kVersionSyncSection[] = "Sync"; ///< of user.ini and of the factory's
constexpr char kVersionSyncKey[] = "SyncCfgByVersion";
constexpr char kRingbackSection[] = "Feature"; ///< of user.ini; "Features" is a different section
constexpr char kRingbackKey[] = "RingbackTimeout";
constexpr char kFeaturesSection[] = "Features"; ///< of user.ini and of the hand-over file, with old settings
constexpr char kOldBLFIdleKey[] = "BLFLedOffIdle";
constexpr char kOldBLFNotifyKey[] = "BLfNotifyType"; // the device's own spelling
constexpr char kOldClosePowerLightKey[] = "ClosePowerLight";
constexpr char kOldPowerLedIdleTalkKey[] = "PowerLedIdle&Talk";
constexpr char kOldPowerLedMailKey[] = "PowerLedMail";
constexpr char kBLFLedSection[] = "BLFLed"; ///< of user.ini
constexpr char kBLFLedModeKey[] = "BLFLedMode";
constexpr char kPowerLedSection[] = "PowerLed"; ///< of user.ini
constexpr char kPowerLedCommonKey[] = "PowerLed_Common";
constexpr char kPowerLedRingKey[] = "PowerLed_Ring";
constexpr char kPowerLedMailKey[] = "PowerLed_Mail";
constexpr char kPowerLedMuteKey[] = "PowerLed_Mute";
constexpr char kPowerLedHoldKey[] = "PowerLed_HoldHeld";
constexpr char kPowerLedTalkKey[] = "PowerLed_TalkDial";
constexpr char kSyslogSection[] = "Syslog"; ///< of system.ini and of the hand-over file
constexpr char kOldLogTypeKey[] = "eLogType";
constexpr char kOldLogServerKey[] = "strServerName";
constexpr char kLogTypeKey[] = "LogType";
constexpr char kLogServerKey[] = "SyslogServer";
constexpr char kAccountSection[] = "account"; ///< of account files
constexpr char kDirectIPKey[] = "directip";
constexpr char kSharedLineKey[] = "SCALineKeyNumber";
constexpr char kCancelTimerKey[] = "CancelTimer";
constexpr char kCallCentreSection[] = "CallCenter"; ///< of account files
constexpr char kQueueLightKey[] = "bEnableQueueStatusLight";

struct PassKey {
    const char* file;
    const char* section;
    const char* key;
};

/// What passes read or write by themselves below "/config", whatever the firmware's lists name. For tools.
constexpr PassKey kPassKeys[] = {
    {kUserIni, kLockSection, kLockKey},
    {kUserIni, kVersionSyncSection, kVersionSyncKey},
    {kUserIni, kRingbackSection, kRingbackKey},
    {kUserIni, kBacklightSection, kBacklightKey},
    {kUserIni, kFeaturesSection, kOldBLFIdleKey},
    {kUserIni, kFeaturesSection, kOldBLFNotifyKey},
    {kUserIni, kFeaturesSection, kOldClosePowerLightKey},
    {kUserIni, kFeaturesSection, kOldPowerLedIdleTalkKey},
    {kUserIni, kFeaturesSection, kOldPowerLedMailKey},
    {kUserIni, kBLFLedSection, kBLFLedModeKey},
    {kUserIni, kPowerLedSection, kPowerLedCommonKey},
    {kUserIni, kPowerLedSection, kPowerLedRingKey},
    {kUserIni, kPowerLedSection, kPowerLedMailKey},
    {kUserIni, kPowerLedSection, kPowerLedMuteKey},
    {kUserIni, kPowerLedSection, kPowerLedHoldKey},
    {kUserIni, kPowerLedSection, kPowerLedTalkKey},
    {kSystemIni, kSyslogSection, kOldLogTypeKey},
    {kSystemIni, kSyslogSection, kOldLogServerKey},
    {kSystemIni, kSyslogSection, kLogTypeKey},
    {kSystemIni, kSyslogSection, kLogServerKey},
    {kVersionIni, kSyncSection, kEnableKey},
    {kAllAccounts, kAccountSection, kDirectIPKey},
    {kAllAccounts, kAccountSection, kSharedLineKey},
    {kAllAccounts, kAccountSection, kCancelTimerKey},
    {kAllAccounts, kCallCentreSection, kQueueLightKey},
};

/// An XML file, and the name of the root element without which it is not processed.
struct XmlFile {
    const char* path;
    const char* root;
};

// Old XML data and the new files that the translators write. Some paths differ only in upper and lower case.
constexpr XmlFile kOldContacts = {"/config/data/contactData.xml", "contactData"};
constexpr XmlFile kOldDialPlan = {"/config/data/dialplan.xml", "DialRule"};
constexpr XmlFile kOldDialNow = {"/config/data/dialnow.xml", "DialNow"};
constexpr XmlFile kOldDSSKeys = {"/config/data/dsskey.xml", "DssKey"};
constexpr XmlFile kDoorPhones = {"/config/data/doorphonedata.xml", "DoorPhone"}; // rewritten in place
constexpr XmlFile kOldRemoteBooks = {"/config/data/remotebook.xml", "RemotePhoneBook"};
constexpr char kNewContactList[] = "/config/data/contact_list.xml";
constexpr char kNewContactGroups[] = "/config/data/contact_group_list.xml";
constexpr char kNewDialPlan[] = "/config/data/DialPlan.xml";
constexpr char kNewDialNow[] = "/config/data/DialNow.xml";
constexpr char kNewDSSKeys[] = "/config/data/memkey.xml";
constexpr char kNewRemoteBooks[] = "/config/data/remote_phonebook_list.xml";

/// More groups of the phone book than these are left out with their contacts; "All", of the translators, is not counted.
constexpr std::size_t kMostContactGroups = 50;
constexpr std::size_t kMostContacts = 1001;
/// Keys of type "N/A" count too.
constexpr int kMostDSSKeys = 18;

/// The key layouts of mode "2", in the order in which they are processed.
constexpr XmlFile kKeyLayouts[] = {
    {"/config/data/linekey.xml", "dsskey"}, {"/config/data/programkey.xml", "programkey"},
    {"/config/data/expkey0.xml", "dsskey"}, {"/config/data/expkey1.xml", "dsskey"},
    {"/config/data/expkey2.xml", "dsskey"}, {"/config/data/expkey3.xml", "dsskey"},
    {"/config/data/expkey4.xml", "dsskey"}, {"/config/data/expkey5.xml", "dsskey"},
};
