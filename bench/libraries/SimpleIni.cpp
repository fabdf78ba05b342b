// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#define SI_CONVERT_ICU // as Debian builds the library
#include <SimpleIni.h>

#include "flushFile.h"
#include "iniLibrary.h"
#include "scratchFolder.h"

namespace
{

void Load(CSimpleIniA& ini, const char* path)
{
    ini.SetUnicode();
    Require(ini.LoadFile(path) >= 0, "load");
}

} // namespace

std::string iniLibrary::Get(const char* path, const char* section, const char* key)
{
    CSimpleIniA ini;
    Load(ini, path);
    return ini.GetValue(section, key, "");
}

const bool iniLibrary::kCanWrite = true;

std::string iniLibrary::SetInMemory(const char* path, const char* section, const char* key, const char* value)
{
    CSimpleIniA ini;
    Load(ini, path);
    std::string text;
    Require(ini.SetValue(section, key, value) >= 0 && ini.Save(text) >= 0, "save");
    return text;
}

void iniLibrary::SetInFile(const char* path, const char* section, const char* key, const char* value)
{
    CSimpleIniA ini;
    Load(ini, path);
    Require(ini.SetValue(section, key, value) >= 0 && ini.SaveFile(path) >= 0, "save");
    FlushFile(path);
}
