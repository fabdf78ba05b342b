// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

class TiXmlElement;
class TiXmlNode;

/// Makes a new element, the last child of its parent, which owns it.
///
/// @return the element; null when there is no memory for it
TiXmlElement* AppendElement(TiXmlNode& parent, const char* name);
