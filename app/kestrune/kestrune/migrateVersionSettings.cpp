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
            etlSetProfileInt(path.c_str(), kCallCentreSection, kQueueLightKey, 0);
    }
}

void SwitchOffPowerLight(_HREGISTRY_* target)
{
    registrySetInt(target, kPowerLedCommonKey, 0);
    registrySetInt(target, kPowerLedRingKey, 1);
    registrySetInt(target, kPowerLedMailKey, 0);
    registrySetInt(target, kPowerLedMuteKey, 0);
    registrySetInt(target, kPowerLedHoldKey, 0);
    registrySetInt(target, kPowerLedTalkKey, 0);
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
    _HREGISTRY_* target = registryOpen(kUserIni, kBLFLedSection);
    _HREGISTRY_* saved = registryOpen(kHandOverFile, kFeaturesSection);

    const std::string offIdle = ETL_SubClass::registryGetString(saved, kOldBLFIdleKey, "");
    const std::string notifyType = ETL_SubClass::registryGetString(saved, kOldBLFNotifyKey, "");
    if (offIdle.empty() || notifyType.empty())
        return; // mode "1" saved no value: "BLFLedMode" is not changed

    registrySetInt(target, kBLFLedModeKey, ToInt(notifyType) == 1 ? 1 : ClampToInt32(std::int64_t{2} * ToInt(offIdle)));
    registryFlush(target);
}

void MigratePowerLed()
{
    _HREGISTRY_* target = registryOpen(kUserIni, kPowerLedSection);
    _HREGISTRY_* saved = registryOpen(kHandOverFile, kFeaturesSection);

    bool isChanged = false;
    const std::string closePowerLight = ETL_SubClass::registryGetString(saved, kOldClosePowerLightKey, "");
    const std::string mail = ETL_SubClass::registryGetString(saved, kOldPowerLedMailKey, "");
    if (!closePowerLight.empty() && ToInt(closePowerLight) != 0) {
        SwitchOffPowerLight(target);
        isChanged = true;
    } else if (!mail.empty()) {
        registrySetInt(target, kPowerLedMailKey, ToInt(mail));
        isChanged = true;
    }

    const std::string idleAndTalk = ETL_SubClass::registryGetString(saved, kOldPowerLedIdleTalkKey, "");
    if (idleAndTalk.empty()) {
        if (isChanged)
            registryFlush(target);
        return;
    }
    const int light = IdleAndTalkLight(idleAndTalk, closePowerLight);
    registrySetInt(target, kPowerLedCommonKey, light);
    registrySetInt(target, kPowerLedTalkKey, light);
    registryFlush(target);
}

void MigrateSyslog()
{
    _HREGISTRY_* target = registryOpen(kSystemIni, kSyslogSection);
    _HREGISTRY_* saved = registryOpen(kHandOverFile, kSyslogSection);

    const std::string logType = ETL_SubClass::registryGetString(saved, kOldLogTypeKey, "");
    const std::string serverName = ETL_SubClass::registryGetString(saved, kOldLogServerKey, "");
    if (logType.empty() || serverName.empty())
        return;

    registrySetInt(target, kLogTypeKey, ClampToInt32(std::int64_t{ToInt(logType)} - 1));
    registrySetString(target, kLogServerKey, serverName);
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
