// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "htmlText.h"

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

std::string HtmlDocument(const std::string& title, const std::string& body)
{
    return "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
           "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
           EscapeHtml(title) + "</title>\n<style>" + kPageStyle + "</style></head>\n<body>\n" + body +
           "</body></html>\n";
}
