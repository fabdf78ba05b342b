// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

class TiXmlDocument;
class TiXmlElement;

/// Loads an XML file as the library's own `LoadFile` does, but safely: the whole file is read first, and a document
/// that would exhaust the library's stack or time is refused (larger than 4 MiB, nested deeper than 200 elements, more
/// than 100,000 elements, more than 256 attributes in one element).
///
/// @param document   replaced; unusable after a failure
/// @param path       only regular files are read
/// @param errorDesc  receives a short description on failure; may be null
/// @return non-zero on success; 0 for a file that is missing, unreadable, empty, not well-formed or refused
[[nodiscard]] int LoadXmlFile(TiXmlDocument& document, const char* path, std::string* errorDesc = nullptr);

/// Saves the bytes that the library's own `SaveFile` writes, by `ReplaceFile`.
///
/// @param sourcePath  the file from which the document was made (`ReplaceDerivedFile`); null if there is none
/// @return 1 on success; 0 if there is no memory, the text is larger than 16 MiB, or the file cannot be replaced; it is
///         then unchanged
[[nodiscard]] int SaveXmlFile(const TiXmlDocument& document, const char* path, const char* sourcePath = nullptr);

/// @param element  not null
/// @return the attribute's text; the default if it is absent
std::string TinyXml_GetStringAttr(const TiXmlElement* element, const char* name, const char* defaultText);

/// @param element  not null
/// @return the attribute as `ParseInt32` reads it (0 if it is not a number); the default if it is absent
int TinyXml_GetIntAttr(const TiXmlElement* element, const char* name, int defaultValue);

/// Reads a boolean attribute with the library's `QueryBoolAttribute`, whose texts for true and false it accepts. An
/// empty attribute, on which that function aborts the process, is not a boolean here.
///
/// @param element  not null
/// @param flag     unchanged unless the result is true
/// @return true if the attribute is present and a boolean
bool QueryXmlFlag(const TiXmlElement* element, const char* name, bool& flag);
