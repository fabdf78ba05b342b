// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// The direction of a conversion; the device defines the numbers.
enum class CipherDirection {
    Encipher = 0,
    Decipher = 1,
};

/// Password pass: if the user's and the factory's lock settings differ, converts every entry that the device keeps
/// enciphered to the form that the factory's setting requires.
///
/// Reads:     /config/user/user.ini and /phone/factory/user/user.ini ([PhoneSetting] EnLock), the list of enciphered
///            entries
/// Writes:    the entries' files and, for per-account entries, /config/user/voip/sipAccount0.cfg to sipAccount3.cfg;
///            each is saved after each entry. "EnLock" itself is never written.
/// Result:    1 if no conversion was needed or the conversion ran; 0 if one of the two user.ini files or the list does
///            not load
/// Failures:  an entry whose file does not load is skipped; a value that the cipher refuses is not changed
/// Twice:     converts again as long as the two settings differ: enciphered values are enciphered again
int TransPasswordFile();

/// Converts every active entry of the list, in order.
///
/// @return 0 if there is no list, else 1, whatever the results of the entries
int TransAllEncryptConfig(CipherDirection direction);

/// Converts one entry and saves its file, whether changed or not. Keeps the file loaded: consecutive entries of one
/// file share one load. Only the first 159 bytes of a value are converted, the most that the cipher accepts.
///
/// @param file, section, key  if null, nothing happens
/// @param defaultText         used as the value if the key is absent
/// @return 1 if the file was saved, else 0
int TransEncryptValue(CipherDirection direction, const char* file, const char* section, const char* key,
                      const char* defaultText);
