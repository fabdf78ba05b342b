// The text of a configuration file: what counts as section and key, and that a change touches its own bytes alone.

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

/// The format's rules written a second time, line by line and without a thought for speed.
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
    int place = -1; // the line behind which a new key goes
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

/// Bytes as configuration files might hold them, mostly those that mean something.
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
const std::vector<std::string> kValues = {"", "v", "v ", "a=b", "[S]", "; c", "\"q\"", "\xFF\x80", "-1", "\v"};

/// One change by the code and by the second writing of the rules: the same bytes, the value set, all others as they
/// were.
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

struct ChangeRow {
    std::string before;
    std::string after; // with "k" of section "S" set to "new"
};

void ExpectChanges(const std::vector<ChangeRow>& rows)
{
    for (const ChangeRow& row : rows)
        EXPECT_EQ(AfterSetting(row.before, "S", "k", "new"), row.after) << testing::PrintToString(row.before);
}

} // namespace

TEST(SetIniValue, AChangeTouchesTheBytesOfTheValueAlone)
{
    ExpectChanges({
        // Line ends.
        {"[S]\nk=old\nx=1\n", "[S]\nk=new\nx=1\n"},
        {"[S]\r\nk=old\r\nx=1\r\n", "[S]\r\nk=new\r\nx=1\r\n"},
        {"[S]\nk=old\r\nx=1\n\r\n", "[S]\nk=new\r\nx=1\n\r\n"},
        {"[S]\r\nk=old\nx=1", "[S]\r\nk=new\nx=1"},
        {"[S]\nx=1\nk=old", "[S]\nx=1\nk=new"},
        {"[S]\nk=old\r\r\n", "[S]\nk=new\r\n"},
        {"[S]\nk=o\rx=1\n", "[S]\nk=new\n"},
        {"[S]\nk=old\r", "[S]\nk=new"},
        // Byte order mark: only one, only whole, only at the start.
        {kMark + "[S]\nk=old\n", kMark + "[S]\nk=new\n"},
        {kMark + kMark + "[S]\nk=1\n[S]\nk=old\n", kMark + kMark + "[S]\nk=1\n[S]\nk=new\n"},
        {"\xEF\xBB[S]\nk=1\n[S]\nk=old\n", "\xEF\xBB[S]\nk=1\n[S]\nk=new\n"},
        {"\n" + kMark + "[S]\nk=1\n[S]\nk=old\n", "\n" + kMark + "[S]\nk=1\n[S]\nk=new\n"},
        // Any byte is kept.
        {"\0\xFF\n[S]\n\0=\xFF\0\nk=o\0ld\n\xC3\x28=\x80\n"s, "\0\xFF\n[S]\n\0=\xFF\0\nk=new\n\xC3\x28=\x80\n"s},
        {"[S]\n\0k=1\nk\0=2\nk=old\n"s, "[S]\n\0k=1\nk\0=2\nk=new\n"s},
        // Blanks and "=".
        {"[S]\n \tk\t =  old  \n", "[S]\n \tk\t =  new\n"},
        {"[S]\nk= \t\n", "[S]\nk= \tnew\n"},
        {"[S]\nk=\n", "[S]\nk=new\n"},
        {"[S]\nk=", "[S]\nk=new"},
        {"[S]\nk=a=b = c\n", "[S]\nk=new\n"},
        {"[S]\nk==old\n", "[S]\nk=new\n"},
        {"[S]\n=1\n \t=2\nk\nk=old\n", "[S]\n=1\n \t=2\nk\nk=new\n"},
        {"[S]\n\vk=1\nk\v=2\nk=old\n", "[S]\n\vk=1\nk\v=2\nk=new\n"},
        // Quotes and comments.
        {"[S]\n\"k\"=1\nk=\"old\"\n", "[S]\n\"k\"=1\nk=new\n"},
        {"[S]\n;k=1\n#k=2\n \t; k=3\n\t#k=4\nk=old\n", "[S]\n;k=1\n#k=2\n \t; k=3\n\t#k=4\nk=new\n"},
        {"[S]\nk=old ; note # note\n", "[S]\nk=new\n"},
        // Names match byte for byte.
        {"[s]\nk=1\n[S ]\nk=2\n[ S]\nk=3\n[S]\nK=4\nkk=5\nk=old\n",
         "[s]\nk=1\n[S ]\nk=2\n[ S]\nk=3\n[S]\nK=4\nkk=5\nk=new\n"},
        // Section lines.
        {" \t[S]\nk=old\n", " \t[S]\nk=new\n"},
        {"[S] ; rest ] [T]\nk=old\n", "[S] ; rest ] [T]\nk=new\n"},
        {"[S]k=1\nk=old\n", "[S]k=1\nk=new\n"},
        {"[S]]\nk=old\n", "[S]]\nk=new\n"},
        {"[[S]\nk=1\n[S]\nk=old\n", "[[S]\nk=1\n[S]\nk=new\n"},
        {"[S\nk=1\n[S]\nk=old\n", "[S\nk=1\n[S]\nk=new\n"},
        {"[S]\n[T\n]T[\nT]\n[U=1\nk=old\n", "[S]\n[T\n]T[\nT]\n[U=1\nk=new\n"},
        {";[S]\nk=1\n[]\nk=2\n[S]\nk=old\n", ";[S]\nk=1\n[]\nk=2\n[S]\nk=new\n"},
        {"[S]\nx=1\n[k=old]\nk=1\n[S]\nk=old\n", "[S]\nx=1\n[k=old]\nk=1\n[S]\nk=new\n"},
        // Doubles, and keys before a section.
        {"[S]\nk=old\nk=2\n[S]\nk=3\n", "[S]\nk=new\nk=2\n[S]\nk=3\n"},
        {"[S]\nx=1\n[T]\nk=1\n[S]\nk=old\nk=2\n", "[S]\nx=1\n[T]\nk=1\n[S]\nk=new\nk=2\n"},
        {"k=1\n[S]\nk=old\n", "k=1\n[S]\nk=new\n"},
    });
}

