// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "commitRecord.h"

#include <cstdlib>

namespace
{

constexpr std::string_view kName = "kestrune-commit";
constexpr std::string_view kFormat = "1";
constexpr std::string_view kEnd = "end";
constexpr std::size_t kHeaderFields = 3;
constexpr std::size_t kChangeFields = 5;

/// In the order of `ChangeKind`.
constexpr std::string_view kKinds[] = {"rename", "marker", "remove", "remove-other"};

bool ParseKind(std::string_view text, ChangeKind& kind)
{
    for (std::size_t number = 0; number < std::size(kKinds); ++number) {
        if (text == kKinds[number]) {
            kind = static_cast<ChangeKind>(number);
            return true;
        }
    }
    return false;
}

} // namespace

std::string WithChecksum(const std::vector<std::string_view>& fields)
{
    std::string text;
    for (const std::string_view field : fields)
        text.append(field).push_back('\0');
    const std::string checksum = SumOf(text).sha256;
    text.append(kEnd).push_back('\0');
    text.append(checksum).push_back('\0');
    return text;
}

bool CheckAndSplit(std::string_view text, std::vector<std::string_view>& fields)
{
    const std::string_view whole = text;
    std::size_t lastLength = 0;
    fields.clear();
    while (!text.empty()) {
        const std::size_t length = text.find('\0');
        if (length == std::string_view::npos)
            return false;
        fields.push_back(text.substr(0, length));
        text.remove_prefix(length + 1);
        lastLength = length + 1;
    }
    if (fields.size() < 2 || fields[fields.size() - 2] != kEnd)
        return false;
    const std::string_view checked = whole.substr(0, whole.size() - lastLength - kEnd.size() - 1);
    const bool isWhole = SumOf(checked).sha256 == fields.back();
    fields.resize(fields.size() - 2);
    return isWhole;
}

std::string TextOf(const CommitRecord& record)
{
    std::list<std::string> lengths;
    std::vector<std::string_view> fields = {kName, kFormat, record.mode};
    for (const RecordedChange& change : record.changes) {
        lengths.push_back(std::to_string(change.content.length));
        for (const std::string_view field :
             {kKinds[static_cast<int>(change.kind)], std::string_view(change.path), std::string_view(lengths.back()),
              std::string_view(change.content.sha256), std::string_view(change.waitsForCopy)})
            fields.push_back(field);
    }
    return WithChecksum(fields);
}

bool ParseRecord(std::string_view text, CommitRecord& record)
{
    std::vector<std::string_view> fields;
    if (!CheckAndSplit(text, fields) || fields.size() < kHeaderFields ||
        (fields.size() - kHeaderFields) % kChangeFields != 0 || fields[0] != kName || fields[1] != kFormat)
        return false;

    CommitRecord parsed;
    parsed.mode = fields[2];
    for (std::size_t at = kHeaderFields; at < fields.size(); at += kChangeFields) {
        RecordedChange change = {};
        if (!ParseKind(fields[at], change.kind))
            return false;
        change.path = fields[at + 1];
        // Ends at the field's zero byte.
        change.content = {std::strtoull(fields[at + 2].data(), /*end=*/nullptr, 10), std::string(fields[at + 3])};
        change.waitsForCopy = fields[at + 4];
        parsed.changes.push_back(std::move(change));
    }
    record = std::move(parsed);
    return true;
}
