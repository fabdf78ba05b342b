// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "transPasswordFile.h"

#include <list>
#include <string>

#include "appLog.h"
#include "configMapper.h"
#include "iniFile.h"
#include "passReports.h"
#include "passwordCipher.h"
#include "phoneFacts.h"
#include "trace.h"

namespace
{

bool IsPlain(const iniFile& userIni)
{
    return userIni.GetIntValue(kLockSection, kLockKey, 0) == 0;
}

void ConvertEntry(CipherDirection direction, const CIniConfigInfo& entry)
{
    if (!entry.perAccount) {
        (void)TransEncryptValue(direction, entry.filePath.c_str(), entry.section.c_str(), entry.key.c_str(),
                                entry.defaultText.c_str());
        return;
    }
    for (int number = 0; number < kConvertedAccounts; ++number) {
        // A failure in one account does not stop the conversion of the next.
        (void)TransEncryptValue(direction, AccountFilePath(number).c_str(), entry.section.c_str(), entry.key.c_str(),
                                entry.defaultText.c_str());
    }
}

/// Traces the output of the cipher, also if it failed.
int Convert(CipherDirection direction, const char* value, char* output)
{
    const bool isEncipher = direction == CipherDirection::Encipher;
    const int result = isEncipher ? pw_data_encrypt(value, output) : pw_data_decrypt(value, output);
    ETL_TraceHelper::etlTrace(ETL_TraceHelper::kTraceData, isEncipher ? kEncipheredReport : kDecipheredReport, value,
                              output);
    return result;
}

} // namespace

int TransPasswordFile()
{
    iniFile userIni;
    if (userIni.LoadFromFile(kUserIni) == 0) {
        app_log(kAppLogModule, kAppLogWarning, kNoUserIniReport);
        return 0;
    }
    const bool isUserPlain = IsPlain(userIni);

    if (userIni.LoadFromFile(kFactoryUserIni) == 0) {
        app_log(kAppLogModule, kAppLogWarning, kNoFactoryIniReport);
        return 0;
    }
    const bool isFactoryPlain = IsPlain(userIni);

    if (isUserPlain == isFactoryPlain) {
        app_log(kAppLogModule, kAppLogInformation, "No need trans password file !! Current status [%s]\n",
                isUserPlain ? "decrypt" : "encrypt");
        return 1;
    }
    return TransAllEncryptConfig(isFactoryPlain ? CipherDirection::Decipher : CipherDirection::Encipher);
}

int TransAllEncryptConfig(CipherDirection direction)
{
    std::list<CIniConfigInfo*> entries;
    CConfigMapper mapper;
    if (mapper.GetAllEncryptConfig(entries) == 0) {
        ETL_TraceHelper::etlTrace(ETL_TraceHelper::kTracePassword, kNoEntryListReport);
        return 0;
    }
    for (const CIniConfigInfo* entry : entries) {
        if (entry != nullptr && entry->active)
            ConvertEntry(direction, *entry);
    }
    return 1;
}

int TransEncryptValue(CipherDirection direction, const char* file, const char* section, const char* key,
                      const char* defaultText)
{
    if (file == nullptr || section == nullptr || key == nullptr)
        return 0;

    // Static: consecutive entries of one file share one load, which includes the changes of earlier entries.
    static iniFile document;
    static std::string loadedPath;
    if (loadedPath != file) {
        if (document.LoadFromFile(file) == 0) {
            ETL_TraceHelper::etlTrace(ETL_TraceHelper::kTracePassword, kNoEntryFileReport, file);
            loadedPath.clear();
            return 0;
        }
        loadedPath = file;
    }

    const std::string stored = document.GetTextValue(section, key, defaultText);
    const std::string value = stored.substr(0, kPasswordBufferSize - 1).c_str(); // a zero byte also ends it
    char output[kPasswordBufferSize] = {};
    if (!value.empty() && Convert(direction, value.c_str(), output) == 0)
        (void)document.SetTextValue(section, key, output); // a name that no file can contain changes nothing
    return document.SaveToFile(file);
}
