// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The text of a configuration file, compared with a second implementation of the format's rules.

#include "iniText.h"

#include <gtest/gtest.h>
#include <random>
#include <regex>
#include <string>
#include <vector>

using namespace std::string_literals;

namespace
{

const std::string kMark = "\xEF\xBB\xBF";

std::string AfterSetting(std::string text, const std::string& section, const std::string& key, const std::string& value)
{
    EXPECT_TRUE(SetIniValue(text, section, key, value)) << testing::PrintToString(text);
    return text;
}

/// A second implementation of the format's rules, line by line and without optimisation.
struct PlainLine {
    std::string lead;  // a key line's bytes before the value; of any other line all of them
    std::string value; // of a key line
    std::string end;   // "\n", "\r\n" or nothing
    bool isSection = false;
    bool isKey = false;
    std::string name;
    std::string blanksBefore; // around the "="
    std::string blanksBehind;
};

PlainLine ReadPlainly(const std::string& content, const std::string& end)
{
    static const std::regex section(R"([ \t]*\[([^\]]*)\][\s\S]*)");
    static const std::regex comment(R"([ \t]*[;#][\s\S]*)");
    static const std::regex key(R"(([ \t]*([^=]*[^= \t])([ \t]*)=([ \t]*))([\s\S]*))");

    PlainLine line;
    line.lead = content;
    line.end = end;
    std::smatch found;
    if (std::regex_match(content, found, section)) {
        line.isSection = true;
        line.name = found[1];
    } else if (!std::regex_match(content, comment) && std::regex_match(content, found, key)) {
        line.isKey = true;
        line.lead = found[1];
        line.name = found[2];
        line.blanksBefore = found[3];
        line.blanksBehind = found[4];
        line.value = found[5];
    }
    return line;
}

/// @param text  without a byte order mark
std::vector<PlainLine> ReadLinesPlainly(std::string text)
{
    std::vector<PlainLine> lines;
    while (!text.empty()) {
        std::string content = text.substr(0, text.find('\n'));
        const bool hasFeed = content.size() < text.size();
        text.erase(0, content.size() + (hasFeed ? 1 : 0));
        const bool hasReturn = hasFeed && !content.empty() && content.back() == '\r';
        if (hasReturn)
            content.pop_back();
        lines.push_back(ReadPlainly(content, !hasFeed ? "" : hasReturn ? "\r\n" : "\n"));
    }
    return lines;
}

std::string WithoutMark(const std::string& text)
{
    return text.substr(0, 3) == kMark ? text.substr(3) : text;
}

struct PlainKey {
    std::string section;
    std::string name;
    std::string value;
};

std::vector<PlainKey> KeysPlainly(const std::string& text)
{
    std::vector<PlainKey> keys;
    bool isInSection = false;
    std::string section;
    for (const PlainLine& line : ReadLinesPlainly(WithoutMark(text))) {
        if (line.isSection) {
            section = line.name;
            isInSection = true;
        } else if (line.isKey && isInSection) {
            keys.push_back({section, line.name, line.value});
        }
    }
    return keys;
}

std::optional<std::string> FindPlainly(const std::string& text, const std::string& section, const std::string& key)
{
    for (const PlainKey& found : KeysPlainly(text)) {
        if (found.section == section && found.name == key)
            return found.value;
    }
    return std::nullopt;
}

std::string SetPlainly(const std::string& text, const std::string& section, const std::string& key,
                       const std::string& value)
{
    std::vector<PlainLine> lines = ReadLinesPlainly(WithoutMark(text));
    const std::string end = lines.empty() || lines.front().end.empty() ? "\n" : lines.front().end;
    const bool isPresent = FindPlainly(text, section, key).has_value();
    int place = -1; // the line after which a new key is added
    int sectionNumber = 0;
    std::string current;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        PlainLine& line = lines[i];
        if (line.isSection) {
            current = line.name;
            sectionNumber += current == section || place != -1 ? 1 : 0;
        }
        const bool isHere = sectionNumber > 0 && current == section;
        if (isPresent && isHere && line.isKey && line.name == key) {
            line.value = value;
            break;
        }
        if (sectionNumber == 1 && isHere && (line.isSection || line.isKey))
            place = static_cast<int>(i);
    }
    if (!isPresent) {
        PlainLine added;
        added.end = end;
        added.value = value;
        added.lead = key + "=";
        if (place == -1) {
            const bool endsBlank = lines.empty() || lines.back().lead.find_first_not_of(" \t") == std::string::npos;
            if (!lines.empty() && lines.back().end.empty())
                lines.back().end = end;
            added.lead = (endsBlank ? "" : end) + "[" + section + "]" + end + key + "=";
            lines.push_back(added);
        } else {
            PlainLine& before = lines[static_cast<std::size_t>(place)];
            if (before.end.empty())
                before.end = end;
            if (before.isKey)
                added.lead = key + before.blanksBefore + "=" + before.blanksBehind;
            lines.insert(lines.begin() + place + 1, added);
        }
    }
    std::string result = text.substr(0, text.size() - WithoutMark(text).size());
    for (const PlainLine& line : lines)
        result += line.lead + line.value + line.end;
    return result;
}

