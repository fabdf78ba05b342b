// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "iniObject.h"
#include "phraseConstTextA.h"

/// The text of one configuration file, with operations that read and change its keys.
///
/// The text is kept byte for byte; a change affects only the bytes of its value (docs/configuration-files.md has the
/// rules of the format). Names are compared byte for byte. If a section or key occurs more than once, an operation uses
/// the first key of that name in the first section of that name that contains it.
class iniDocument
{
public:
    iniDocument() = default;
    iniDocument(const iniDocument&) = delete;
    iniDocument& operator=(const iniDocument&) = delete;

    /// @return the value; the default if the section or the key is absent
    std::string GetTextValue(const phraseConstTextA& section, const phraseConstTextA& key,
                             const phraseConstTextA& defaultText) const;

    /// @return the value as `ParseInt32` reads it (0 if it is not a number); the default if the section or the key is
    ///         absent
    int GetIntValue(const phraseConstTextA& section, const phraseConstTextA& key, int defaultValue) const;

    /// Sets a key; creates the section and the key if they are absent. Invalidates the objects of the document's chain.
    ///
    /// @return non-zero on success. 0, without a change, for text that a file cannot contain: an empty name; a section
    ///         name with "]", CR, LF or NUL; a key name with "=", CR, LF, NUL or leading or trailing blanks, or that
    ///         starts with "[", ";" or "#"; a value with CR, LF or NUL
    [[nodiscard]] int SetTextValue(const phraseConstTextA& section, const phraseConstTextA& key,
                                   const phraseConstTextA& text);

    /// @return head of the chain of the document's sections, in file order; see `iniSection::objects` for their keys.
    ///         The document owns the chain, which is valid until the next load or `SetTextValue`.
    pointer_chain_pNext* objects();

protected:
    ~iniDocument() = default;

    /// The whole text, including changes made through keys.
    const std::string& Text() const;
    void Assign(std::string&& text);

private:
    void ApplyKeyChanges() const;
    void DropObjects();

    // Keys keep their changes until the text is needed: one pass over the document then applies all of them.
    mutable std::string text_;
    pointer_chain_pNext head_;
    std::vector<std::unique_ptr<iniSection>> sections_;
    bool hasObjects_ = false;
};

/// In-memory image of one configuration file: loaded, changed and saved as a whole. Going out of scope saves nothing.
class iniFile : public iniDocument
{
public:
    /// An empty document.
    ///
    /// @param path  the destination of `SaveToFile` without a path until a file is loaded; may be null
    explicit iniFile(const char* path = nullptr);
    ~iniFile() = default;

    /// Replaces the content of the document with that of the file.
    ///
    /// @return non-zero on success; 0 for a null or empty path and a file that is missing, unreadable or not a regular
    ///         file. The document is then empty. If the file exists but could not be read, every save fails until the
    ///         next load: an empty document must not replace a configuration that could not be read.
    [[nodiscard]] int LoadFromFile(const char* path);

    /// Writes the whole document by `ReplaceFile`.
    ///
    /// @param path  destination; null for the file last loaded, which fails if that load failed
    /// @return non-zero on success; on 0 the destination is unchanged
    [[nodiscard]] int SaveToFile(const char* path);

private:
    std::string path_;
    bool isUnreadable_ = false;
};
