// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "xmlText.h"

std::string Element(const std::string& name, const std::string& attributes, const std::string& content)
{
    const std::string start = attributes.empty() ? name : name + " " + attributes;
    return "<" + start + ">" + content + "</" + name + ">\n";
}

std::string Repeat(const std::string& text, int times)
{
    std::string repeated;
    for (int i = 0; i < times; ++i)
        repeated += text;
    return repeated;
}
