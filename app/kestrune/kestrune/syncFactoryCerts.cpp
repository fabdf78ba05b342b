// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "syncFactoryCerts.h"

#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <memory>

#include "appLog.h"
#include "fileHelper.h"
#include "foreignCopies.h"
#include "phoneFacts.h"
#include "standardOutput.h"

namespace
{

ForeignCopy CopyOf(const std::string& name)
{
    return {kUserCertificates + name, kFactoryCertificates + name};
}

bool IsMissing(const ForeignCopy& copy)
{
    return ETL_MiscHelper::pathFileExist(copy.path.c_str()) == 0;
}

void CopyCertificate(const ForeignCopy& copy)
{
    // The names are passed to the shell unquoted: the factory chooses them.
    const std::string command = "cp " + copy.sourcePath + " " + copy.path;
    app_log(kAppLogModule, kAppLogInformation, "Sync cert %s\n", command.c_str());

    (void)std::fflush(StandardOutput());                    // keeps the output of the command after earlier output
    const int ignoredStatus = std::system(command.c_str()); // the next run copies missing files
    (void)ignoredStatus;
    EndForeignCopy(copy);
}

} // namespace

void SyncFactoryCerts()
{
    std::vector<std::string> names;
    ListDirectoryEntries(kFactoryCertificates, names);
    std::vector<ForeignCopy> missing;
    for (const std::string& name : names) {
        if (IsMissing(CopyOf(name)))
            missing.push_back(CopyOf(name));
    }
    if (missing.empty())
        return;

    NoteForeignCopies(missing);
    for (const ForeignCopy& copy : missing) {
        if (IsMissing(copy)) // an earlier command with an odd name may have created this file
            CopyCertificate(copy);
    }
}

void ListDirectoryEntries(const char* path, std::vector<std::string>& entries)
{
    entries.clear();
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(opendir(path), &closedir);
    if (folder == nullptr)
        return;
    while (const dirent* entry = readdir(folder.get())) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
            entries.push_back(name);
    }
}
