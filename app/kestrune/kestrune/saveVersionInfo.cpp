// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "saveVersionInfo.h"

#include "phoneFacts.h"
#include "registry.h"

void SaveVersionInfo()
{
    // The sources are never flushed, so the live configuration does not change.
    _HREGISTRY_* features = registryOpen(kUserIni, "Features");
    _HREGISTRY_* savedFeatures = registryOpen(kHandOverFile, "Features");
    // "BLfNotifyType" is the device's own spelling.
    for (const char* key : {"BLFLedOffIdle", "BLfNotifyType", "ClosePowerLight", "PowerLedIdle&Talk", "PowerLedMail"})
        CopyRegistryText(features, savedFeatures, key);
    registryFlush(savedFeatures);

    _HREGISTRY_* syslog = registryOpen(kSystemIni, "Syslog");
    _HREGISTRY_* savedSyslog = registryOpen(kHandOverFile, "Syslog");
    for (const char* key : {"eLogType", "strServerName"})
        CopyRegistryText(syslog, savedSyslog, key);
    registryFlush(savedSyslog);
}

void CopyRegistryText(_HREGISTRY_* source, _HREGISTRY_* target, const char* key)
{
    if (source == nullptr || target == nullptr || key == nullptr)
        return;
    registrySetString(target, key, ETL_SubClass::registryGetString(source, key, ""));
}
