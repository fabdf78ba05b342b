// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <set>
#include <string>
#include <string_view>

#include "steps/phoneLists.h"

enum class FileFormat { Ini, Xml, Text, Binary };

/// The formats of a phone's files, from how the program uses them: its endings say nothing about a file.
class FileFormats
{
public:
    explicit FileFormats(const PhoneLists& lists);

    /// The passes' XML files are XML. What the entry list, the translation table or a pass uses otherwise is a
    /// configuration file. Any other file is what its content looks like.
    ///
    /// @param before, after  contents at two times; empty for none. With a zero byte in one of them: binary. Contents
    ///                       that look like two formats: text
    FileFormat Of(const std::string& path, std::string_view before, std::string_view after) const;

    /// The same for one content.
    FileFormat Of(const std::string& path, std::string_view content) const { return Of(path, content, {}); }

    /// Every file that the lists and the passes name.
    std::set<std::string> Paths() const;

private:
    std::set<std::string> iniPaths_;
};

/// @return whether one of the passes reads or writes it as XML
bool IsXmlOfPass(const std::string& path);
