// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include "runFacts.h"
#include "warningList.h"

/// Adds what happened to the form of secrets: values that are enciphered twice, secrets that are written plain, and those
/// that stay plain below /config although the phone wants them enciphered and a record has copied them to a place where they
/// are. An entry of the list that is not active says that a place is plain on purpose.
///
/// A changed or new value is a secret written plain when its place is secret, it is plain and not empty, and either
/// - it was enciphered before the run, at that place or at one that table records copy to it, or
/// - the phone wants secrets enciphered, and table records copy it there from a listed place or from the destination of a
///   record whose encrypt flag is true.
///
/// What the phone wants is `EnLock` of the factory's user.ini when the password pass ran, else of the user's. An active
/// entry of the list is left out while the factory's is 0: to decipher it is what the firmware asks for. So is a value that
/// cannot be enciphered, of which another rule warns.
void AddSecretWarnings(const RunFacts& facts, WarningList& list);
