// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// The password pass knows the first four accounts alone.
constexpr int kConvertedAccounts = 4;

/// What a conversion of enciphered entries does; the numbers are the device's.
enum class CipherDirection {
    Encipher = 0,
    Decipher = 1,
};

/// Password pass: when the user's and the factory's lock settings differ, brings every entry that the device keeps
/// enciphered into the form that the factory's asks for.
///
/// Reads:     /config/user/user.ini and /phone/factory/user/user.ini ([PhoneSetting] EnLock), the list of enciphered
///            entries
/// Writes:    the entries' files and, for per-account entries, /config/user/voip/sipAccount0.cfg to sipAccount3.cfg;
///            each is saved after each entry. "EnLock" itself is never written.
/// Result:    1 when no conversion was needed or the conversion ran; 0 when one of the two files does not load or there
///            is no list
/// Failures:  an entry whose file does not load is skipped; a value that the cipher refuses stays
/// Twice:     converts again as long as the two settings differ: enciphered values are enciphered once more
int TransPasswordFile();

/// Converts every active entry of the list, in its order.
///
/// @return 0 when there is no list, else 1, whatever the single entries gave
int TransAllEncryptConfig(CipherDirection direction);

/// Converts one entry and saves its file, changed or not. Keeps the file loaded: consecutive entries of one file share
/// one load. A value is cut after 159 bytes, the most that the cipher takes.
///
/// @param file, section, key  null: nothing happens
/// @param defaultText         stands for an absent key
/// @return 1 when the file was saved, else 0
int TransEncryptValue(CipherDirection direction, const char* file, const char* section, const char* key,
                      const char* defaultText);
