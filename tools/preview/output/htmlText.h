// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

/// @return the text as it is written between tags and in quoted attributes
std::string EscapeHtml(std::string_view text);

/// The same for a path or name in a column: lines break after a slash and at a blank, but not at the hyphens of a name.
std::string Breakable(const std::string& text);

/// @return "<NAME class="CLASS">escaped text</NAME>"
std::string Element(const char* name, const char* cssClass, std::string_view text);

/// @param body  HTML
/// @return a whole page without outside references, for screens of any width and for paper
std::string HtmlDocument(const std::string& title, const std::string& body);
