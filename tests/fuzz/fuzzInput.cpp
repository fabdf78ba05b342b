// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fuzzInput.h"

#include "scratchFolder.h"

std::string TakeLine(std::string& text)
{
    const std::size_t feed = text.find('\n');
    const std::string line = text.substr(0, feed);
    text.erase(0, feed == std::string::npos ? feed : feed + 1);
    return line;
}

std::string FuzzFile(const std::string& name)
{
    static const ScratchFolder folder; // for all inputs: creating one for each would take longer than the input
    return folder.Path(name);
}
