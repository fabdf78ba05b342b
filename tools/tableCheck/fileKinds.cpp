// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fileKinds.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace
{

constexpr std::string_view kForeignEndings[] = {".bin", ".bmp", ".cer", ".crt",  ".csr", ".db",  ".der", ".gif",
                                                ".gz",  ".jpg", ".js",  ".json", ".key", ".p12", ".pem", ".pfx",
                                                ".png", ".sh",  ".so",  ".tar",  ".wav", ".xml", ".zip"};

char LowerCase(char character)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
}

} // namespace

bool HasForeignEnding(std::string_view path)
{
    const std::size_t dot = path.rfind('.');
    if (dot == std::string_view::npos)
        return false;
    std::string ending(path.substr(dot));
    std::transform(ending.begin(), ending.end(), ending.begin(), LowerCase);
    return std::find(std::begin(kForeignEndings), std::end(kForeignEndings), ending) != std::end(kForeignEndings);
}

bool HasForeignContent(std::string_view bytes)
{
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (bytes.substr(0, bytes.find('\n')).find('\0') != std::string_view::npos)
        return true; // in a later line it may be the value of a key
    if (bytes.substr(0, kByteOrderMark.size()) == kByteOrderMark)
        bytes.remove_prefix(kByteOrderMark.size());
    bytes.remove_prefix(std::min(bytes.size(), bytes.find_first_not_of(" \t\r\n")));
    constexpr std::string_view kPem = "-----BEGIN ";
    return (!bytes.empty() && bytes.front() == '<') || bytes.substr(0, kPem.size()) == kPem;
}
