// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "suppressions.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <sstream>
#include <tinyxml.h>

#include "quotedText.h"
#include "rules.h"

namespace
{

constexpr char kMark[] = "kestrune-table-check:";

/// What a comment says after the mark.
struct Suppression {
    bool saysIgnore;
    std::vector<std::string> rules; ///< as they are written; the text after them is the reason
};

/// @return true for "KT010" and "kt10": what is meant as a rule, whether there is one or not
bool LooksLikeRule(std::string_view word)
{
    return word.size() > 2 && std::toupper(word[0]) == 'K' && std::toupper(word[1]) == 'T' &&
           std::all_of(word.begin() + 2, word.end(), [](unsigned char byte) { return std::isdigit(byte) != 0; });
}

/// @return nothing for a comment of another kind
std::optional<Suppression> ReadSuppression(const TiXmlComment& comment)
{
    std::istringstream stream(comment.ValueStr());
    std::string word;
    if (!(stream >> word) || word != kMark)
        return std::nullopt;
    Suppression suppression = {};
    suppression.saysIgnore = stream >> word && word == "ignore";
    while (stream >> word) {
        if (word.back() == ',' || word.back() == ':')
            word.pop_back();
        if (!LooksLikeRule(word))
            break; // the reason begins
        suppression.rules.push_back(word);
    }
    return suppression;
}

const TiXmlNode* SkipComments(const TiXmlNode* node)
{
    while (node != nullptr && node->ToComment() != nullptr)
        node = node->NextSibling();
    return node;
}

bool IsBeforeRecord(const TiXmlComment& comment)
{
    const TiXmlNode* next = SkipComments(&comment);
    const TiXmlDocument* document = comment.GetDocument();
    return next != nullptr && next->ToElement() != nullptr && comment.Parent() == document->RootElement();
}

void CheckComment(const TiXmlComment& comment, Findings& findings)
{
    const std::optional<Suppression> suppression = ReadSuppression(comment);
    if (!suppression)
        return;
    if (!suppression->saysIgnore || suppression->rules.empty())
        findings.push_back(
            {"KT021", comment.Row(), "the comment does not say \"ignore\" and a rule: nothing is suppressed"});
    for (const std::string& rule : suppression->rules) {
        if (FindRule(rule) == nullptr)
            findings.push_back({"KT021", comment.Row(), "there is no rule " + QuotedText(rule) + " to suppress"});
    }
    if (!IsBeforeRecord(comment))
        findings.push_back({"KT021", comment.Row(), "no record follows the comment: nothing is suppressed"});
}

/// Removes the rule's findings, or adds that there are none.
void Suppress(const Rule& rule, int line, Findings& findings)
{
    const auto kept = std::remove_if(findings.begin(), findings.end(),
                                     [&rule](const Finding& finding) { return finding.rule == rule.number; });
    const bool isFound = kept != findings.end();
    findings.erase(kept, findings.end());
    if (!isFound && rule.basis == Basis::Table)
        findings.push_back(
            {"KT038", line, std::string(rule.number) + " is suppressed, but finds nothing in the record"});
}

/// @param depth  how many levels below the node are looked at
void CheckChildren(const TiXmlNode& node, int depth, Findings& findings)
{
    for (const TiXmlNode* child = node.FirstChild(); child != nullptr; child = child->NextSibling()) {
        if (const TiXmlComment* comment = child->ToComment())
            CheckComment(*comment, findings);
        else if (depth > 1)
            CheckChildren(*child, depth - 1, findings);
    }
}

} // namespace

void ApplySuppressions(const TiXmlNode& record, Findings& findings)
{
    for (const TiXmlNode* node = record.PreviousSibling(); node != nullptr; node = node->PreviousSibling()) {
        const TiXmlComment* comment = node->ToComment();
        if (comment == nullptr)
            break;
        const std::optional<Suppression> suppression = ReadSuppression(*comment);
        if (!suppression || !suppression->saysIgnore)
            continue;
        for (const std::string& name : suppression->rules) {
            if (const Rule* rule = FindRule(name))
                Suppress(*rule, comment->Row(), findings);
        }
    }
}

void CheckSuppressions(const TiXmlDocument& table, Findings& findings)
{
    constexpr int kLevels = 3; // next to the root, next to the records, within a record
    CheckChildren(table, kLevels, findings);
}
