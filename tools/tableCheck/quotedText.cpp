// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "quotedText.h"

std::string EscapedText(std::string_view text)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string escaped;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '\\')
            escaped += "\\\\";
        else if (byte >= 0x20 && byte < 0x7f)
            escaped += character;
        else
            escaped.append({'\\', 'x', kDigits[byte / 16], kDigits[byte % 16]});
    }
    return escaped;
}

std::string QuotedText(std::string_view text)
{
    return '"' + EscapedText(text) + '"';
}
