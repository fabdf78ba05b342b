// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fleetLog.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "phoneImage/toolError.h"

using nlohmann::json;

namespace
{

/// @param first   receives the first line; null when there is none
/// @param cut     receives what follows the last whole line
/// @param atLine  called with each other one
/// @return the size of all whole lines
std::streamoff ReadLines(const std::filesystem::path& path, json& first, std::string& cut,
                         const std::function<void(const json&)>& atLine)
try {
    std::ifstream file(path, std::ios::binary);
    std::streamoff size = 0;
    for (; std::getline(file, cut) && !file.eof(); size = file.tellg()) {
        json line = json::parse(cut);
        if (!first.is_null())
            atLine(line);
        else if (line.at("format") == "kestrune-preview-fleet" && line.at("version") == kFleetLogVersion)
            first = std::move(line);
        else
            throw ToolError(path.string() + " is no log of a fleet, or one of another version");
    }
    if (!file.is_open() || file.bad())
        throw ToolError("cannot read " + path.string());
    return size;
} catch (const std::logic_error&) {
    throw ToolError(path.string() + " is no log of a fleet: it has a line of another form");
} catch (const json::exception&) {
    throw ToolError(path.string() + " is no log of a fleet: it has a line of another form");
}

} // namespace

json ReadFleetLog(const std::filesystem::path& path, const std::function<void(const json&)>& atLine)
{
    json first;
    std::string ignored; // the line that was cut
    (void)ReadLines(path, first, ignored, atLine);
    if (first.is_null())
        throw ToolError(path.string() + " is empty");
    return first;
}

FleetLog::FleetLog(const std::filesystem::path& path, const json& first, Readers readers,
                   const std::function<void(const json&)>& atLine)
    : path_(path), file_(open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
                              readers == Readers::Owner ? 0600 : 0666))
{
    RequireWritable(path);
    if (!file_.IsOpen())
        throw ToolError("cannot write " + path.string() + ": " + std::strerror(errno));
    if (flock(file_.Number(), LOCK_EX | LOCK_NB) != 0)
        throw ToolError("cannot write " + path.string() + ": another process writes it");
    if (readers == Readers::Owner && fchmod(file_.Number(), 0600) != 0)
        throw ToolError("cannot write " + path.string() + ": " + std::strerror(errno));
    json found;
    std::string cut;
    const std::streamoff size = ReadLines(path, found, cut, atLine);
    if (found.is_null() && !first.dump().starts_with(cut))
        throw ToolError(path.string() + " is no log of a fleet: it has a line of another form");
    if (!found.is_null() && found != first)
        throw ToolError(path.string() + " is of another run: the modes, the firmware, the table or a program differ");
    if (ftruncate(file_.Number(), size) != 0) // the line that was cut
        throw ToolError("cannot write " + path.string() + ": " + std::strerror(errno));
    if (found.is_null())
        Append(first);
}

void FleetLog::Append(const json& line)
{
    if (!WriteAll(file_.Number(), line.dump() + "\n"))
        throw ToolError("cannot write " + path_.string() + ": " + std::strerror(errno));
}