TEST(SetIniValue, LinesOfAMegabyteAreLinesLikeAnyOther)
{
    const std::string megabyte(1 << 20, 'x');
    ExpectChanges({
        {"[S]\nk=" + megabyte + "\ny=1\n", "[S]\nk=new\ny=1\n"},
        {"[S]\n" + megabyte + "=1\nk=old\n", "[S]\n" + megabyte + "=1\nk=new\n"},
        {";" + megabyte + "\n[S]\n[" + megabyte + "\nk=old\n", ";" + megabyte + "\n[S]\n[" + megabyte + "\nk=new\n"},
        {"[S]" + megabyte, "[S]" + megabyte + "\nk=new\n"},
    });
    EXPECT_EQ(AfterSetting("[S]\nk=old\n", "S", "k", megabyte), "[S]\nk=" + megabyte + "\n");
    EXPECT_EQ(FindIniValue("[S]\nk=" + megabyte + "\n", "S", "k"), megabyte);
}

TEST(SetIniValue, AnAddedKeyGoesBehindTheLastKeyOfTheFirstSectionOfThatName)
{
    ExpectChanges({
        {"[S]\n", "[S]\nk=new\n"},
        {"[S]", "[S]\nk=new\n"},
        {kMark + "[S]", kMark + "[S]\nk=new\n"},
        {"[S]\nx=1\n", "[S]\nx=1\nk=new\n"},
        {"[S]\nx=1", "[S]\nx=1\nk=new\n"},
        {"[S]\nx=1\n; note\n\nno key\n[T]\nk=2\n", "[S]\nx=1\nk=new\n; note\n\nno key\n[T]\nk=2\n"},
        {"[S]\nx=1\n; note", "[S]\nx=1\nk=new\n; note"},
        {"[S]\n; note\n\n[T]\nk=2\n", "[S]\nk=new\n; note\n\n[T]\nk=2\n"},
        {"[S] rest\n[T]\n", "[S] rest\nk=new\n[T]\n"},
        {"[S]\n[T]\n[S]\nx=1\n", "[S]\nk=new\n[T]\n[S]\nx=1\n"},
        {"k=1\n[T]\nk=1\n[S]\n;k=1\n", "k=1\n[T]\nk=1\n[S]\nk=new\n;k=1\n"},
        {"[S]\n[x=1\n\n[T]\n", "[S]\n[x=1\nk=new\n\n[T]\n"},
        // The blanks around "=" are those of the key line before; blanks in front of a name are not copied.
        {"[S]\nx = 1\n", "[S]\nx = 1\nk = new\n"},
        {"[S]\nx\t=1\n", "[S]\nx\t=1\nk\t=new\n"},
        {"[S]\nx=  1\n", "[S]\nx=  1\nk=  new\n"},
        {"[S]\nx = 1\ny=1\n", "[S]\nx = 1\ny=1\nk=new\n"},
        {"[S]\nx=1\n; y = 1\n", "[S]\nx=1\nk=new\n; y = 1\n"},
        {"[S]\n\t x=1\n", "[S]\n\t x=1\nk=new\n"},
        {"x = 1\n[T]\nx = 1\n[S]\n", "x = 1\n[T]\nx = 1\n[S]\nk=new\n"},
        // The line ends as the file's first line does.
        {"[S]\r\n", "[S]\r\nk=new\r\n"},
        {"[S]\r\nx=1", "[S]\r\nx=1\r\nk=new\r\n"},
        {"[S]\nx=1\r\n", "[S]\nx=1\r\nk=new\n"},
        {"\r\n[S]\nx=1\n", "\r\n[S]\nx=1\nk=new\r\n"},
        {"\n[S]\r\nx=1\r\n", "\n[S]\r\nx=1\r\nk=new\n"},
        {kMark + "\r\n[S]\n", kMark + "\r\n[S]\nk=new\r\n"},
        {";\r\r\n[S]", ";\r\r\n[S]\r\nk=new\r\n"},
    });
}

