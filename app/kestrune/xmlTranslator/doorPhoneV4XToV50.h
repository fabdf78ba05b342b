// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <list>
#include <string>

/// One door phone. The three switches are new and on.
struct DoorPhoneRecord {
    std::string idName;
    std::int32_t deviceModel = 0; ///< as `GetDoorPhoneModelIndex` gives it
    std::string displayName;
    std::string phoneNumber;
    std::string unlockPin;
    bool sendAudio = true;
    bool sendVideo = true;
    bool fullScreen = true;
};

/// Door phones: each entry's child elements become attributes, and its model a number. Old and new file are the same on
/// the device; the old one is read and released before the new one is written.
///
/// Reads:     `oldPath`
/// Writes:    `newPath`; a list without entries gives a file without entries
/// Result:    1 when it was saved, else 0; 0 when a path is null
/// Failures:  no or unreadable entries: nothing is written
/// Twice:     not repeatable in place: the new form, read as the old one, gives entries with empty texts and model 0
int DoorPhoneV4XToV50(const char* oldPath, const char* newPath);

/// @param doorPhones  emptied when the file exists, then filled in document order
/// @return 1 when the file was read; 0 when the path is null, or the file is missing, does not load or has another root
int GetV4XDoorPhoneData(const char* oldPath, std::list<DoorPhoneRecord>& doorPhones);

/// @param oldPath  the file whose owner a new one gets, and whose readers are the most that it may have; may be null
/// @return 1 when the file was saved; 0 when it was not or the path is null
int SetV50DoorPhoneData(const char* newPath, const std::list<DoorPhoneRecord>& doorPhones,
                        const char* oldPath = nullptr);

/// For other programs of the device; the reader above does the same look-up without it.
///
/// @param modelName  may be null
/// @return the model's number; 0, as for the first model, when the name is null or unknown
int GetDoorPhoneModelIndex(const char* modelName);
