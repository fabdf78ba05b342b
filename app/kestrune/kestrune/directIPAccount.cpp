// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "directIPAccount.h"

#include <string>

#include "fileHelper.h"
#include "fileReplacement.h"
#include "iniFile.h"
#include "phoneFacts.h"
#include "profile.h"

namespace
{

void StripValueMark(iniKey& key)
{
    const std::string value = key.GetValue("");
    if (!value.empty() && value.front() == '?')
        key.SetValue(value.substr(1));
}

void StripValueMarks(iniSection& section)
{
    pointer_chain_pNext* head = section.objects();
    for (pointer_chain_pNext* node = head->get_pNext(); node != head; node = node->get_pNext()) {
        auto* object = static_cast<iniObject*>(node);
        if (object->type() == iniObject::kKey)
            StripValueMark(static_cast<iniKey&>(*object));
    }
}

} // namespace

void ExtractDirectIPAccount()
{
    bool isCopied = false;
    for (int number = kLastAccount; number >= 0; --number) {
        const std::string path = AccountFilePath(number);
        if (ETL_MiscHelper::pathFileExist(path.c_str()) == 0)
            continue;
        if (etlGetRegistryInt(path.c_str(), kAccountSection, kDirectIPKey, 0) != 1)
            continue;
        if (!isCopied) {
            // A failure is ignored because the device removes the account regardless.
            (void)ETL_SubClass::etlCopyFile(kDirectIPFile, path.c_str());
            isCopied = true;
        }
        (void)RemoveFile(path.c_str()); // the next run handles an account that could not be removed
    }
}

void RestoreDirectIPAccount()
{
    const std::string account = AccountFilePath(kLastAccount);
    if (ETL_MiscHelper::pathFileExist(kDirectIPFile) != 0) {
        (void)ETL_SubClass::etlCopyFile(account.c_str(), kDirectIPFile); // the device removes the file regardless
        (void)RemoveFile(kDirectIPFile);
        return;
    }
    if (ETL_MiscHelper::pathFileExist(kFactoryAccount) != 0) {
        (void)ETL_SubClass::etlCopyFile(account.c_str(), kFactoryAccount);
        (void)StripValueMarks(account.c_str());
    }
}

bool StripValueMarks(const char* path)
{
    if (path == nullptr || ETL_MiscHelper::pathFileExist(path) == 0)
        return false;
    iniFile file;
    (void)file.LoadFromFile(path); // a file that could not be read is not saved either

    pointer_chain_pNext* head = file.objects();
    for (pointer_chain_pNext* node = head->get_pNext(); node != head; node = node->get_pNext()) {
        auto* object = static_cast<iniObject*>(node);
        if (object->type() == iniObject::kSection)
            StripValueMarks(static_cast<iniSection&>(*object));
    }
    return file.SaveToFile(path) != 0;
}
