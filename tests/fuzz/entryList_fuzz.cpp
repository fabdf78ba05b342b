// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// A list of enciphered entries with arbitrary bytes.

#include <list>
#include <string>

#include "configMapper.h"
#include "fuzzInput.h"
#include "scratchFolder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = FuzzFile("entries.xml");
    WriteBytes(path, InputText(data, size));

    CConfigMapper mapper(path.c_str());
    std::list<CIniConfigInfo*> entries;
    const int result = mapper.GetAllEncryptConfig(entries);
    Require(result != 0 || entries.empty());
    for (const CIniConfigInfo* entry : entries)
        Require(entry != nullptr);
    return 0;
}
