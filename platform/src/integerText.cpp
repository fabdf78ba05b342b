// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "integerText.h"

#include <cstdlib>
#include <limits>

std::int32_t ClampToInt32(std::int64_t value)
{
    using Limits = std::numeric_limits<std::int32_t>;
    if (value < Limits::min())
        return Limits::min();
    if (value > Limits::max())
        return Limits::max();
    return static_cast<std::int32_t>(value);
}

std::int32_t ParseInt32(const char* text)
{
    return ClampToInt32(std::strtoll(text, nullptr, 10));
}
