// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "checkImages.h"

#include <exception>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <tuple>

#include "keyedCipher.h"
#include "phoneImage/imageCopy.h"
#include "phoneImage/phoneFolder.h"
#include "phoneImage/scratch.h"

namespace fs = std::filesystem;

namespace
{

/// Line, rule, and the text without what varies.
using Key = std::tuple<int, std::string_view, std::string>;

Key KeyOf(const Finding& finding)
{
    std::string text = finding.text;
    text.erase(text.find(finding.varying), finding.varying.size());
    return {finding.line, finding.rule, text};
}

std::set<Key> KeysOf(const Findings& findings)
{
    std::set<Key> keys;
    for (const Finding& finding : findings)
        keys.insert(KeyOf(finding));
    return keys;
}

using Counted = std::map<Key, Finding>;

void Count(const Findings& found, const std::string& image, Counted& counted)
{
    for (const Finding& finding : found) {
        const auto [known, isNew] = counted.try_emplace(KeyOf(finding), finding);
        if (isNew)
            known->second.example = image;
    }
    for (const Key& key : KeysOf(found)) // each once, however many records of a line it is about
        ++counted.at(key).images;
}

/// @param independent  what the table has without any image
Findings FindingsOf(const Counted& counted, const std::set<Key>& independent, std::size_t images)
{
    Findings findings;
    for (const auto& [key, finding] : counted) {
        findings.push_back(finding);
        if (finding.images == images && independent.count(key) != 0) {
            findings.back().images = 0;
            findings.back().example.clear();
        }
    }
    return findings;
}

/// Phones with the /phone of a new firmware, one at a time. It is copied only once: it is much larger than a phone's settings.
class UpgradedPhone
{
public:
    explicit UpgradedPhone(const std::string& firmware)
    {
        CopyPhone(OpenFirmware(firmware, scratch_.Path("firmware")), phone_);
    }

    /// @param trees    of a phone
    /// @param scratch  for a copy of them
    /// @return the folder of the phone after the upgrade, valid until the next call
    fs::path Upgrade(const fs::path& trees, const Scratch& scratch)
    {
        CopyPhone(trees, scratch.Path("copy"), /*firmware=*/scratch.Path("none"));
        for (const char* tree : {"config", "tmp"}) {
            fs::remove_all(phone_ / tree);
            fs::rename(scratch.Path("copy") / tree, phone_ / tree);
        }
        return phone_;
    }

private:
    Scratch scratch_;
    fs::path phone_ = scratch_.Path("phone");
};

/// @param firmware  null for the image's own
Findings CheckImage(TableCheckInput input, const std::string& image, UpgradedPhone* firmware)
{
    const Scratch scratch;
    const fs::path trees = OpenImage(image, scratch.Path("image"));
    input.image = trees;
    if (firmware != nullptr) {
        input.image = firmware->Upgrade(trees, scratch);
        input.cipherKey = PhoneFolder(trees).Find(kCipherKeyFile).value_or("");
    }
    return CheckTable(input);
}

} // namespace

ImagesResult CheckImages(const TableCheckInput& input, const std::vector<std::string>& images,
                         const std::string& firmware)
{
    ImagesResult result;
    result.findings = CheckTable(input);
    result.isCounted = images.size() > 1;
    const std::set<Key> independent = KeysOf(result.findings);
    std::optional<UpgradedPhone> upgraded;
    if (!firmware.empty())
        upgraded.emplace(firmware);
    Counted counted;
    for (const std::string& image : images) {
        try {
            const Findings found = CheckImage(input, image, upgraded ? &*upgraded : nullptr);
            ++result.images;
            if (result.isCounted)
                Count(found, image, counted);
            else
                result.findings = found;
        } catch (const std::exception& error) {
            result.failed.push_back({image, error.what()});
        }
    }
    if (result.isCounted)
        result.findings = FindingsOf(counted, independent, result.images);
    return result;
}
