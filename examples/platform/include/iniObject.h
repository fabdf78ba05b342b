// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <list>
#include <string>

#include "phraseConstTextA.h"

/// One line of a configuration file; its bytes are its parts, one after the other.
struct IniLine {
    enum class Kind { Section, Key, Other };

    Kind kind = Kind::Other;
    std::string name;  ///< of the section or the key; a copy of bytes of `lead`
    std::string lead;  ///< of a key line the text before the value, of any other line everything except its end
    std::string value; ///< of a key line
    std::string end;   ///< "\n", "\r\n" or nothing

    /// @return false, without a change, if no line can contain the text
    bool SetValue(std::string_view text);
};

/// Node of a circular chain, whose head is a bare node.
class pointer_chain_pNext
{
public:
    pointer_chain_pNext() = default;
    pointer_chain_pNext(const pointer_chain_pNext&) = delete;
    pointer_chain_pNext& operator=(const pointer_chain_pNext&) = delete;

    pointer_chain_pNext* get_pNext() const { return next_; }

    /// Inserts a node after this one, which is the last of the chain.
    void Append(pointer_chain_pNext& node)
    {
        node.next_ = next_;
        next_ = &node;
    }

    void Clear() { next_ = this; }

private:
    pointer_chain_pNext* next_ = this;
};

/// A section or a key of a loaded file. It refers to its line, which the document owns.
class iniObject : public pointer_chain_pNext
{
public:
    static constexpr int kKey = 2;
    static constexpr int kSection = 3;

    iniObject(int type, IniLine& line) : type_(type), line_(line) {}
    int type() const { return type_; }

protected:
    IniLine& Line() const { return line_; }

private:
    int type_;
    IniLine& line_;
};

class iniKey : public iniObject
{
public:
    explicit iniKey(IniLine& line) : iniObject(kKey, line) {}
    std::string GetValue(const phraseConstTextA& /*defaultText*/) const { return Line().value; }
    void SetValue(const phraseConstTextA& text) { (void)Line().SetValue(text.view()); } // if refused, the value stays
};

class iniSection : public iniObject
{
public:
    explicit iniSection(IniLine& line) : iniObject(kSection, line) {}
    pointer_chain_pNext* objects() { return &head_; }

    void AddKey(IniLine& line)
    {
        pointer_chain_pNext& last = keys_.empty() ? head_ : keys_.back();
        last.Append(keys_.emplace_back(line));
    }

private:
    pointer_chain_pNext head_;
    std::list<iniKey> keys_;
};
