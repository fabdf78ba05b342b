// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// Single keys of configuration files: whole-file access and section handles.

#include <list>
#include <string>
#include <utility>

#include "fileHelper.h"
#include "iniFile.h"
#include "integerText.h"
#include "profile.h"
#include "registry.h"

struct _HREGISTRY_ {
    std::string path;
    std::string section;
    std::list<std::pair<std::string, std::string>> changes; ///< key and text, latest first
};

namespace
{

/// A file that exists but does not load must not be replaced by an empty document.
bool LoadOrMake(iniFile& file, const char* path)
{
    return file.LoadFromFile(path) != 0 || ETL_MiscHelper::pathFileExist(path) == 0;
}

/// The handles that were not flushed yet; they are released at exit.
std::list<_HREGISTRY_>& Handles()
{
    static std::list<_HREGISTRY_> handles;
    return handles;
}

} // namespace

int etlGetProfileInt(const char* path, const char* section, const char* key, int defaultValue)
{
    iniFile file;
    (void)file.LoadFromFile(path); // an empty document has no key
    return file.GetIntValue(section, key, defaultValue);
}

void etlSetProfileInt(const char* path, const char* section, const char* key, int value)
{
    iniFile file;
    if (LoadOrMake(file, path) && file.SetTextValue(section, key, std::to_string(value)) != 0)
        (void)file.SaveToFile(path); // the device's interface has no result for it
}

int etlGetRegistryInt(const char* path, const char* section, const char* key, int defaultValue)
{
    return etlGetProfileInt(path, section, key, defaultValue);
}

void etlSetRegistryInt(const char* path, const char* section, const char* key, int value)
{
    etlSetProfileInt(path, section, key, value);
}

_HREGISTRY_* registryOpen(const char* path, const char* section)
{
    iniFile file;
    if (path == nullptr || section == nullptr || !LoadOrMake(file, path))
        return nullptr;
    return &Handles().emplace_back(_HREGISTRY_{path, section, {}});
}

std::string ETL_SubClass::registryGetString(_HREGISTRY_* handle, const char* key, const phraseConstTextA& defaultText)
{
    if (handle == nullptr)
        return std::string(defaultText.view());
    for (const auto& [name, text] : handle->changes) {
        if (name == key)
            return text;
    }
    iniFile file;
    (void)file.LoadFromFile(handle->path.c_str()); // an empty document has no key
    return file.GetTextValue(handle->section, key, defaultText);
}

int registryGetInt(_HREGISTRY_* handle, const char* key, int defaultValue)
{
    return ParseInt32(ETL_SubClass::registryGetString(handle, key, std::to_string(defaultValue)).c_str());
}

void registrySetString(_HREGISTRY_* handle, const char* key, const phraseConstTextA& text)
{
    if (handle != nullptr)
        handle->changes.emplace_front(key, text.view());
}

void registrySetInt(_HREGISTRY_* handle, const char* key, int value)
{
    registrySetString(handle, key, std::to_string(value));
}

void registryFlush(_HREGISTRY_* handle)
{
    if (handle == nullptr)
        return;
    iniFile file;
    bool isChanged = false;
    if (!handle->changes.empty() && LoadOrMake(file, handle->path.c_str())) {
        for (auto change = handle->changes.rbegin(); change != handle->changes.rend(); ++change)
            isChanged |= file.SetTextValue(handle->section, change->first, change->second) != 0;
    }
    if (isChanged)
        (void)file.SaveToFile(handle->path.c_str()); // the device's interface has no result for it
    Handles().remove_if([handle](const _HREGISTRY_& each) { return &each == handle; });
}
