// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "iniFile.h"
#include "iniLibrary.h"
#include "runCommit.h"
#include "scratchFolder.h"

namespace
{

/// Gives access to the text that a save would write.
class Document : public iniFile
{
public:
    using iniDocument::Text;
};

} // namespace

std::string iniLibrary::Get(const char* path, const char* section, const char* key)
{
    iniFile file;
    Require(file.LoadFromFile(path) != 0, "load");
    return file.GetTextValue(section, key, "");
}

const bool iniLibrary::kCanWrite = true;

std::string iniLibrary::SetInMemory(const char* path, const char* section, const char* key, const char* value)
{
    Document file;
    Require(file.LoadFromFile(path) != 0 && file.SetTextValue(section, key, value) != 0, "set");
    return file.Text();
}

void iniLibrary::SetInFile(const char* path, const char* section, const char* key, const char* value)
{
    iniFile file;
    Require(file.LoadFromFile(path) != 0 && file.SetTextValue(section, key, value) != 0, "set");
    Require(file.SaveToFile(/*path=*/nullptr) != 0, "save");
}

void iniLibrary::BeginRun()
{
    Require(::BeginRun("records") == RunStart::WithoutMarker, "begin a run");
}

void iniLibrary::CommitRun()
{
    ::CommitRun();
}
