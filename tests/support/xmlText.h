// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

/// One XML element of old data files, for the input of a test.
///
/// @param attributes  as in the file, such as `a="1" b="2"`
/// @return "<name attributes>content</name>" and a line feed
std::string Element(const std::string& name, const std::string& attributes, const std::string& content = "");

/// @return the text repeated `times` times
std::string Repeat(const std::string& text, int times);
