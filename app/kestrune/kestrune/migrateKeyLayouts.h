// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

namespace pugi
{
class xml_document;
}

/// Key layout migration, a step of mode "2": gives key items the attributes that the firmware expects.
///
/// | key types          | attribute of "itemdata" | value                     |
/// | ------------------ | ----------------------- | ------------------------- |
/// | 14, 16, 55         | pickup_value            | that of "extension"       |
/// | 28                 | history_type            | that of "line", a number  |
/// | 22, 45, 46, 47, 54 | xml_phonebook           | that of "line", a number  |
///
/// Reads:     /config/data/linekey.xml, programkey.xml, expkey0.xml to expkey5.xml
/// Writes:    each of these files that has the right root element, whether changed or not
/// Result:    none
/// Failures:  a file that is missing, does not load or has another root is skipped
/// Twice:     a second run writes the same bytes
void MigrateKeyLayouts();

/// Migrates one file.
///
/// @param document  working storage, which is reused for all files
/// @param rootName  name of the element that contains the file's items
/// @return true if the file was saved; otherwise it is unchanged
[[nodiscard]] bool MigrateKeyLayout(pugi::xml_document& document, const char* path, const char* rootName);
