// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>
#include <list>
#include <string>

/// One contact of the local directory.
struct ContactRecord {
    std::string displayName;
    std::string officeNumber;
    std::string mobileNumber;
    std::string otherNumber;
    std::string photoPath;
    std::int32_t groupId = 0; ///< id of the group that contained the contact
};

/// One group of contacts.
struct GroupRecord {
    std::int32_t id = 0;
    std::string displayName;
    bool isReadOnly = false;
};

/// Contacts: groups that contain contacts become a flat contact list and a flat group list.
///
/// Reads:     `oldPath`
/// Writes:    `newContactPath`, then `newGroupPath`
/// Result:    1 if both were saved, else 0; 0 if a path is null
/// Failures:  if the contact data is missing, unreadable or empty, nothing is written
/// Twice:     writes the same files again
int ContactV4XToV50(const char* oldPath, const char* newContactPath, const char* newGroupPath);

/// Reads at most 1001 contacts with a name, and 50 custom groups.
///
/// @param contacts, groups  cleared if the file exists, then filled in document order; the group list begins with
///                          "All" and ends with "Black List"
/// @return 1 if the file was read; 0 if it is missing, does not load or has another root
int GetV4XContactData(const char* oldPath, std::list<ContactRecord>& contacts, std::list<GroupRecord>& groups);

/// Writes the contact list.
///
/// @param oldPath  the file whose owner a new file gets, and whose readers are the most that it may have; may be null
/// @return 1 if the file was saved; 0 if it was not, or if `newPath` is null
int SetV50ContactData(const char* newPath, const std::list<ContactRecord>& contacts, const char* oldPath = nullptr);

/// Writes the list of contact groups; as `SetV50ContactData`.
int SetV50GroupData(const char* newPath, const std::list<GroupRecord>& groups, const char* oldPath = nullptr);
