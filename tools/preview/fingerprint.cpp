// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "fingerprint.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <nettle/sha2.h>
#include <sstream>

#include "phoneImage/imageLimits.h"
#include "phoneImage/scratch.h"

namespace fs = std::filesystem;

namespace
{

constexpr std::size_t kFingerprintBytes = 16;

std::vector<fs::path> FilesOf(const fs::path& path)
{
    if (!fs::is_directory(path))
        return {path};
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
        if (fs::is_regular_file(entry.symlink_status()))
            files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// @param name  in its folder: the same firmware is in other places on other machines
void HashFile(sha256_ctx& hash, const std::string& name, const fs::path& path)
{
    const std::string content = ReadWhole(path, kMostImageBytes);
    const std::string bytes = name + '\n' + std::to_string(content.size()) + '\n' + content;
    sha256_update(&hash, bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()));
}

std::string BeginningOf(sha256_ctx& hash)
{
    std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest = {};
    sha256_digest(&hash, digest.size(), digest.data());
    std::ostringstream text;
    for (std::size_t i = 0; i < kFingerprintBytes; ++i)
        text << std::hex << std::setw(2) << std::setfill('0') << unsigned{digest[i]};
    return text.str();
}

} // namespace

std::string FingerprintOf(const std::vector<fs::path>& paths)
{
    sha256_ctx hash;
    sha256_init(&hash);
    for (const fs::path& path : paths) {
        if (path.empty())
            continue;
        for (const fs::path& file : FilesOf(path))
            HashFile(hash, file == path ? "" : file.lexically_relative(path).string(), file);
    }
    return BeginningOf(hash);
}