TEST(SetIniValue, AnAddedSectionGoesToTheEndBehindABlankLine)
{
    ExpectChanges({
        {"", "[S]\nk=new\n"},
        {kMark, kMark + "[S]\nk=new\n"},
        {"[T]\nx=1\n", "[T]\nx=1\n\n[S]\nk=new\n"},
        {"[T]\nx=1", "[T]\nx=1\n\n[S]\nk=new\n"},
        {kMark + ";", kMark + ";\n\n[S]\nk=new\n"},
        {"k=1\n", "k=1\n\n[S]\nk=new\n"},
        {"[T]\nx = 1\n", "[T]\nx = 1\n\n[S]\nk=new\n"},
        {"[S\n", "[S\n\n[S]\nk=new\n"},
        // A blank line is there already.
        {"\n", "\n[S]\nk=new\n"},
        {" \t", " \t\n[S]\nk=new\n"},
        {kMark + "\n", kMark + "\n[S]\nk=new\n"},
        {kMark + " ", kMark + " \n[S]\nk=new\n"},
        {"[T]\nx=1\n\n", "[T]\nx=1\n\n[S]\nk=new\n"},
        {"[T]\nx=1\n \t\n", "[T]\nx=1\n \t\n[S]\nk=new\n"},
        {"[T]\nx=1\n  ", "[T]\nx=1\n  \n[S]\nk=new\n"},
        {"[T]\nx=1\n\r\n", "[T]\nx=1\n\r\n[S]\nk=new\n"},
        {"[T]\nx=1\n\n\n", "[T]\nx=1\n\n\n[S]\nk=new\n"},
        // Line ends.
        {"[T]\r\nx=1\r\n", "[T]\r\nx=1\r\n\r\n[S]\r\nk=new\r\n"},
        {"[T]\r\nx=1", "[T]\r\nx=1\r\n\r\n[S]\r\nk=new\r\n"},
        {"[T]\nx=1\r\n", "[T]\nx=1\r\n\n[S]\nk=new\n"},
        {"\r\n", "\r\n[S]\r\nk=new\r\n"},
    });
}

