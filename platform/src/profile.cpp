// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "profile.h"

#include <string>

#include "iniFile.h"

int etlGetProfileInt(const char* path, const char* section, const char* key, int defaultValue)
{
    iniFile file;
    return file.LoadFromFile(path) != 0 ? file.GetIntValue(section, key, defaultValue) : defaultValue;
}

void etlSetProfileInt(const char* path, const char* section, const char* key, int value)
{
    iniFile file;
    (void)file.LoadFromFile(path); // a missing file is created, and an unreadable one makes the save fail
    if (file.SetTextValue(section, key, std::to_string(value)) != 0)
        (void)file.SaveToFile(path); // the device's interface has no result for it
}

int etlGetRegistryInt(const char* path, const char* section, const char* key, int defaultValue)
{
    return etlGetProfileInt(path, section, key, defaultValue);
}

void etlSetRegistryInt(const char* path, const char* section, const char* key, int value)
{
    etlSetProfileInt(path, section, key, value);
}
