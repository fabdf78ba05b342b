// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "iniObject.h"
#include "phraseConstTextA.h"

/// The text of one configuration file and what can be read from and changed in it.
///
/// The text is kept byte for byte; a change touches the bytes of its value alone (docs/configuration-files.md has the
/// rules of the format). Names are compared byte for byte. Where a section or key stands more than once, an operation
/// goes to the first key of that name in the first section of that name that has it.
class iniDocument
{
public:
    iniDocument() = default;
    iniDocument(const iniDocument&) = delete;
    iniDocument& operator=(const iniDocument&) = delete;

    /// @return the value; the default when the section or the key is absent
    std::string GetTextValue(const phraseConstTextA& section, const phraseConstTextA& key,
                             const phraseConstTextA& defaultText) const;

    /// @return the value as `ParseInt32` reads it (0 when it is no number); the default when the section or the key is
    ///         absent
    int GetIntValue(const phraseConstTextA& section, const phraseConstTextA& key, int defaultValue) const;

    /// Sets a key, making the section and the key when they are absent. Objects of the document's chain die with it.
    ///
    /// @return non-zero on success. 0, and nothing is changed, for what a file cannot hold: an empty name; a section
    ///         name with "]", CR, LF or NUL; a key name with "=", CR, LF, NUL or blanks at its ends, or that starts
    ///         with "[", ";" or "#"; a value with CR, LF or NUL
    int SetTextValue(const phraseConstTextA& section, const phraseConstTextA& key, const phraseConstTextA& text);

    /// @return head of the chain of the document's sections, in file order; see `iniSection::objects` for their keys.
    ///         The chain is the document's and lives until the next load or `SetTextValue`.
    pointer_chain_pNext* objects();

protected:
    ~iniDocument() = default;

    /// The whole text, with the changes made through keys in it.
    const std::string& Text() const;
    void Assign(std::string&& text);

private:
    void ApplyKeyChanges() const;
    void DropObjects() const;

    // Keys hold their changes until somebody needs the text: one pass over the document then brings all of them in.
    mutable std::string text_;
    mutable pointer_chain_pNext head_;
    mutable std::vector<std::unique_ptr<iniSection>> sections_;
    mutable bool hasObjects_ = false;
};

/// In-memory image of one configuration file: loaded, changed and saved as a whole. Going out of scope saves nothing.
class iniFile : public iniDocument
{
public:
    /// An empty document.
    ///
    /// @param path  what `SaveToFile` without a path writes as long as nothing was loaded; may be null
    explicit iniFile(const char* path = nullptr);
    ~iniFile() = default;

    /// Replaces what the document holds by the file's content.
    ///
    /// @return non-zero on success; 0 for a null or empty path and a file that is missing, unreadable or not a regular
    ///         file. The document is empty then. After a file that is there but could not be read nothing is saved
    ///         before the next load: an empty document must not take the place of a configuration that merely could not
    ///         be read.
    int LoadFromFile(const char* path);

    /// Writes the whole document by `ReplaceFile`.
    ///
    /// @param path  destination; null for the file last loaded, and a failure when that load failed
    /// @return non-zero on success; on 0 the destination is as it was
    int SaveToFile(const char* path);

private:
    std::string path_;
    bool isUnreadable_ = false;
};
