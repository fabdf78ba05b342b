// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// A configuration file with arbitrary bytes, and a key set in it. Input: one line each for section, key and value, then
// the file.

#include <string>
#include <vector>

#include "fuzzInput.h"
#include "iniFile.h"
#include "scratchFolder.h"

namespace
{

struct Key {
    std::size_t section; // its index in the file
    std::string value;
};

std::vector<Key> Walk(iniDocument& document)
{
    std::vector<Key> keys;
    std::size_t place = 0;
    pointer_chain_pNext* sections = document.objects();
    for (auto* node = sections->get_pNext(); node != sections; node = node->get_pNext(), ++place) {
        pointer_chain_pNext* head = static_cast<iniSection*>(node)->objects();
        for (auto* key = head->get_pNext(); key != head; key = key->get_pNext())
            keys.push_back({place, static_cast<iniKey*>(key)->GetValue("")});
    }
    return keys;
}

/// The number of keys that differ: at most one, the key that was set.
int CountDifferences(const std::vector<Key>& before, const std::vector<Key>& after)
{
    std::size_t i = 0;
    int different = 0;
    for (const Key& key : after) {
        const bool isSame = i < before.size() && before[i].section == key.section && before[i].value == key.value;
        const bool isChanged = before.size() == after.size();
        if (!isSame)
            ++different;
        if (isSame || isChanged)
            ++i;
    }
    return different;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string text = InputText(data, size);
    const std::string section = TakeLine(text);
    const std::string key = TakeLine(text);
    const std::string value = TakeLine(text);
    const std::string path = FuzzFile("file.ini");
    WriteBytes(path, text);

    iniFile file;
    Require(file.LoadFromFile(path.c_str()) != 0);
    const std::vector<Key> before = Walk(file);
    Require(file.SaveToFile(path.c_str()) != 0);
    Require(ReadBytes(path) == text);

    if (file.SetTextValue(section, key, value) == 0) {
        Require(file.SaveToFile(path.c_str()) != 0);
        Require(ReadBytes(path) == text);
        return 0;
    }
    const std::size_t blanks = value.find_first_not_of(" \t");
    const std::string expected = blanks == std::string::npos ? "" : value.substr(blanks);
    Require(file.GetTextValue(section, key, "?") == expected);
    // A carriage return that ends the file becomes part of the line end that a new line needs.
    if (text.empty() || text.back() != '\r')
        Require(CountDifferences(before, Walk(file)) <= 1);
    Require(file.SaveToFile(path.c_str()) != 0);
    const std::string once = ReadBytes(path);

    iniFile again;
    Require(again.LoadFromFile(path.c_str()) != 0);
    Require(again.GetTextValue(section, key, "?") == expected);
    Require(again.SetTextValue(section, key, expected) != 0);
    Require(again.SaveToFile(path.c_str()) != 0);
    return 0;
}
