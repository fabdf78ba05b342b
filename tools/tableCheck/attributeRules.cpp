// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "attributeRules.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <string_view>
#include <tinyxml.h>

#include "quotedText.h"
#include "tableRecord.h"
#include "xmlFile.h"

namespace
{

constexpr std::string_view kKnownAttributes[] = {"srcFile", "srcSec", "srcKey", "srcEncrypt",
                                                 "dstFile", "dstSec", "dstKey", "dstEncrypt"};

/// Names with more differences from a known one are not taken for typing errors.
constexpr std::size_t kMostSlips = 2;

std::string LowerCase(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
    return lower;
}

/// @return how many characters have to be put in, taken out or replaced to make one text of the other
std::size_t Distance(std::string_view from, std::string_view to)
{
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t k = 0; k < to.size(); ++k) {
            const std::size_t replaced = diagonal + (from[i] == to[k] ? 0 : 1);
            diagonal = row[k + 1];
            row[k + 1] = std::min({replaced, diagonal + 1, row[k] + 1});
        }
    }
    return row.back();
}

void Replace(std::string& text, std::string_view from, std::string_view to)
{
    if (const std::size_t found = text.find(from); found != std::string::npos)
        text.replace(found, from.size(), to);
}

/// @return the name in small letters, and with the short words of the known names in place of longer ones
std::string Shortened(std::string_view name)
{
    std::string text = LowerCase(name);
    Replace(text, "source", "src");
    Replace(text, "destination", "dst");
    Replace(text, "dest", "dst");
    Replace(text, "section", "sec");
    return text;
}

/// @return the known name, or the two of source and destination, that were probably meant; empty when none is close
std::string MeantName(std::string_view name)
{
    constexpr std::size_t kLongestName = 32;
    if (name.size() > kLongestName)
        return {};
    const std::string given = Shortened(name);
    for (const std::string part : {"File", "Sec", "Key", "Encrypt"}) {
        if (given == LowerCase(part))
            return "src" + part + " or dst" + part;
    }
    const auto distance = [&given](std::string_view known) { return Distance(given, LowerCase(known)); };
    const auto closest =
        std::min_element(std::begin(kKnownAttributes), std::end(kKnownAttributes),
                         [&](std::string_view one, std::string_view two) { return distance(one) < distance(two); });
    return distance(*closest) <= kMostSlips ? std::string(*closest) : "";
}

void CheckName(const TiXmlAttribute& attribute, Findings& findings)
{
    const std::string_view name = attribute.Name();
    if (std::find(std::begin(kKnownAttributes), std::end(kKnownAttributes), name) != std::end(kKnownAttributes))
        return;
    std::string text = "attribute " + QuotedText(name) + " is unknown and ignored";
    const std::string meant = MeantName(name);
    if (!meant.empty())
        text.append("; is ").append(meant).append(" meant?");
    findings.push_back({"KT004", attribute.Row(), text});
}

bool IsBooleanWord(std::string_view text)
{
    constexpr std::string_view kWords[] = {"true", "yes", "1", "false", "no", "0"};
    return std::find(std::begin(kWords), std::end(kWords), LowerCase(text)) != std::end(kWords);
}

void CheckFlag(const TiXmlElement& record, const char* name, Findings& findings)
{
    const char* text = record.Attribute(name);
    if (text == nullptr)
        return;
    bool flag = false;
    const std::string given = name + ("=" + QuotedText(text));
    if (!QueryXmlFlag(&record, name, flag))
        findings.push_back(
            {"KT007", AttributeLine(record, name), given + " is not a boolean: the attribute counts as absent"});
    else if (!IsBooleanWord(text))
        findings.push_back({"KT008", AttributeLine(record, name),
                            given + " is read by its beginning, as " + (flag ? "true" : "false")});
}

} // namespace

void CheckAttributes(const TiXmlElement& record, Findings& findings)
{
    for (const TiXmlAttribute* attribute = record.FirstAttribute(); attribute != nullptr; attribute = attribute->Next())
        CheckName(*attribute, findings);
    CheckFlag(record, "dstEncrypt", findings);
    CheckFlag(record, "srcEncrypt", findings);
    bool flag = false;
    if (record.Attribute("srcEncrypt") != nullptr && QueryXmlFlag(&record, "dstEncrypt", flag))
        findings.push_back(
            {"KT009", AttributeLine(record, "srcEncrypt"), "srcEncrypt is never read: dstEncrypt is given"});
}
