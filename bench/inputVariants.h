// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstddef>
#include <string>

/// The configuration files of every INI benchmark.
struct InputVariant {
    std::string name;
    std::size_t size;
    std::string lineEnd;
};

inline const InputVariant kInputVariants[] = {
    {"4KiB/LF", 4096, "\n"},       {"4KiB/CRLF", 4096, "\r\n"}, {"64KiB/LF", 65536, "\n"},
    {"64KiB/CRLF", 65536, "\r\n"}, {"1MiB/LF", 1048576, "\n"},  {"1MiB/CRLF", 1048576, "\r\n"},
};
