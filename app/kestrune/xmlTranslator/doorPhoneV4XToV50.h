// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <list>
#include <string>

/// One door phone. The three switches are new and on.
struct DoorPhoneRecord {
    std::string idName;
    std::int32_t deviceModel = 0; ///< as `GetDoorPhoneModelIndex` returns it
    std::string displayName;
    std::string phoneNumber;
    std::string unlockPin;
    bool sendAudio = true;
    bool sendVideo = true;
    bool fullScreen = true;
};

/// Door phones: each entry's child elements become attributes, and its model becomes a number. On the device, old and
/// new file are the same; the old one is read and released before the new one is written.
///
/// Reads:     `oldPath`
/// Writes:    `newPath`; a list without entries gives a file without entries
/// Result:    1 if it was saved, else 0; 0 if a path is null
/// Failures:  if the entries are missing or unreadable, nothing is written
/// Twice:     not repeatable in place: the new form, read as the old form, gives entries with empty texts and model 0
int DoorPhoneV4XToV50(const char* oldPath, const char* newPath);

/// @param doorPhones  cleared if the file exists, then filled in document order
/// @return 1 if the file was read; 0 if the path is null, or the file is missing, does not load or has another root
int GetV4XDoorPhoneData(const char* oldPath, std::list<DoorPhoneRecord>& doorPhones);

/// @param oldPath  the source file: a new file gets its owner, and no readers that the source does not have; may be
///                 null
/// @return 1 if the file was saved; 0 if it was not or the path is null
int SetV50DoorPhoneData(const char* newPath, const std::list<DoorPhoneRecord>& doorPhones,
                        const char* oldPath = nullptr);

/// For other programs of the device; the reader above does the same look-up without it.
///
/// @param modelName  may be null
/// @return the model's number; 0, as for the first model, if the name is null or unknown
int GetDoorPhoneModelIndex(const char* modelName);
