// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <string>
#include <string_view>

/// Read-only text argument of the document and key operations. It refers to the caller's characters and must not
/// outlive the call.
class phraseConstTextA
{
public:
    /// @param text  zero-terminated; null counts as the empty text
    phraseConstTextA(const char* text) : text_(text == nullptr ? std::string_view() : std::string_view(text)) {}
    phraseConstTextA(const std::string& text) : text_(text) {}

    std::string_view view() const { return text_; }

private:
    std::string_view text_;
};
