// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "suppressions.h"

#include <optional>
#include <sstream>
#include <tinyxml.h>

#include "quotedText.h"
#include "rules.h"

namespace
{

constexpr char kMark[] = "kestrune-table-check:";

/// @return the words behind the mark; nothing for a comment of another kind
std::optional<std::vector<std::string>> WordsBehindMark(const TiXmlComment& comment)
{
    std::istringstream stream(comment.ValueStr());
    std::string word;
    if (!(stream >> word) || word != kMark)
        return std::nullopt;
    std::vector<std::string> words;
    while (stream >> word)
        words.push_back(word);
    return words;
}

const TiXmlNode* SkipComments(const TiXmlNode* node)
{
    while (node != nullptr && node->ToComment() != nullptr)
        node = node->NextSibling();
    return node;
}

bool StandsBeforeRecord(const TiXmlComment& comment)
{
    const TiXmlNode* next = SkipComments(&comment);
    const TiXmlDocument* document = comment.GetDocument();
    return next != nullptr && next->ToElement() != nullptr && comment.Parent() == document->RootElement();
}

void CheckWords(const std::vector<std::string>& words, int line, Findings& findings)
{
    if (words.size() < 2 || words.front() != "ignore")
        findings.push_back({"KT021", line, "the comment does not say \"ignore\" and a rule: nothing is suppressed"});
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (FindRule(words[i]) == nullptr)
            findings.push_back({"KT021", line, "there is no rule " + QuotedText(words[i]) + " to suppress"});
    }
}

void CheckComment(const TiXmlComment& comment, Findings& findings)
{
    const auto words = WordsBehindMark(comment);
    if (!words)
        return;
    CheckWords(*words, comment.Row(), findings);
    if (!StandsBeforeRecord(comment))
        findings.push_back({"KT021", comment.Row(), "no record follows the comment: nothing is suppressed"});
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

std::set<std::string> SuppressedRules(const TiXmlNode& record)
{
    std::set<std::string> rules;
    for (const TiXmlNode* node = record.PreviousSibling(); node != nullptr; node = node->PreviousSibling()) {
        const TiXmlComment* comment = node->ToComment();
        if (comment == nullptr)
            break;
        const auto words = WordsBehindMark(*comment);
        if (words && !words->empty() && words->front() == "ignore")
            rules.insert(words->begin() + 1, words->end());
    }
    return rules;
}

void CheckSuppressions(const TiXmlDocument& table, Findings& findings)
{
    constexpr int kLevels = 3; // beside the root, beside the records, within a record
    CheckChildren(table, kLevels, findings);
}
