// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include <minIni.h>

#include "flushFile.h"
#include "iniLibrary.h"
#include "scratchFolder.h"

std::string iniLibrary::Get(const char* path, const char* section, const char* key)
{
    char value[256];
    const int size = ini_gets(section, key, "", value, sizeof value, path);
    return std::string(value, static_cast<std::size_t>(size));
}

const bool iniLibrary::kCanWrite = true;

std::string iniLibrary::SetInMemory(const char* path, const char* section, const char* key, const char* value)
{
    Require(ini_puts(section, key, value, path) != 0, "save");
    return std::string();
}

void iniLibrary::SetInFile(const char* path, const char* section, const char* key, const char* value)
{
    Require(ini_puts(section, key, value, path) != 0, "save");
    FlushFile(path);
}
