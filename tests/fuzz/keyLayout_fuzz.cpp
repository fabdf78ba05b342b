// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// A key layout file with arbitrary bytes.

#include <pugixml.hpp>
#include <string>

#include "fuzzInput.h"
#include "migrateKeyLayouts.h"
#include "scratchFolder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string path = FuzzFile("layout.xml");
    const std::string old = InputText(data, size);
    WriteBytes(path, old);

    pugi::xml_document document;
    if (!MigrateKeyLayout(document, path.c_str(), "dsskey")) {
        Require(ReadBytes(path) == old);
        return 0;
    }
    const std::string once = ReadBytes(path);
    if (MigrateKeyLayout(document, path.c_str(), "dsskey"))
        Require(ReadBytes(path) == once);
    return 0;
}
