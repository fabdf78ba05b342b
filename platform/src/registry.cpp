// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "registry.h"

#include <list>
#include <utility>
#include <vector>

#include "fileHelper.h"
#include "iniFile.h"

struct _HREGISTRY_ {
    std::string path;
    std::string section;
    iniFile document;                                         ///< the file when it was opened, with the pending changes
    std::vector<std::pair<std::string, std::string>> changes; ///< keys and texts, in the order in which they were set
};

namespace
{

/// Open handles. Static, so that those never flushed are released at exit.
std::list<_HREGISTRY_>& OpenHandles()
{
    static std::list<_HREGISTRY_> handles;
    return handles;
}

} // namespace

_HREGISTRY_* registryOpen(const char* path, const char* section)
{
    if (path == nullptr || *path == '\0' || section == nullptr || *section == '\0')
        return nullptr;
    std::list<_HREGISTRY_>& handles = OpenHandles();
    _HREGISTRY_& handle = handles.emplace_back();
    handle.path = path;
    handle.section = section;
    if (handle.document.LoadFromFile(path) == 0 && ETL_MiscHelper::pathFileExist(path) != 0) {
        handles.pop_back();
        return nullptr;
    }
    return &handle;
}

int registryGetInt(_HREGISTRY_* handle, const char* key, int defaultValue)
{
    return handle == nullptr ? defaultValue : handle->document.GetIntValue(handle->section, key, defaultValue);
}

void registrySetInt(_HREGISTRY_* handle, const char* key, int value)
{
    registrySetString(handle, key, std::to_string(value));
}

void registrySetString(_HREGISTRY_* handle, const char* key, const phraseConstTextA& text)
{
    if (handle == nullptr || handle->document.SetTextValue(handle->section, key, text) == 0)
        return;
    handle->changes.emplace_back(key, text.view());
}

void registryFlush(_HREGISTRY_* handle)
{
    if (handle == nullptr)
        return;
    if (!handle->changes.empty()) {
        iniFile file;
        (void)file.LoadFromFile(
            handle->path.c_str()); // a missing file is created, and an unreadable one makes the save fail
        for (const auto& [key, text] : handle->changes)
            (void)file.SetTextValue(handle->section, key, text); // refused texts were refused when they were set
        (void)file.SaveToFile(handle->path.c_str());             // the device's interface has no result for it
    }
    OpenHandles().remove_if([handle](const _HREGISTRY_& open) { return &open == handle; });
}

namespace ETL_SubClass
{

std::string registryGetString(_HREGISTRY_* handle, const char* key, const phraseConstTextA& defaultText)
{
    return handle == nullptr ? std::string(defaultText.view())
                             : handle->document.GetTextValue(handle->section, key, defaultText);
}

} // namespace ETL_SubClass
