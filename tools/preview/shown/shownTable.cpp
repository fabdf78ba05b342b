// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "shownTable.h"

#include "phoneImage/printable.h"

namespace
{

std::string ShowName(const std::string& name, const Secrets& secrets)
{
    return Printable(secrets.HideInName(name));
}

std::string ShowPlace(const std::string& file, const std::string& section, const std::string& key,
                      const Secrets& secrets)
{
    return ShowName("[" + section + "] " + key + " of " + file, secrets);
}

} // namespace

std::vector<ShownRecord> ShowRecords(const std::vector<TableRecord>& records,
                                     const std::vector<RecordOutcome>& outcomes, const Secrets& secrets)
{
    std::vector<ShownRecord> shown;
    for (const TableRecord& record : records) {
        const bool hasSource = !record.sourceFile.empty() && !record.sourceSection.empty() && !record.sourceKey.empty();
        shown.push_back(
            {record.line,
             hasSource ? ShowPlace(record.sourceFile, record.sourceSection, record.sourceKey, secrets) : std::string(),
             ShowPlace(record.file, record.section, record.key, secrets), outcomes[shown.size()]});
    }
    return shown;
}

std::vector<ShownForgottenKey> ShowForgotten(std::vector<ForgottenKey> keys, const Secrets& secrets)
{
    for (ForgottenKey& key : keys) {
        for (std::string* name : {&key.file, &key.section, &key.key})
            *name = ShowName(*name, secrets);
    }
    return keys;
}
