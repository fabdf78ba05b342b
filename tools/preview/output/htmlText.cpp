// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "htmlText.h"

#include <algorithm>

#include "htmlStyle.h"

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

std::string Breakable(const std::string& text)
{
    std::string html;
    for (std::size_t begin = 0, end = 0; begin < text.size(); begin = end) {
        end = std::min(text.find_first_of("/ ", begin), text.size() - 1) + 1;
        const std::string word = text.substr(begin, end - begin);
        const bool hasHyphen = word.find('-') != std::string::npos;
        html += (hasHyphen ? Element("span", "whole", word) : EscapeHtml(word)) + (word.back() == '/' ? "<wbr>" : "");
    }
    return html;
}

std::string HtmlDocument(const std::string& title, const std::string& body)
{
    return "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
           EscapeHtml(title) + "</title>\n<style>" + kPageStyle + "</style></head>\n<body>\n" + body +
           "</body></html>\n";
}
