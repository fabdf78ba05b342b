// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include <glib.h>
#include <memory>

#include "iniLibrary.h"
#include "scratchFolder.h"

namespace
{

using KeyFile = std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)>;
using Text = std::unique_ptr<char, decltype(&g_free)>;

KeyFile Load(const char* path)
{
    KeyFile file(g_key_file_new(), &g_key_file_unref);
    const auto flags = static_cast<GKeyFileFlags>(G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS);
    Require(g_key_file_load_from_file(file.get(), path, flags, nullptr) != 0, "load");
    return file;
}

} // namespace

std::string iniLibrary::Get(const char* path, const char* section, const char* key)
{
    const KeyFile file = Load(path);
    const Text value(g_key_file_get_string(file.get(), section, key, nullptr), &g_free);
    return value.get();
}

const bool iniLibrary::kCanWrite = true;

std::string iniLibrary::SetInMemory(const char* path, const char* section, const char* key, const char* value)
{
    const KeyFile file = Load(path);
    g_key_file_set_string(file.get(), section, key, value);
    gsize size = 0;
    const Text text(g_key_file_to_data(file.get(), &size, nullptr), &g_free);
    return std::string(text.get(), size);
}

void iniLibrary::SetInFile(const char* path, const char* section, const char* key, const char* value)
{
    const KeyFile file = Load(path);
    g_key_file_set_string(file.get(), section, key, value);
    Require(g_key_file_save_to_file(file.get(), path, nullptr) != 0, "save"); // flushes a file that it replaces
}
