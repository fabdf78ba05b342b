// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// One XML element of old data files, built up for a test's input.
///
/// @param attributes  as they stand in the file, such as `a="1" b="2"`
/// @return "<name attributes>content</name>" and a line feed
std::string Element(const std::string& name, const std::string& attributes, const std::string& content = "");

/// @return the text as often as told
std::string Repeat(const std::string& text, int times);
