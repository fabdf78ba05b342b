// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>

class TiXmlDocument;
class TiXmlElement;

/// Translation-table pass: copies settings between configuration files as listed in the firmware's table, record by
/// record, each value in the form (enciphered or plain) that the device's password lock requires.
///
/// Reads:     /phone/resource/kestrune.xml, /config/user/user.ini ([PhoneSetting] EnLock), the records' source files
/// Writes:    the records' destination files, each saved before the next record is processed
/// Result:    1 if every record was processed; 0 if the table is missing, does not load or has no records, or a
///            destination file does not load
/// Failures:  a missing source gives an empty value, which is written; a destination that does not load ends the pass
///            at that record; a destination that cannot be set or saved is skipped
/// Prints:    its progress, including values in clear text, on standard output
/// Twice:     a second run changes nothing unless a record changes the source of an earlier one
int TranslateConfigTable();

/// @param table  loaded
/// @return the first record; its sibling elements are the others. Null if there is none.
const TiXmlElement* FirstTableRecord(const TiXmlDocument& table);

/// Gets the destination of a record. An absent attribute defaults to that of the source; if that is absent too, the
/// output is not changed.
///
/// @param bThisKeyEncrypt  receives `dstEncrypt`, or `srcEncrypt` if that is absent or not a boolean
void GetDstInfo(const TiXmlElement& record, std::string& file, std::string& section, std::string& key,
                bool& bThisKeyEncrypt);

/// @return the record's value in the required form; empty, without reading anything, if a source attribute is absent
std::string GetSrcValue(const TiXmlElement& record, bool wantEnciphered);

/// @return the key's text; the default if the key is absent; empty, after a line on standard output, if the file does
///         not load
std::string ReadIniText(const char* file, const char* section, const char* key, const char* defaultText);