/// Bytes that may occur in configuration files, mostly those with a meaning.
class RandomTexts
{
public:
    std::string Next()
    {
        static const std::vector<std::string> pieces = {
            "[", "]", "=",  "=",  ";",     "#",       " ",  "\t",   "\r",  "\n",   "\n",  "\r\n", "S",  "T",   "k",
            "a", "v", "\"", "\\", "[S]\n", "[T]\r\n", "k=", "a = ", "\0"s, "\xFF", kMark, "\xEF", "\v", "\x7F"};
        std::string text = Number(8) == 0 ? kMark : "";
        for (std::size_t i = Number(40); i > 0; --i)
            text += pieces[Number(pieces.size())];
        return text;
    }

    const std::string& OneOf(const std::vector<std::string>& texts) { return texts[Number(texts.size())]; }
    std::size_t Number(std::size_t below) { return generator_() % below; }

private:
    std::mt19937 generator_{20240229};
};

const std::vector<std::string> kSections = {"S", "T", " S", "S=", ";", "[", "\xFF", "new section"};
const std::vector<std::string> kKeys = {"k", "a", "k k", "]", "k;", "a[S]", "\"k\"", "\xFF\xFE", "\v"};
const std::vector<std::string> kValues = {"", "v", "v ", "a=b", "[S]", "; c", "\"q\"", "\xFF\x80", "-1", "\v", "a\rb"};

/// One change by the code and by the second implementation: the same bytes, the value set, all others unchanged.
void ExpectSetAsTheRulesSay(const std::string& text, const std::string& section, const std::string& key,
                            const std::string& value)
{
    SCOPED_TRACE("text " + testing::PrintToString(text) + " section " + section + " key " + key + " value " + value);
    const std::string changed = AfterSetting(text, section, key, value);
    EXPECT_EQ(changed, SetPlainly(text, section, key, value));
    EXPECT_EQ(FindIniValue(changed, section, key), value);
    EXPECT_EQ(AfterSetting(changed, section, key, value), changed) << "a second equal change";

    std::vector<PlainKey> before = KeysPlainly(text);
    bool isFirst = true;
    for (const PlainKey& found : KeysPlainly(changed)) {
        if (found.section == section && found.name == key && isFirst) {
            isFirst = false;
            if (before.empty() || before.front().section != section || before.front().name != key)
                continue; // it was added
        } else {
            ASSERT_FALSE(before.empty());
            EXPECT_EQ(found.value, before.front().value);
        }
        ASSERT_FALSE(before.empty());
        EXPECT_EQ(found.section, before.front().section);
        EXPECT_EQ(found.name, before.front().name);
        before.erase(before.begin());
    }
    EXPECT_TRUE(before.empty());
}

} // namespace

TEST(IniText, RandomTextsReadAndChangeAsTheRulesSay)
{
    RandomTexts random;
    for (int i = 0; i < 20000 && !testing::Test::HasFailure(); ++i) {
        std::string text = random.Next();
        while (!text.empty() && text.back() == '\r')
            text.pop_back(); // covered by another test
        for (const std::string& key : kKeys)
            EXPECT_EQ(FindIniValue(text, "S", key), FindPlainly(text, "S", key)) << testing::PrintToString(text);
        ExpectSetAsTheRulesSay(text, random.OneOf(kSections), random.OneOf(kKeys), random.OneOf(kValues));
    }
}

TEST(IniText, ATextCutOffAtAnyByteReadsAndChangesAsTheRulesSay)
{
    const std::string whole =
        kMark + "; note\r\nx=1\n[S] rest\n a = 1 \n[T\nk\n\n[T]\n#k=1\nk == 2\n  \n[S]\nk=\"3\"\n";
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        const std::string text = whole.substr(0, length);
        if (!text.empty() && text.back() == '\r')
            continue; // covered by another test
        for (const char* section : {"S", "T", "new"}) {
            for (const char* key : {"k", "a", "x"})
                ExpectSetAsTheRulesSay(text, section, key, "v");
        }
    }
}
