// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "saveVersionInfo.h"

#include "phoneFacts.h"
#include "registry.h"

void SaveVersionInfo()
{
    // The sources are never flushed, so the live configuration does not change.
    _HREGISTRY_* features = registryOpen(kUserIni, kFeaturesSection);
    _HREGISTRY_* savedFeatures = registryOpen(kHandOverFile, kFeaturesSection);
    for (const char* key :
         {kOldBLFIdleKey, kOldBLFNotifyKey, kOldClosePowerLightKey, kOldPowerLedIdleTalkKey, kOldPowerLedMailKey})
        CopyRegistryText(features, savedFeatures, key);
    registryFlush(savedFeatures);

    _HREGISTRY_* syslog = registryOpen(kSystemIni, kSyslogSection);
    _HREGISTRY_* savedSyslog = registryOpen(kHandOverFile, kSyslogSection);
    for (const char* key : {kOldLogTypeKey, kOldLogServerKey})
        CopyRegistryText(syslog, savedSyslog, key);
    registryFlush(savedSyslog);
}

void CopyRegistryText(_HREGISTRY_* source, _HREGISTRY_* target, const char* key)
{
    if (source == nullptr || target == nullptr || key == nullptr)
        return;
    registrySetString(target, key, ETL_SubClass::registryGetString(source, key, ""));
}
