// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

class TiXmlDocument;
class TiXmlElement;

/// Translation-table pass: copies single settings between configuration files as the firmware's table orders, record by
/// record, each value in the form (enciphered or plain) that the device's password lock asks for.
///
/// Reads:     /phone/resource/kestrune.xml, /config/user/user.ini ([PhoneSetting] EnLock), the records' source files
/// Writes:    the records' destination files, each saved before the next record is looked at
/// Result:    1 when every record was processed; 0 when the table is missing, does not load or has no records, or a
///            destination file does not load
/// Failures:  a missing source gives an empty value, which is written; a destination that does not load ends the pass
///            at that record; a destination that cannot be set or saved is passed over
/// Prints:    its progress, values in clear included, on standard output
/// Twice:     a second run changes nothing unless the table chains records in a circle
int TranslateConfigTable();

/// @param table  loaded
/// @return the first record; its sibling elements are the others. Null when there is none.
const TiXmlElement* FirstTableRecord(const TiXmlDocument& table);

/// Where a record's value goes. Attributes that are absent fall back on those of the source; without these too the
/// output stays as it was.
///
/// @param bThisKeyEncrypt  gets `dstEncrypt`, or `srcEncrypt` when that is absent or no boolean
void GetDstInfo(const TiXmlElement& record, std::string& file, std::string& section, std::string& key,
                bool& bThisKeyEncrypt);

/// @return the record's value in the wanted form; empty, without reading anything, when a source attribute is absent
std::string GetSrcValue(const TiXmlElement& record, bool wantEnciphered);

/// @return the key's text; the default when the key is absent; empty, after a line on standard output, when the file
///         does not load
std::string ReadIniText(const char* file, const char* section, const char* key, const char* defaultText);
