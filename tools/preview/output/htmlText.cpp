// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "htmlText.h"

std::string EscapeHtml(std::string_view text)
{
    std::string escaped;
    for (const char character : text) {
        switch (character) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\'':
            escaped += "&#39;";
            break;
        default:
            escaped += character;
        }
    }
    return escaped;
}

std::string Element(const char* name, const char* cssClass, std::string_view text)
{
    return std::string("<") + name + " class=\"" + cssClass + "\">" + EscapeHtml(text) + "</" + name + ">";
}
