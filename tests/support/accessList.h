// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cerrno>
#include <cstdint>
#include <gtest/gtest.h>
#include <linux/posix_acl.h>
#include <optional>
#include <string>
#include <sys/xattr.h>
#include <vector>

/// Access lists (acl(5)) and other extended attributes of files, in the form of the system calls.

constexpr char kAccessList[] = "system.posix_acl_access";
constexpr char kDefaultAccessList[] =
    "system.posix_acl_default"; ///< of a folder: the initial list of files that are created in it

struct AccessEntry {
    std::uint16_t tag; ///< such as ACL_USER
    std::uint16_t bits;
    std::uint32_t id = static_cast<std::uint32_t>(ACL_UNDEFINED_ID);
};

/// @return the list in the form of its attribute: version 2, then the entries, little-endian
inline std::string AccessListOf(const std::vector<AccessEntry>& entries)
{
    std::string bytes;
    const auto append = [&bytes](std::uint32_t number, int size) {
        for (int shift = 0; shift < 8 * size; shift += 8)
            bytes.push_back(static_cast<char>(number >> shift & 0xFF));
    };
    append(2, 4);
    for (const AccessEntry& entry : entries) {
        append(entry.tag, 2);
        append(entry.bits, 2);
        append(entry.id, 4);
    }
    return bytes;
}

/// Owner 6, user 2222 reads, the group nothing, others nothing: the group's bits of the file are the list's mask, 4.
inline std::string ListForUser2222()
{
    return AccessListOf({{ACL_USER_OBJ, 6}, {ACL_USER, 4, 2222}, {ACL_GROUP_OBJ, 0}, {ACL_MASK, 4}, {ACL_OTHER, 0}});
}

/// @return whether this file system and user have such attributes; the test fails on any other error
inline bool SetAttribute(const std::string& path, const char* name, const std::string& value)
{
    if (setxattr(path.c_str(), name, value.data(), value.size(), 0) == 0)
        return true;
    EXPECT_TRUE(errno == ENOTSUP || errno == EPERM) << name << ' ' << errno;
    return false;
}

/// @return the attribute's value; nothing if the file has none
inline std::optional<std::string> AttributeOf(const std::string& path, const char* name)
{
    std::string value(65536, '\0');
    const ssize_t size = getxattr(path.c_str(), name, value.data(), value.size());
    if (size < 0)
        return std::nullopt;
    value.resize(static_cast<std::size_t>(size));
    return value;
}
