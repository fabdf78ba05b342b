// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "contentSum.h"

#include <nettle/base16.h>
#include <nettle/sha2.h>
#include <sys/stat.h>

#include "descriptor.h"

namespace
{

constexpr std::size_t kPieceSize = 4096; // on the stack, which may be small

/// Takes a regular file piece by piece.
///
/// @param isWanted  is given the file's length; false ends the reading before it begins
/// @param take      is given each piece; false ends the reading
/// @return whether all pieces were read and taken
template <typename IsWanted, typename Take>
bool ReadPieces(const char* path, IsWanted isWanted, Take take)
{
    const Descriptor file(OpenForReading(path));
    struct stat status = {};
    if (!file.IsOpen() || fstat(file.Number(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    if (!isWanted(static_cast<std::uint64_t>(status.st_size)))
        return false;

    char piece[kPieceSize];
    for (;;) {
        const ssize_t count = ReadInto(file.Number(), piece, sizeof piece);
        if (count < 0 || !take(std::string_view(piece, static_cast<std::size_t>(count))))
            return false;
        if (static_cast<std::size_t>(count) < sizeof piece)
            return true;
    }
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
    sha256_init(&context);
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
    if (ReadPieces(path, isWanted, take)) {
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
    const auto take = [&](std::string_view piece) {
        if (bytes.substr(0, piece.size()) != piece)
            return false;
        bytes.remove_prefix(piece.size());
        return true;
    };
    const auto isWanted = [size = bytes.size()](std::uint64_t found) { return found == size; };
    return ReadPieces(path, isWanted, take) && bytes.empty();
}
