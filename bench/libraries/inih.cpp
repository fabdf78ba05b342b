// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include <INIReader.h>

#include "iniLibrary.h"
#include "scratchFolder.h"

std::string iniLibrary::Get(const char* path, const char* section, const char* key)
{
    const INIReader reader(path);
    Require(reader.ParseError() == 0, "load");
    return reader.Get(section, key, "");
}

const bool iniLibrary::kCanWrite = false;

std::string iniLibrary::SetInMemory(const char* /*path*/, const char* /*section*/, const char* /*key*/,
                                    const char* /*value*/)
{
    return std::string();
}

void iniLibrary::SetInFile(const char* /*path*/, const char* /*section*/, const char* /*key*/, const char* /*value*/) {}
