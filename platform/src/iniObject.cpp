// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "iniObject.h"

std::string iniKey::GetValue(const phraseConstTextA& /*defaultText*/) const
{
    return value_;
}

void iniKey::SetValue(const phraseConstTextA& text)
{
    if (text.view().find('\n') != std::string_view::npos)
        return;
    value_ = text.view();
}
