// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "phoneImage/snapshot.h"
#include "secretPlaces.h"
#include "secretSearch.h"

enum class Secrecy { Hidden, Revealed };

/// The secrets of one phone: where they are, what they are, and in which form. First `Learn` everything that the preview
/// will show, then `Decipher`; the rest is for what is shown.
class Secrets
{
public:
    Secrets(const PhoneLists& lists, Secrecy secrecy);

    /// Learns the value of every secret place, and private keys.
    void Learn(const Snapshot& snapshot);

    /// Asks the phone's own cipher which of the values are enciphered, and learns what they say.
    void Decipher(const StepsClient& helper);

    const SecretPlaces& Places() const { return places_; }

    /// @return how many times the value is enciphered
    int LayersOf(const std::string& value) const;

    /// What became of a secret, without telling it: "same, now enciphered", "changed" and the like.
    std::string Relation(const std::optional<std::string>& before, const std::optional<std::string>& after) const;

    /// Hides a value that stands in a secret place.
    std::string Mask(const std::string& value) const;

    /// Hides every known secret in a text that is shown for another reason.
    std::string Hide(const std::string& text) const;

    /// Hides the secrets of a file that is shown as it stands. Equal secrets get equal numbers, so that a changed one is
    /// seen to be changed.
    std::string HideInFile(FileFormat format, const std::string& content);

private:
    void LearnFile(const std::string& path, const std::string& content);
    void LearnValue(std::string_view value);
    std::string CoreOf(const std::string& value) const;
    std::string NumberedMask(const std::string& value);

    SecretPlaces places_;
    Secrecy secrecy_;
    std::set<std::shared_ptr<const std::string>> learnt_;
    std::map<std::string, std::vector<std::string>> values_; ///< with what each deciphers to in turn
    SecretSearch search_;
    std::map<std::string, int> numbers_;
};
