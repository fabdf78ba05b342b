// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "syncFactoryCerts.h"

#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <memory>

#include "appLog.h"
#include "fileHelper.h"
#include "fileReplacement.h"

namespace
{

constexpr char kFactoryFolder[] = "/phone/factory/certs/phoneca/";
constexpr char kUserFolder[] = "/config/certs/phoneca/";

void CopyCertificate(const std::string& name, const std::string& destination)
{
    // The names go to the shell as they stand: the factory chooses them.
    const std::string command = std::string("cp ") + kFactoryFolder + name + " " + kUserFolder + name;
    app_log(kAppLogModule, kAppLogInformation, "Sync cert %s\n", command.c_str());

    FlushChangedFolders();
    (void)std::fflush(stdout); // what was printed before stands before what the command prints
    const int ignoredStatus = std::system(command.c_str()); // the next run copies what is missing then
    (void)ignoredStatus;
    FlushForeignFile(destination.c_str());
}

} // namespace

void SyncFactoryCerts()
{
    std::vector<std::string> names;
    ListDirectoryEntries(kFactoryFolder, names);
    for (const std::string& name : names) {
        const std::string destination = kUserFolder + name;
        if (ETL_MiscHelper::pathFileExist(destination.c_str()) == 0)
            CopyCertificate(name, destination);
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
