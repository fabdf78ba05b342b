// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "printable.h"

#include <cstdint>
#include <cstdio>

namespace
{

struct Character {
    std::uint32_t code;
    std::size_t size; ///< 0: no UTF-8
};

bool IsContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

Character Decode(std::string_view text)
{
    constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead < 0x80)
        return {lead, 1};
    const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < size)
        return {lead, 0};
    std::uint32_t code = lead & (0xFFu >> (size + 1));
    for (std::size_t i = 1; i < size; ++i) {
        if (!IsContinuation(text[i]))
            return {lead, 0};
        code = code << 6 | (static_cast<unsigned char>(text[i]) & 0x3Fu);
    }
    if (code < kLeast[size] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        return {lead, 0};
    return {code, size};
}

bool IsHarmful(std::uint32_t code)
{
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || // controls
           code == 0x61C || code == 0x200E || code == 0x200F || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069) || code == 0xFEFF || (code >= 0xFFF0 && code <= 0xFFFF && code != 0xFFFD);
}

std::string Escape(std::uint32_t code)
{
    if (code == '\n')
        return "\\n";
    if (code == '\r')
        return "\\r";
    if (code == '\t')
        return "\\t";
    char text[8];
    std::snprintf(text, sizeof text, code < 0x100 ? "\\x%02x" : "\\u%04x", code);
    return text;
}

} // namespace

std::string Printable(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        const Character character = Decode(bytes);
        const std::size_t size = character.size == 0 ? 1 : character.size;
        if (character.size == 0 || IsHarmful(character.code))
            text += Escape(character.code);
        else
            text.append(bytes.substr(0, size));
        bytes.remove_prefix(size);
    }
    return text;
}
