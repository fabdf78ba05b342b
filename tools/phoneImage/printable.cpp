// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "printable.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <utf8.h>

namespace
{

struct Range {
    char32_t first;
    char32_t last;
};

/// Controls, line breaks, and what Unicode 15 calls "default ignorable": it shows nothing or turns the line's direction.
constexpr Range kNotSeen[] = {
    {0x0, 0x1F},      {0x7F, 0x9F},     {0xAD, 0xAD},       {0x34F, 0x34F},     {0x61C, 0x61C},
    {0x115F, 0x1160}, {0x17B4, 0x17B5}, {0x180B, 0x180F},   {0x200B, 0x200F},   {0x2028, 0x202E},
    {0x2060, 0x206F}, {0x3164, 0x3164}, {0xFE00, 0xFE0F},   {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0},
    {0xFFF0, 0xFFFC}, {0xFFFE, 0xFFFF}, {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF},
};

bool IsSeen(char32_t code)
{
    return std::none_of(std::begin(kNotSeen), std::end(kNotSeen),
                        [code](const Range& range) { return code >= range.first && code <= range.last; });
}

std::string Escape(char32_t code)
{
    if (code == '\n')
        return "\\n";
    if (code == '\r')
        return "\\r";
    if (code == '\t')
        return "\\t";
    char text[12];
    const auto number = static_cast<unsigned>(code);
    if (code < 0x100)
        std::snprintf(text, sizeof text, "\\x%02x", number);
    else if (code < 0x10000)
        std::snprintf(text, sizeof text, "\\u%04x", number);
    else
        std::snprintf(text, sizeof text, "\\U%08x", number);
    return text;
}

} // namespace

std::string Printable(std::string_view bytes, Backslashes backslashes)
{
    std::string text;
    text.reserve(bytes.size());
    for (;;) {
        const std::string_view valid = bytes.substr(0, utf8::find_invalid(bytes));
        for (auto at = valid.begin(); at != valid.end();) {
            const auto begin = at;
            const char32_t code = utf8::next(at, valid.end());
            if (code == '\\' && backslashes == Backslashes::Doubled)
                text += "\\\\";
            else if (IsSeen(code))
                text.append(begin, at);
            else
                text += Escape(code);
        }
        if (valid.size() == bytes.size())
            return text;
        text += Escape(static_cast<unsigned char>(bytes[valid.size()]));
        bytes.remove_prefix(valid.size() + 1);
    }
}