TEST(SetIniValue, WhatTheFormatCannotHoldIsRefusedAndChangesNothing)
{
    struct Row {
        std::string section;
        std::string key;
        std::string value;
    };
    const Row rows[] = {
        {"", "k", "v"},     {"S]", "k", "v"},    {"]", "k", "v"},   {"S\r", "k", "v"}, {"S\nT", "k", "v"},
        {"S\0"s, "k", "v"}, {"S", "", "v"},      {"S", "k=", "v"},  {"S", "=", "v"},   {"S", "a=b", "v"},
        {"S", "k\r", "v"},  {"S", "k\n", "v"},   {"S", "\0"s, "v"}, {"S", " k", "v"},  {"S", "\tk", "v"},
        {"S", "k ", "v"},   {"S", "k\t", "v"},   {"S", " ", "v"},   {"S", "[k", "v"},  {"S", "[", "v"},
        {"S", ";k", "v"},   {"S", "#", "v"},     {"S", "k", "v\r"}, {"S", "k", "\n"},  {"S", "k", "a\r\nb"},
        {"S", "k", "\0"s},  {"S", "k", "a\0b"s}, {"S", "x", "1\n"}, {"S", "[x", "v"},  {"new", "k", "\r"},
    };
    for (const std::string& before : {""s, "[S]\nk=old\nx=1"s, "[S]\n[x=1\n[]\nk=1\n\n"s}) {
        for (const Row& row : rows) {
            std::string text = before;
            EXPECT_FALSE(SetIniValue(text, row.section, row.key, row.value))
                << testing::PrintToString(row.section) << testing::PrintToString(row.key)
                << testing::PrintToString(row.value);
            EXPECT_EQ(text, before);
        }
    }
}

TEST(FindIniValue, GivesTheTextBehindTheEqualsSignLessTheBlanksThatLeadIt)
{
    struct Row {
        std::string text;
        std::optional<std::string> expected; // value of "k" in section "S"
    };
    const Row rows[] = {
        {"", std::nullopt},
        {kMark, std::nullopt},
        {"k=1\n", std::nullopt},
        {"[S]\n", std::nullopt},
        {"[T]\nk=1\n", std::nullopt},
        {"[S]\nk\n", std::nullopt},
        {"[S]\nk:1\n", std::nullopt},
        {"[S]\n;k=1\n", std::nullopt},
        {"[S]\nk=1\n", "1"},
        {"[S]\nk=\n", ""},
        {"[S]\nk= \t\n", ""},
        {"[S]\nk=", ""},
        {"[S]\nk=1", "1"},
        {"[S]\nk=1\r", "1\r"},
        {"[S]\r\nk=1\r\n", "1"},
        {"[S]\r\nk=1\r\r\n", "1\r"},
        {"[S]\nk \t= \t1 \t\n", "1 \t"},
        {"[S]\nk=\v1\n", "\v1"},
        {"[S]\nk=a = b\n", "a = b"},
        {"[S]\nk=\"1\"\n", "\"1\""},
        {"[S]\nk=1 ; no comment # at all\n", "1 ; no comment # at all"},
        {"[S]\nk=;1\n", ";1"},
        {"[S]\nk=a\\\nb\n", "a\\"},
        {"[S]\nk=a\0\xFF\n"s, "a\0\xFF"s},
        {"[S]\nk=1\nk=2\n[S]\nk=3\n", "1"},
        {"[S]\nk=\nk=2\n", ""},
        {"[S]\n[T]\nk=1\n[S]\nk=2\n", "2"},
        {kMark + "[S]\nk=1\n", "1"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(FindIniValue(row.text, "S", "k"), row.expected) << testing::PrintToString(row.text);
}

TEST(FindIniValue, FindsNamesThatNoChangeWouldTake)
{
    EXPECT_EQ(FindIniValue("[S]\n[k=1\n", "S", "[k"), "1");
    EXPECT_EQ(FindIniValue("[]\nk=1\n", "", "k"), "1");
    EXPECT_EQ(FindIniValue("[S]\nk\0x=1\n"s, "S", "k\0x"s), "1");
    EXPECT_EQ(FindIniValue("[S]\nk=1\n", "", "k"), std::nullopt);
    EXPECT_EQ(FindIniValue("k=1\n", "", "k"), std::nullopt);
    EXPECT_EQ(FindIniValue("[S]\n=1\n", "S", ""), std::nullopt);
}

TEST(IniText, RandomTextsReadAndChangeAsTheRulesSay)
{
    RandomTexts random;
    for (int i = 0; i < 20000 && !testing::Test::HasFailure(); ++i) {
        std::string text = random.Next();
        while (!text.empty() && text.back() == '\r')
            text.pop_back(); // a test of its own
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
            continue; // a test of its own
        for (const char* section : {"S", "T", "new"}) {
            for (const char* key : {"k", "a", "x"})
                ExpectSetAsTheRulesSay(text, section, key, "v");
        }
    }
}
