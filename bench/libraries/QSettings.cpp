// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include <QSettings>
#include <QString>
#include <fcntl.h>
#include <sys/stat.h>

#include "flushFile.h"
#include "iniLibrary.h"
#include "scratchFolder.h"

namespace
{

QString PathOf(const char* section, const char* key)
{
    return QString(section) + "/" + key;
}

/// The class caches a loaded file until its modification time changes; here each load must read the file.
void MakeNewer(const char* path)
{
    static time_t seconds = 1'000'000'000; // static: a new time in each call
    ++seconds;
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    Require(utimensat(AT_FDCWD, path, times, 0) == 0, "set the time"); // costs a hundredth of the load at most
}

void SetAndSync(const char* path, const char* section, const char* key, const char* value)
{
    MakeNewer(path);
    QSettings settings(path, QSettings::IniFormat);
    settings.setValue(PathOf(section, key), value);
    settings.sync();
    Require(settings.status() == QSettings::NoError, "save");
}

} // namespace

std::string iniLibrary::Get(const char* path, const char* section, const char* key)
{
    MakeNewer(path);
    const QSettings settings(path, QSettings::IniFormat);
    return settings.value(PathOf(section, key)).toString().toStdString();
}

const bool iniLibrary::kCanWrite = true;

std::string iniLibrary::SetInMemory(const char* path, const char* section, const char* key, const char* value)
{
    SetAndSync(path, section, key, value);
    return std::string();
}

void iniLibrary::SetInFile(const char* path, const char* section, const char* key, const char* value)
{
    SetAndSync(path, section, key, value);
    FlushFile(path);
}
