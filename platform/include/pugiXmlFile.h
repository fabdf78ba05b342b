// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

namespace pugi
{
class xml_document;
}

/// Loads an XML file as pugixml's own `load_file` does, but only regular files, and with the limits of `LoadXmlFile`.
///
/// @param document  replaced; empty after a failure
/// @param options   pugixml's parse options
/// @return non-zero on success; 0 for a file that is missing, unreadable, empty, not well-formed or beyond a limit
[[nodiscard]] int LoadPugiXmlFile(pugi::xml_document& document, const char* path, unsigned int options);

/// Saves the bytes that pugixml's own `save_file` writes, by `ReplaceFile`.
///
/// @param indent  text that is written before an element once for each level
/// @param flags   pugixml's format flags
/// @return 1 on success; 0 if the file cannot be replaced; it is then unchanged
[[nodiscard]] int SavePugiXmlFile(const pugi::xml_document& document, const char* path, const char* indent,
                                  unsigned int flags);
