// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "contentSum.h"

#include <cerrno>
#include <nettle/base16.h>
#include <nettle/sha2.h>
#include <sys/stat.h>

#include "descriptor.h"

namespace
{

constexpr std::size_t kPieceSize = 4096; // on the stack, which may be small

enum class Reading {
    Done,
    Ended, ///< not a regular file, or one that is not wanted
    Failed,
};

/// Reads a regular file piece by piece.
///
/// @param isWanted  receives the file's length; returning false ends the reading before it begins
/// @param take      receives each piece; returning false ends the reading
template <typename IsWanted, typename Take>
Reading ReadPieces(const char* path, IsWanted isWanted, Take take)
{
    const Descriptor file(OpenForReading(path));
    if (!file.IsOpen())
        return errno == ENOENT || errno == ENOTDIR || errno == ELOOP ? Reading::Ended : Reading::Failed;
    struct stat status = {};
    if (fstat(file.Number(), &status) != 0)
        return Reading::Failed;
    if (!S_ISREG(status.st_mode) || !isWanted(static_cast<std::uint64_t>(status.st_size)))
        return Reading::Ended;

    char piece[kPieceSize];
    for (;;) {
        const ssize_t count = ReadInto(file.Number(), piece, sizeof piece);
        if (count < 0)
            return Reading::Failed;
        if (!take(std::string_view(piece, static_cast<std::size_t>(count))))
            return Reading::Ended;
        if (static_cast<std::size_t>(count) < sizeof piece)
            return Reading::Done;
    }
}

/// A failed read is tried again twice, each time from the beginning.
template <typename ReadOnce>
bool IsRead(ReadOnce readOnce)
{
    Reading reading = Reading::Failed;
    for (int tries = 0; tries < kMostTries && reading == Reading::Failed; ++tries)
        reading = readOnce();
    return reading == Reading::Done;
}

void Update(sha256_ctx& context, std::string_view bytes)
{
    sha256_update(&context, bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()));
}

std::string DigestOf(sha256_ctx& context)
{
    std::uint8_t digest[SHA256_DIGEST_SIZE];
    sha256_digest(&context, sizeof digest, digest);
    std::string digits(BASE16_ENCODE_LENGTH(sizeof digest), '\0');
    base16_encode_update(digits.data(), sizeof digest, digest);
    return digits;
}

} // namespace

ContentSum SumOf(std::string_view bytes)
{
    sha256_ctx context;
    sha256_init(&context);
    Update(context, bytes);
    return {bytes.size(), DigestOf(context)};
}

bool SumOfFile(const char* path, ContentSum& sum)
{
    sha256_ctx context;
    std::uint64_t length = 0;
    std::uint64_t read = 0;
    const auto isWanted = [&](std::uint64_t found) {
        length = found;
        return found <= kLargestContent;
    };
    const auto take = [&](std::string_view piece) {
        read += piece.size();
        Update(context, piece);
        return true;
    };
    const auto readOnce = [&] {
        sha256_init(&context);
        length = read = 0;
        return ReadPieces(path, isWanted, take);
    };
    if (IsRead(readOnce)) {
        sum = {read, DigestOf(context)};
        return true;
    }
    if (length <= kLargestContent)
        return false;
    sum = {length, ""};
    return true;
}

bool HoldsContent(const char* path, const ContentSum& content)
{
    ContentSum found;
    return SumOfFile(path, found) && found.length == content.length && found.sha256 == content.sha256;
}

bool HoldsBytes(const char* path, std::string_view bytes)
{
    std::string_view rest;
    const auto isWanted = [&](std::uint64_t found) { return found == bytes.size(); };
    const auto take = [&](std::string_view piece) {
        if (rest.substr(0, piece.size()) != piece)
            return false;
        rest.remove_prefix(piece.size());
        return true;
    };
    const auto readOnce = [&] {
        rest = bytes;
        return ReadPieces(path, isWanted, take);
    };
    return IsRead(readOnce) && rest.empty();
}
