// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "phraseConstTextA.h"

/// Node of a circular chain. The head is a bare node; an iteration starts at `head.get_pNext()` and ends when it
/// reaches the head again.
class pointer_chain_pNext
{
public:
    pointer_chain_pNext() = default;
    pointer_chain_pNext(const pointer_chain_pNext&) = delete;
    pointer_chain_pNext& operator=(const pointer_chain_pNext&) = delete;

    /// @return the next node; the chain's head after the last one
    pointer_chain_pNext* get_pNext() const { return next_; }

    /// Inserts a node right after this one. The chain does not own it.
    void InsertNext(pointer_chain_pNext& node)
    {
        node.next_ = next_;
        next_ = &node;
    }

    /// Makes this node the head of an empty chain; the owner must release the nodes of the old chain.
    void Unlink() { next_ = this; }

private:
    pointer_chain_pNext* next_ = this;
};

/// One object of a loaded configuration file, in file order.
class iniObject : public pointer_chain_pNext
{
public:
    static constexpr int kKey = 2;
    static constexpr int kSection = 3;

    virtual ~iniObject() = default;

    /// @return kind code: `kSection` or `kKey`
    virtual int type() const = 0;
};

/// One key line of a section. Owned by the document; valid until the next load or `SetTextValue` of the document.
class iniKey : public iniObject
{
public:
    /// @param value  the value as stored
    /// @param begin  where the value's bytes begin in the document's text
    iniKey(std::string_view value, std::size_t begin) : value_(value), begin_(begin), size_(value.size()) {}

    int type() const override { return kKey; }

    /// @return the value as stored, which may be empty. The device's interface has the default; a key of a file always
    ///         has a value.
    std::string GetValue(const phraseConstTextA& defaultText) const;

    /// Replaces the value in the document; the next save of the document changes the file. A text with a line feed,
    /// which no line can contain, is silently refused.
    void SetValue(const phraseConstTextA& text);

private:
    friend class iniDocument;

    std::string value_;
    std::size_t begin_;
    std::size_t size_; ///< of the value in the document's text
};

/// One section: from its line to the next section line or the end of the file. The document owns it and its keys.
class iniSection : public iniObject
{
public:
    int type() const override { return kSection; }

    /// @return head of the chain of this section's keys, in file order
    pointer_chain_pNext* objects() { return &head_; }

private:
    friend class iniDocument;

    pointer_chain_pNext head_;
    std::vector<std::unique_ptr<iniKey>> keys_;
};
