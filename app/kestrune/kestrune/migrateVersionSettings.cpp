// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "migrateVersionSettings.h"

#include <cstdint>
#include <string>

#include "fileHelper.h"
#include "integerText.h"
#include "migrateKeyLayouts.h"
#include "phoneFacts.h"
#include "profile.h"
#include "registry.h"

namespace
{

constexpr int kSecondsPerMinute = 60;
constexpr int kDefaultBacklightMinutes = 1;

// Account 16 is deliberately left out: it has no call centre.
constexpr int kLastCallCentreAccount = 15;

int ToInt(const std::string& text)
{
    return ParseInt32(text.c_str());
}

int MinutesToSeconds(int minutes)
{
    return ClampToInt32(std::int64_t{minutes} * kSecondsPerMinute);
}

void PutOutQueueStatusLights()
{
    for (int number = 0; number <= kLastCallCentreAccount; ++number) {
        const std::string path = AccountFilePath(number);
        if (ETL_MiscHelper::pathFileExist(path.c_str()) != 0)
            etlSetProfileInt(path.c_str(), "CallCenter", "bEnableQueueStatusLight", 0);
    }
}

void SwitchOffPowerLight(_HREGISTRY_* target)
{
    registrySetInt(target, "PowerLed_Common", 0);
    registrySetInt(target, "PowerLed_Ring", 1);
    registrySetInt(target, "PowerLed_Mail", 0);
    registrySetInt(target, "PowerLed_Mute", 0);
    registrySetInt(target, "PowerLed_HoldHeld", 0);
    registrySetInt(target, "PowerLed_TalkDial", 0);
    PutOutQueueStatusLights();
}

/// The light when idle and in talk: a saved 0 becomes the inverse of the saved power light, if present.
int IdleAndTalkLight(const std::string& idleAndTalk, const std::string& closePowerLight)
{
    const int light = ToInt(idleAndTalk);
    if (light != 0 || closePowerLight.empty())
        return light;
    return ToInt(closePowerLight) == 0 ? 1 : 0;
}

} // namespace

void MigrateVersionSettings()
{
    if (ETL_MiscHelper::pathFileExist(kHandOverFile) == 0)
        return;
    MigrateBLFLed();
    MigratePowerLed();
    BacklightMinutesToSeconds();
    MigrateKeyLayouts();
    MigrateSyslog();
}

void MigrateBLFLed()
{
    _HREGISTRY_* target = registryOpen(kUserIni, "BLFLed");
    _HREGISTRY_* saved = registryOpen(kHandOverFile, "Features");

    const std::string offIdle = ETL_SubClass::registryGetString(saved, "BLFLedOffIdle", "");
    const std::string notifyType =
        ETL_SubClass::registryGetString(saved, "BLfNotifyType", ""); // the device's own spelling
    if (offIdle.empty() || notifyType.empty())
        return; // mode "1" saved no value: "BLFLedMode" is not changed

    registrySetInt(target, "BLFLedMode", ToInt(notifyType) == 1 ? 1 : ClampToInt32(std::int64_t{2} * ToInt(offIdle)));
    registryFlush(target);
}

void MigratePowerLed()
{
    _HREGISTRY_* target = registryOpen(kUserIni, "PowerLed");
    _HREGISTRY_* saved = registryOpen(kHandOverFile, "Features");

    bool isChanged = false;
    const std::string closePowerLight = ETL_SubClass::registryGetString(saved, "ClosePowerLight", "");
    const std::string mail = ETL_SubClass::registryGetString(saved, "PowerLedMail", "");
    if (!closePowerLight.empty() && ToInt(closePowerLight) != 0) {
        SwitchOffPowerLight(target);
        isChanged = true;
    } else if (!mail.empty()) {
        registrySetInt(target, "PowerLed_Mail", ToInt(mail));
        isChanged = true;
    }

    const std::string idleAndTalk = ETL_SubClass::registryGetString(saved, "PowerLedIdle&Talk", "");
    if (idleAndTalk.empty()) {
        if (isChanged)
            registryFlush(target);
        return;
    }
    const int light = IdleAndTalkLight(idleAndTalk, closePowerLight);
    registrySetInt(target, "PowerLed_Common", light);
    registrySetInt(target, "PowerLed_TalkDial", light);
    registryFlush(target);
}

void MigrateSyslog()
{
    _HREGISTRY_* target = registryOpen(kSystemIni, "Syslog");
    _HREGISTRY_* saved = registryOpen(kHandOverFile, "Syslog");

    const std::string logType = ETL_SubClass::registryGetString(saved, "eLogType", "");
    const std::string serverName = ETL_SubClass::registryGetString(saved, "strServerName", "");
    if (logType.empty() || serverName.empty())
        return;

    registrySetInt(target, "LogType", ClampToInt32(std::int64_t{ToInt(logType)} - 1));
    registrySetString(target, "SyslogServer", serverName);
    registryFlush(target);
}

void BacklightMinutesToSeconds()
{
    _HREGISTRY_* target = registryOpen(kUserIni, kBacklightSection);
    const int minutes = registryGetInt(target, kBacklightKey, kDefaultBacklightMinutes);
    registrySetInt(target, kBacklightKey, MinutesToSeconds(minutes));
    registryFlush(target);
}

void BacklightMinutesToSecondsIfSmall()
{
    const int minutes = etlGetRegistryInt(kUserIni, kBacklightSection, kBacklightKey, kDefaultBacklightMinutes);
    if (minutes <= kLongestBacklightMinutes)
        etlSetRegistryInt(kUserIni, kBacklightSection, kBacklightKey, MinutesToSeconds(minutes));
}
