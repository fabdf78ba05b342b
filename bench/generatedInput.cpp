// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "generatedInput.h"

namespace
{

void AddSection(IniInput& input, std::size_t number, const std::string& lineEnd)
{
    constexpr int kKeysPerSection = 12;
    const std::string section = "Section" + std::to_string(number);
    input.text += "[" + section + "]" + lineEnd;
    for (int i = 0; i < kKeysPerSection; ++i) {
        const std::string key = (i % 2 == 0 ? "nTimeout" : "strDisplayName") + std::to_string(i);
        const std::string value = i % 2 == 0 ? std::to_string(60 * i) : "Desk " + std::to_string(number * 100);
        input.text += key + "=" + value + lineEnd;
        input.keys.push_back({section, key});
    }
    input.text += lineEnd;
}

std::string Contact(int number)
{
    const std::string text = std::to_string(number);
    return "    <contact sLocalRename=\"Desk " + text + "\" sOfficeNumber=\"20" + text + "\" sMobilNumber=\"+4477009" +
           text + "\" sPrivateNumber=\"\" sImagePath=\"/rundata/photo/desk" + text + ".png\" />\n";
}

} // namespace

IniInput MakeIni(std::size_t size, const std::string& lineEnd)
{
    IniInput input;
    for (std::size_t number = 0; input.text.size() < size; ++number)
        AddSection(input, number, lineEnd);
    return input;
}

std::string MakeContacts(int count)
{
    constexpr int kContactsPerGroup = 50;
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<contactData>\n";
    for (int number = 0; number < count; ++number) {
        if (number % kContactsPerGroup == 0)
            text += "  <group sGroupName=\"Floor " + std::to_string(number / kContactsPerGroup) + "\">\n";
        text += Contact(number);
        if (number % kContactsPerGroup == kContactsPerGroup - 1 || number == count - 1)
            text += "  </group>\n";
    }
    return text + "</contactData>\n";
}
