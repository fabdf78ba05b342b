// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "imageNames.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <string_view>

#include "imageCopy.h"
#include "toolError.h"

namespace fs = std::filesystem;

namespace
{

using Names = std::vector<std::string>;

bool IsNamedAsArchive(std::string_view name)
{
    return name.ends_with(".tar") || name.ends_with(".tar.gz") || name.ends_with(".tgz");
}

void Search(const fs::path& folder, Names& images)
{
    std::error_code error;
    std::vector<fs::directory_entry> entries;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        entries.push_back(*entry);
    if (error || FindTrees(folder)) {
        images.push_back(folder);
        return;
    }
    for (const fs::directory_entry& entry : entries) {
        const fs::file_type type = entry.symlink_status(error).type();
        if (type == fs::file_type::directory)
            Search(entry.path(), images);
        else if (type == fs::file_type::regular && IsNamedAsArchive(entry.path().native()))
            images.push_back(entry.path());
    }
}

Names ImagesAt(const std::string& name)
{
    std::error_code error;
    if (!fs::is_directory(name, error))
        return {name};
    Names images;
    Search(name, images);
    std::sort(images.begin(), images.end());
    if (images.empty())
        throw ToolError("the folder has no image of a phone: " + name);
    return images;
}

Names NamesInList(const std::string& list)
{
    std::ifstream file;
    if (list != "-")
        file.open(list);
    std::istream& lines = list == "-" ? std::cin : file;
    Names names;
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.front() != '#')
            names.push_back(line);
    }
    if (!lines.eof())
        throw ToolError("the list of images cannot be read: " + list);
    if (names.empty())
        throw ToolError("the list names no image: " + list);
    return names;
}

} // namespace

std::vector<std::string> FindImages(const std::vector<std::string>& words)
{
    Names images;
    std::set<std::string> known;
    for (const std::string& word : words) {
        for (const std::string& name : word.starts_with('@') ? NamesInList(word.substr(1)) : Names{word}) {
            for (const std::string& image : ImagesAt(name)) {
                if (known.insert(image).second)
                    images.push_back(image);
            }
        }
    }
    return images;
}
