// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "imageFile.h"

#include <filesystem>
#include <limits>

#include "fileKinds.h"
#include "iniFile.h"
#include "iniText.h"
#include "phoneImage/scratch.h"
#include "requireReadable.h"

ImageFile::ImageFile(const std::string& path)
{
    std::error_code error;
    if (std::filesystem::is_regular_file(path, error))
        RequireReadable("a file of the image", path);
    iniFile document;
    loads_ = document.LoadFromFile(path.c_str()) != 0;
    if (!loads_)
        return;

    const std::string text = ReadWhole(path, std::numeric_limits<std::size_t>::max());
    isForeign_ = HasForeignContent(text);
    std::string section;
    bool isInSection = false; // keys before the first section do not count
    for (std::size_t begin = FirstIniLine(text); begin < text.size();) {
        const IniLine line = ReadIniLine(text, begin);
        begin = line.end;
        if (line.kind == IniLineKind::Section) {
            section = line.name;
            isInSection = true;
        } else if (line.kind == IniLineKind::Key && isInSection) {
            (void)values_.try_emplace({section, std::string(line.name)}, line.value); // the first one counts
        }
    }
}

const std::string* ImageFile::Find(const std::string& section, const std::string& key) const
{
    const auto found = values_.find({section, key});
    return found == values_.end() ? nullptr : &found->second;
}

bool ImageFile::Set(const std::string& section, const std::string& key, const std::string& value)
{
    iniFile probe;
    if (probe.SetTextValue(section, key, value) == 0)
        return false;
    values_.insert_or_assign({section, key}, value);
    return true;
}
