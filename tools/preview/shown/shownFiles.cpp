// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "shownFiles.h"

#include "changes/unifiedDiff.h"
#include "phoneImage/printable.h"

namespace
{

const char* NameOf(FileFormat format)
{
    switch (format) {
    case FileFormat::Ini:
        return "ini";
    case FileFormat::Xml:
        return "xml";
    case FileFormat::Text:
        return "text";
    case FileFormat::Binary:
        return "binary";
    }
    return "other";
}

/// Makes the shown changes of a file whose values were read.
class ItemsToShow
{
public:
    ItemsToShow(const FileChange& file, const Secrets& secrets) : secrets_(secrets)
    {
        for (const ItemChange& item : file.items) {
            if (file.format == FileFormat::Xml && item.isOfWholeGroup)
                AddToRecord(item);
            else
                AddValue(item);
        }
    }

    std::vector<ShownChange> Take() { return std::move(changes_); }

private:
    /// A switch may become a secret.
    bool IsSecret(const ItemChange& item) const
    {
        Item old = item.place;
        old.value = item.before.value_or("");
        return secrets_.IsSecret(item.place) || (!old.value.empty() && secrets_.IsSecret(old));
    }

    std::string Name(const std::string& name) const { return Printable(secrets_.HideInName(name)); }

    std::string Show(const ItemChange& item, const std::string& value) const
    {
        return Printable(IsSecret(item) ? secrets_.Mask(value) : secrets_.Hide(value));
    }

    std::optional<std::string> Show(const ItemChange& item, const std::optional<std::string>& value) const
    {
        return value ? std::optional<std::string>(Show(item, *value)) : std::nullopt;
    }

    void AddToRecord(const ItemChange& item)
    {
        const std::string group = Name(*item.place.group);
        if (changes_.empty() || changes_.back().group != group || !changes_.back().name.empty()) {
            changes_.emplace_back();
            changes_.back().kind = item.kind;
            changes_.back().group = group;
            changes_.back().passes = item.passes;
        }
        changes_.back().attributes.emplace_back(Name(item.place.name),
                                                Show(item, item.after.value_or(item.before.value_or(""))));
    }

    void AddValue(const ItemChange& item)
    {
        ShownChange change = {};
        change.kind = item.kind;
        change.group = Name(*item.place.group);
        change.name = Name(item.place.name);
        if (item.place.number > 1)
            change.name += " (" + std::to_string(item.place.number) + ")";
        change.before = Show(item, item.before);
        change.after = Show(item, item.after);
        if (IsSecret(item))
            change.secret = secrets_.Values().Relation(item.before, item.after);
        change.passes = item.passes;
        changes_.push_back(std::move(change));
    }

    const Secrets& secrets_;
    std::vector<ShownChange> changes_;
};

void ShowDiff(const FileChange& file, Secrets& secrets, ShownFile& shown)
{
    const std::string before = secrets.HideInFile(file.format, file.before);
    const std::string after = secrets.HideInFile(file.format, file.after);
    for (const std::string& line : UnifiedDiff(before, after))
        shown.diff.push_back(Printable(line));
    if (shown.diff.empty())
        shown.note = "nothing but secrets changed";
}

std::string BytesNote(const FileChange& file)
{
    return std::to_string(file.before.size()) + " bytes before, " + std::to_string(file.after.size()) + " after";
}

ShownFile Show(const FileChange& file, Secrets& secrets)
{
    ShownFile shown = {};
    shown.path = Printable(secrets.HideInName(file.path));
    shown.kind = file.kind;
    shown.format = file.isFile ? NameOf(file.format) : "other";
    shown.passes = file.passes;
    if (!file.isFile)
        shown.note = "a link, a folder or something else: " + Printable(secrets.Hide(file.before)) + " -> " +
                     Printable(secrets.Hide(file.after));
    else if (!file.sameAs.empty())
        shown.note = (file.kind == ChangeKind::Removed ? "its bytes are now " : "the same bytes as ") +
                     Printable(secrets.HideInName(file.sameAs));
    else if (file.format == FileFormat::Binary)
        shown.note = BytesNote(file);
    else if (!file.items.empty())
        shown.changes = ItemsToShow(file, secrets).Take();
    else if (file.hasSameValues)
        shown.note = "the same values, written again";
    else
        ShowDiff(file, secrets, shown);
    return shown;
}

} // namespace

std::vector<ShownFile> ShowFiles(const std::vector<FileChange>& changes, Secrets& secrets)
{
    std::vector<ShownFile> files;
    for (const FileChange& change : changes)
        files.push_back(Show(change, secrets));
    return files;
}
