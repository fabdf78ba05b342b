// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "items/fileFormats.h"
#include "phoneImage/snapshot.h"
#include "secretPlaces.h"
#include "secretSearch.h"
#include "secretText.h"
#include "secretValues.h"
#include "steps/stepsClient.h"

enum class Secrecy { Hidden, Revealed };

/// The secrets of one phone: where they are, what they are, and in which form. `Learn` comes first.
///
/// A value is a secret when its place is secret, when its names say so, when the phone's own cipher deciphers it, or when
/// it is a private key. The place of a value that deciphers is secret. A secret is hidden at its place. Elsewhere a
/// value that equals or contains it is hidden as well, unless the secret has fewer than six bytes or is a default of the
/// entry list: those are ordinary words. Reports hide them too.
class Secrets
{
public:
    /// @param lists  kept by reference
    Secrets(const PhoneLists& lists, Secrecy secrecy);

    /// Learns every secret of a phone at the given times. Throws `ToolError` when the cipher cannot be asked.
    void Learn(const std::vector<const Snapshot*>& phones, const FileFormats& formats, const StepsClient& steps);

    bool IsSecret(const Item& item) const { return places_.IsSecret(item); }
    bool IsSecret(const TableRecord& record) const { return places_.IsSecret(record); }

    /// The forms of all secrets.
    const SecretValues& Values() const { return values_; }

    /// Hides a value at a secret place.
    std::string Mask(const std::string& value) const;

    /// Hides the secrets in a value at another place.
    std::string Hide(const std::string& value) const;

    /// Hides the secrets in a value that a report repeats, the short ones too.
    std::string HideInReport(const std::string& text) const;

    /// Hides the secrets in a section, key, path or element. Words that the lists and the program's own paths contain
    /// stay: the user did not choose them.
    std::string HideInName(const std::string& name) const;

    /// Hides the secrets of a file that is shown line by line. Equal secrets get equal numbers, so that a changed one is
    /// seen to be changed.
    std::string HideInFile(FileFormat format, const std::string& content);

private:
    struct File {
        FileFormat format;
        bool isKey;
        const std::string& content;
    };
    /// Values that may be enciphered, with their places.
    using Candidates = std::map<std::string, std::set<SecretPlaces::Place>>;

    static std::vector<File> DistinctFiles(const std::vector<const Snapshot*>& phones, const FileFormats& formats);
    static void AddCandidates(const File& file, const std::vector<Item>& items, Candidates& candidates);

    void LearnFile(const File& file, const std::vector<Item>& items);
    void LearnSpans(std::string_view text, const std::vector<SecretSpan>& spans);
    void Decipher(const StepsClient& steps, const Candidates& candidates);
    void FillSearches(const std::string& firmwareNames);
    std::string NumberedMask(const std::string& value);

    const PhoneLists& lists_;
    SecretPlaces places_;
    Secrecy secrecy_;
    std::set<std::string> defaults_; ///< of the entry list
    SecretValues values_;
    SecretSearch elsewhere_;
    SecretSearch inReports_;
    SecretSearch inNames_;
    std::map<std::string, int> numbers_;
};
