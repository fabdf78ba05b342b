// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "runFacts.h"

#include <algorithm>

#include "iniText.h"
#include "integerText.h"
#include "passwordCipher.h"
#include "phoneFacts.h"

bool HasMode(const RunFacts& facts, std::initializer_list<const char*> modes)
{
    return std::any_of(facts.modes.begin(), facts.modes.end(), [modes](const std::string& mode) {
        return std::find(modes.begin(), modes.end(), mode) != modes.end();
    });
}

std::string ReadValue(const Snapshot& phone, const std::string& file, const std::string& section,
                      const std::string& key)
{
    return std::string(FindIniValue(ContentOf(phone, file), section, key).value_or(std::string_view()));
}

bool IsLocked(const Snapshot& phone, const std::string& userIni)
{
    return ParseInt32(ReadValue(phone, userIni, kLockSection, kLockKey).c_str()) != 0;
}

bool CannotBeEnciphered(const std::string& value)
{
    return value.size() > kLongestPassword ||
           std::any_of(value.begin(), value.end(), [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; });
}

std::string PlaceOf(const FileChange& file, const Item& item)
{
    return file.path + (file.format == FileFormat::Ini ? " [" + *item.group + "] " : " " + *item.group + " ") +
           item.name;
}
