// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The guard has to agree with the library about what an element is: a document that hides nesting from the guard would
// exhaust the library's stack, and a harmless one that seems nested must not be refused.

#include "xmlGuard.h"

#include <algorithm>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <tinyxml.h>
#include <vector>

#include "xmlText.h"

namespace
{

constexpr char kTooDeep[] = "Document nested too deep.";
constexpr char kTooManyElements[] = "Document has too many elements.";
constexpr char kTooManyAttributes[] = "Element has too many attributes.";

constexpr char kUtf8Mark[] = "\xEF\xBB\xBF";
constexpr char kUtf8[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";
constexpr char kLatin1[] = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>";
constexpr char kNoEncoding[] = "<?xml version=\"1.0\"?>"; // which the library reads as UTF-8

/// The guard's reason for a refusal, or "" if it accepts the text.
std::string Refusal(const std::string& text)
{
    const char* reason = RefuseXml(text);
    return reason == nullptr ? "" : reason;
}

/// That many levels of one element each, with an empty innermost one.
std::string Nested(int levels, const std::string& start = "<a>", const std::string& end = "</a>")
{
    return Repeat(start, levels) + Repeat(end, levels);
}

/// The result of the library for a text.
struct Built {
    bool isLoaded = false;
    int depth = 0; // of a failed load: the levels before the failure
    int elements = 0;
    int attributes = 0; // the maximum of one element
};

void Measure(const TiXmlNode& node, int depth, Built& built)
{
    for (const TiXmlElement* child = node.FirstChildElement(); child != nullptr; child = child->NextSiblingElement()) {
        ++built.elements;
        built.depth = std::max(built.depth, depth + 1);
        int attributes = 0;
        for (const TiXmlAttribute* attribute = child->FirstAttribute(); attribute != nullptr;
             attribute = attribute->Next())
            ++attributes;
        built.attributes = std::max(built.attributes, attributes);
        Measure(*child, depth + 1, built);
    }
}

/// Loads the text as that of a file, with room after it, since the library reads past a truncated character.
Built BuildWithLibrary(std::string text)
{
    text.append(8, '\0');
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> stream(fmemopen(text.data(), text.size(), "r"), &std::fclose);
    TiXmlDocument document;
    Built built;
    built.isLoaded = document.LoadFile(stream.get());
    Measure(document, 0, built);
    return built;
}

bool IsBeyondLimits(const Built& built)
{
    return built.depth > kDeepestElement || built.elements > kMostElements || built.attributes > kMostAttributes;
}

/// The property of every text: an accepted text never takes the library beyond a limit, loaded or not; a refused one
/// would have done so, or would not have loaded.
void ExpectAgreement(const std::string& text, const Built& built)
{
    if (Refusal(text).empty())
        EXPECT_FALSE(IsBeyondLimits(built)) << "depth " << built.depth << ": " << text;
    else
        EXPECT_TRUE(IsBeyondLimits(built) || !built.isLoaded)
            << Refusal(text) << " depth " << built.depth << ": " << text;
}

} // namespace

TEST(XmlGuardRefuseSize, FourMebibytesAreTheMost)
{
    EXPECT_EQ(RefuseSize(0), nullptr);
    EXPECT_EQ(RefuseSize(4194304), nullptr);
    EXPECT_STREQ(RefuseSize(4194305), "Document too large.");
    EXPECT_STREQ(RefuseSize(static_cast<std::size_t>(-1)), "Document too large.");
}

TEST(XmlGuard, TwoHundredLevelsAreTheMost)
{
    EXPECT_EQ(Refusal(Nested(200)), "");
    EXPECT_EQ(Refusal(Nested(201)), kTooDeep);
    EXPECT_EQ(Refusal(Repeat("<a>", 199) + "<b/>" + Repeat("</a>", 199)), "");
    EXPECT_EQ(Refusal(Repeat("<a>", 200) + "<b/>" + Repeat("</a>", 200)), kTooDeep);
    EXPECT_EQ(Refusal(Repeat("<a>", 500000)), kTooDeep);
    EXPECT_EQ(Refusal("<r>" + Repeat(Nested(199), 50) + "</r>"), "");
    EXPECT_EQ(Refusal(Repeat(Nested(200), 50)), "");
}

TEST(XmlGuard, AHundredThousandElementsAreTheMost)
{
    EXPECT_EQ(Refusal(Element("r", "", Repeat("<a/>", 99999))), "");
    EXPECT_EQ(Refusal(Element("r", "", Repeat("<a/>", 100000))), kTooManyElements);
    EXPECT_EQ(Refusal(Repeat("<a></a>", 100000)), "");
    EXPECT_EQ(Refusal(Repeat("<a></a>", 100001)), kTooManyElements);
}

TEST(XmlGuard, TwoHundredAndFiftySixAttributesAreTheMost)
{
    std::string attributes;
    for (int number = 1; number <= 256; ++number)
        attributes += " a" + std::to_string(number) + "=''";
    for (const char* end : {"/>", "></r>", " />"}) {
        EXPECT_EQ(Refusal("<r" + attributes + end), "") << end;
        EXPECT_EQ(Refusal("<r" + attributes + " b=''" + end), kTooManyAttributes) << end;
    }
    EXPECT_EQ(Refusal("<r><x" + attributes + "/><x" + attributes + "/></r>"), "");
}

TEST(XmlGuard, WhatIsNoElementIsNotCounted)
{
    const std::string manyTags = Repeat("<b>", 300);
    const std::string rows[] = {
        "<a><!-- " + manyTags + " --></a>",
        "<a><!--" + manyTags + "--></a>",
        "<!-- " + manyTags + " --><a/>",
        "<a><![CDATA[" + manyTags + "]]></a>",
        "<a><![CDATA[" + manyTags + "]]]]></a>",
        "<a>" + Repeat("<?b <b>", 300) + "</a>",
        "<a>" + Repeat("<!b <b>", 300) + "</a>",
        "<a>" + Repeat("<1><-><>< b>", 300) + "</a>",
        "<a b=\"" + manyTags + "\"/>",
        "<a b='" + manyTags + "'></a>",
        "<a>" + Repeat("<b c=\"</b>'<b>\"/>", 300) + "</a>",
        "<a>" + Repeat("<b c=<b/>", 300) + "</a>",
        "<a>" + Repeat("&lt;b&gt;&#60;b>", 300) + "</a>",
        "<a>" + Repeat("<b></b >", 300) + Repeat("<b></b\n\t>", 300) + "</a>",
        "<!DOCTYPE a><a/>",
        "<a/> the library reads no further than this text " + manyTags,
        "<a></b>" + Nested(150), // which the library never reads
    };
    for (const std::string& text : rows) {
        SCOPED_TRACE(text.substr(0, 60));
        EXPECT_EQ(Refusal(text), "");
        ExpectAgreement(text, BuildWithLibrary(text));
    }
}

TEST(XmlGuard, WhatOnlyLooksLikeAnEndTagEndsNothing)
{
    struct Row {
        const char* name;
        std::string start; // of one level, with a detail that a careless parser would treat as its end
    };
    const Row rows[] = {
        {"comment", "<a><!-- </a> -->"},
        {"comment that begins like its end", "<a><!--> </a> -->"},
        {"character data", "<a><![CDATA[</a>]]>"},
        {"double quotes", "<a b=\"</a>\">"},
        {"single quotes", "<a b='\"</a>'>"},
        {"slash in a value", "<a b='/>'>"},
        {"larger-than sign in a value", "<a b='>' c=\"/>\">"},
        {"processing instruction", "<a><?x </a ?>"},
        {"declaration", "<a><?xml version='></a>' ?>"},
        {"document type", "<a><!x </a y>"},
        {"no name", "<a>< /a>"},
        {"reference", "<a>&#x</a>x41;"},
        {"decimal reference", "<a>&#</a>#65;"},
        {"reference in a value", "<a b=\"&#x\"/>x41;\">"},
        {"blanks", "<a\n\tb\r = \v'1'\f>"},
        {"no blank between attributes", "<a b='1'c=\"2\">"},
        {"bytes that lead no character", "<a b='\xC1' c='\xC0' d='\xF5' e='\xF7'>"},
        {"a letter to the library", "<a \x7F='1'>"},
    };
    for (const Row& row : rows) {
        for (const char* prefix : {"", kUtf8Mark, kUtf8, kLatin1, kNoEncoding}) {
            SCOPED_TRACE(std::string(row.name) + " " + prefix);
            for (const int levels : {200, 201}) {
                const std::string text = prefix + Nested(levels, row.start);
                const Built built = BuildWithLibrary(text);
                EXPECT_TRUE(built.isLoaded);
                EXPECT_EQ(built.depth, levels);
                EXPECT_EQ(Refusal(text), levels > 200 ? kTooDeep : "");
            }
        }
    }
}

TEST(XmlGuard, ALeadByteTakesWhatFollowsWithItInUtf8Alone)
{
    struct Row {
        std::string start; // of one level
        std::string end;
        bool isOneLevelInUtf8; // otherwise it is one in any other encoding
    };
    const Row rows[] = {
        {"<a b=\"\xC3\" c=\">", "</a>", true},                // the quote
        {"<a b='\xF0'><'>", "</a>", true},                    // and what follows it
        {"<a>\xC3</a>", "</a>", true},                        // the "<" of an end tag
        {"<a>\xE2\x80</a>", "</a>", true},                    // the "<" as the last of three bytes
        {"<a>\xC3&#x;", "</a>", true},                        // the start of a reference
        {"<a \xEF\xBB\xBF b='1'\xEF\xBF\xBE>", "</a>", true}, // white space to the library
        {"<a>\xC3", "</a>", false},
        {"<a \xEF\xBB\xBF='1'>", "</a>", false}, // a name
        {"<a b=\"\xC3\">", "</a>", false},
        {"<a b='\xF4'>\xE0", "</a>", false},
    };
    for (const Row& row : rows) {
        for (const char* prefix : {kUtf8Mark, kUtf8, kNoEncoding, "", kLatin1}) {
            SCOPED_TRACE(row.start + " " + prefix);
            const bool isUtf8 = prefix != std::string() && prefix != std::string(kLatin1);
            for (const int levels : {100, 200, 201}) {
                const std::string text = prefix + Nested(levels, row.start, row.end);
                const Built built = BuildWithLibrary(text);
                ExpectAgreement(text, built);
                if (isUtf8 != row.isOneLevelInUtf8)
                    continue;
                EXPECT_TRUE(built.isLoaded);
                EXPECT_EQ(built.depth, levels);
                EXPECT_EQ(Refusal(text), levels > 200 ? kTooDeep : "");
            }
        }
    }
}

TEST(XmlGuard, TheEncodingIsWhatTheMarkOrElseTheFirstDeclarationSays)
{
    struct Row {
        std::string prefix;
        bool isUtf8;
    };
    const Row rows[] = {
        {"", false},
        {kUtf8Mark, true},
        {std::string(kUtf8Mark) + kLatin1, true},
        {kUtf8, true},
        {std::string(kUtf8) + kLatin1, true},
        {kLatin1, false},
        {std::string(kLatin1) + kUtf8, false},
        {kNoEncoding, true},
        {std::string("<!-- first --> ") + kUtf8, true},
        {"<?xml encoding='utf8'?>", true},
        {"<?xml encoding='Utf-8 and more'?>", true},
        {"<?xml encoding='utf'?>", false},
        {"<?xml encoding=''?>", true},
        {"<?xml encoding=UTF-8?>", true},
        {"<?xml encoding='latin' encoding='utf-8'?>", true},
        {"<?XML VERSION='1.0' ENCODING='latin'?>", false},
        {"<?XML ENCODING='UTF8'?>", true},
        {"<x><?xml encoding='utf-8'?></x>", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.prefix);
        for (const int levels : {200, 201}) {
            const std::string text = row.prefix + Nested(levels, row.isUtf8 ? "<a b=\"\xC3\" c=\">" : "<a b=\"\xC3\">");
            const Built built = BuildWithLibrary(text);
            EXPECT_TRUE(built.isLoaded);
            EXPECT_EQ(built.depth, levels);
            EXPECT_EQ(Refusal(text), levels > 200 ? kTooDeep : "");
        }
    }
}

TEST(XmlGuard, AnEndTagOutsideTheRootEndsNothing)
{
    for (const int levels : {200, 201}) {
        const std::string text = "</a></a>" + Nested(levels) + "</a>" + Nested(levels);
        EXPECT_EQ(BuildWithLibrary(text).depth, levels);
        EXPECT_EQ(Refusal(text), levels > 200 ? kTooDeep : "");
    }
    EXPECT_EQ(Refusal(Nested(10) + Repeat("</a>", 5) + Nested(201)), kTooDeep);
}

TEST(XmlGuard, AByteOrderMarkMayStandBeforeAnElementsName)
{
    // The library reads the mark first as a letter and then as white space; a guard that reads it as part of the name
    // loses the element, and with it every limit.
    for (const char* start : {"<\xEF\xBB\xBF"
                              "a>",
                              "<\xEF\xBB\xBF a>", "<\xEF\xBF\xBE\n a b='1'>", "<\xEF\xBF\xBF\xEF\xBB\xBF\ta>"}) {
        for (const char* prefix : {kUtf8Mark, kUtf8, kNoEncoding}) {
            for (const int levels : {200, 201, 1000}) {
                SCOPED_TRACE(std::string(prefix) + start + " " + std::to_string(levels));
                const std::string text = prefix + Nested(levels, start);
                const Built built = BuildWithLibrary(text);
                EXPECT_TRUE(built.isLoaded);
                EXPECT_EQ(built.depth, levels);
                EXPECT_EQ(Refusal(text), levels > 200 ? kTooDeep : "");
            }
        }
    }
}

TEST(XmlGuard, ADeclarationThatTheLibraryGivesUpRefusesNothing)
{
    // The library ends such a document after its declaration, without an error.
    for (const char* text : {"<?xml encoding= UTF-8\"?><a b='&amp;'/>", "<?xml encoding='&amp;",
                             "<?xml version=x\"?><a/>", "<?xml encoding ?><a>&lt;</a>"}) {
        EXPECT_TRUE(BuildWithLibrary(text).isLoaded) << text;
        EXPECT_EQ(Refusal(text), "") << text;
    }
}

TEST(XmlGuard, AnEncodingWrittenWithAReferenceIsUnderstood)
{
    // "UTF-8", in which the lead byte takes the quote with it.
    const std::string declaration = "<?xml version='1.0' encoding='&#85;TF-8'?>";
    EXPECT_EQ(Refusal(declaration + Nested(200, "<a b=\"\xC3\" c=\">")), "");
    EXPECT_EQ(Refusal(declaration + Nested(201, "<a b=\"\xC3\" c=\">")), kTooDeep);
    EXPECT_EQ(Refusal("<?xml version='1.0' encoding='&lt;'?>" + Nested(200, "<a b=\"\xC3\">")), "");
    EXPECT_EQ(Refusal("<?xml version='1.0' encoding='&lt;'?>" + Nested(201, "<a b=\"\xC3\">")), kTooDeep);
}

TEST(XmlGuard, AnyCutOffTextIsTakenWithoutHarm)
{
    const std::string text = std::string(kUtf8) +
                             "<a b='\xE2\x82\xAC&#x20AC;' c=\"&amp;\xF0\x9F\x93\x9E\" d=e>\xC3\xBC&#252;"
                             "<![CDATA[<b>]]><!-- <b> --><?p?><!D><b/></a><!-- end -->";
    for (std::size_t length = 0; length <= text.size(); ++length) {
        EXPECT_EQ(Refusal(text.substr(0, length)), "") << text.substr(0, length);
        EXPECT_EQ(Refusal(kUtf8Mark + text.substr(length)), "") << text.substr(length);
    }
}

namespace
{

/// Texts that a reader may take for more, or for less, nesting than the library does. None changes the depth
/// permanently.
const std::vector<std::string> kFillers = {
    "text",
    " \r\n\t",
    "&amp;&lt;b&gt;&quot;",
    "& &; &# &b",
    "&#65;&#x41;",
    "&#x;&#;",
    "&#x<b>x41;",
    "&#<b>#65;",
    "&#x</b>x41;",
    "<!-- <b> -->",
    "<!--></b>-->",
    "<!--->-->",
    "<![CDATA[<b></b></b>]]>",
    "<![CDATA[-->]]]>",
    "<?p <b>",
    "<?p '>' ?>",
    "<?XML version='<b>' encoding=x?>",
    "<?xml version=\">\"?>",
    "<?xmlns version=>",
    "<!DOCTYPE b [<!ENTITY c \"d\">]>",
    "<!b",
    ">",
    "< b>",
    "<1>",
    "<>",
    "<-b>",
    "<b/>",
    "<b></b >",
    "<b></b\n>",
    "<b c=\"</b>\"/>",
    "<b c='<b>'/>",
    "<b c='\"' d=\"'\"/>",
    "<b c=d/>",
    "<b c=<b/>",
    "<b c=d></b>",
    "<b c='&#x'>x41;'/>",
    "<b c=\"&#\"/>#65;\"/>",
    "<b c = '1'd='2'/>",
    "<b:c.d-e_f/>",
    "<_ \xC3\xA9='1'/>",
    "<\xC3\xA9\xEF\xBB\xBF></\xC3\xA9\xEF\xBB\xBF>",
    "\xC3\xA9\xE2\x82\xAC",
    "\xC3<b>",
    "\xE2\x80<b>",
    "\xF0<b>",
    "\xF5\xC1\x80<b/>",
    "<b c='\xC3' d='/>",
    "<b c='\xC3'/>",
    "<b c='\xF0'><'/>",
    "<b \xEF\xBB\xBF c='1' \xEF\xBF\xBF/>",
    "<b></b\xEF\xBB\xBF >",
    "<\xEF\xBB\xBF b/>",
    "\xEF\xBB\xBF",
};

struct Level {
    const char* start;
    const char* end;
};

constexpr Level kLevels[] = {
    {"<a>", "</a>"},
    {"<a>", "</a >"},
    {"<ab b='>'>", "</ab>"},
    {"<a:b c=\"</a:b>\" d='/>'>", "</a:b>"},
    {"<_ a=b\n>", "</_\n>"},
    {"<a b='&#x'/>x41;'>", "</a>"},
    {"<\xC3\xA9>", "</\xC3\xA9>"},
    {"<\xEF\xBB\xBF\n a>", "</a>"}, // only in UTF-8
};

using Random = std::mt19937;

std::size_t Below(Random& random, std::size_t bound)
{
    return random() % bound;
}

/// Levels near the limit with fillers among them. Most documents contain only fillers that their encoding allows, at
/// random: `fillers` are those to choose from.
std::string RandomDocument(Random& random, const char* prefix, const std::vector<std::string>& fillers,
                           std::size_t levelKinds)
{
    std::string text = prefix;
    std::string ends;
    const std::size_t levels = 190 + Below(random, 20);
    for (std::size_t level = 0; level < levels; ++level) {
        const Level& kind = kLevels[Below(random, levelKinds)];
        text += kind.start;
        ends.insert(0, kind.end);
        if (Below(random, 8) == 0)
            text += fillers[Below(random, fillers.size())];
    }
    return text + ends;
}

void Mutate(Random& random, std::string& text)
{
    static const std::vector<std::string> kPieces = {"<",   ">",   "/",    "\"",   "'",    "&#x",          ";",
                                                     "]]>", "-->", "<!--", "\xC3", "\xF0", "\xEF\xBB\xBF", "=",
                                                     " ",   "?",   "<a>",  "</a>"};
    const std::size_t at = Below(random, text.size());
    switch (Below(random, 3)) {
    case 0:
        text.erase(at, 1 + Below(random, 3));
        break;
    case 1:
        text.insert(at, kPieces[Below(random, kPieces.size())]);
        break;
    default:
        text.replace(at, 1, kPieces[Below(random, kPieces.size())]);
        break;
    }
}

/// The fillers that the library loads in a document with that prefix: a document with any others would prove little.
std::vector<std::string> LoadableFillers(const char* prefix)
{
    std::vector<std::string> fillers;
    std::copy_if(kFillers.begin(), kFillers.end(), std::back_inserter(fillers), [prefix](const std::string& filler) {
        const Built built = BuildWithLibrary(prefix + ("<a>" + filler) + "</a><last/>");
        return built.isLoaded && built.depth <= 2;
    });
    return fillers;
}

} // namespace

TEST(XmlGuard, AgreesWithTheLibraryNearTheDeepestLevel)
{
    Random random(20240607); // fixed: a failure can be repeated
    for (const char* prefix : {"", kUtf8Mark, kUtf8, kLatin1, kNoEncoding}) {
        SCOPED_TRACE(std::string("prefix ") + prefix);
        const bool isUtf8 = prefix != std::string() && prefix != std::string(kLatin1);
        const std::size_t levelKinds = std::size(kLevels) - (isUtf8 ? 0 : 1);
        const std::vector<std::string> fillers = LoadableFillers(prefix);
        EXPECT_GT(fillers.size(), kFillers.size() * 3 / 4);

        int loaded = 0;
        int tooDeep = 0;
        for (int round = 0; round < 400; ++round) {
            std::string text = RandomDocument(random, prefix, fillers, levelKinds);
            for (std::size_t mutations = Below(random, 3); mutations > 0; --mutations)
                Mutate(random, text);
            const Built built = BuildWithLibrary(text);
            ExpectAgreement(text, built);
            loaded += built.isLoaded ? 1 : 0;
            tooDeep += built.isLoaded && built.depth > kDeepestElement ? 1 : 0;
            if (HasFailure())
                return; // one failing text is enough
        }
        // Both verdicts must occur, or the agreement would prove little.
        EXPECT_GT(loaded, 120);
        EXPECT_GT(tooDeep, 40);
        EXPECT_GT(loaded - tooDeep, 40);
    }
}

TEST(XmlGuard, AgreesWithTheLibraryNearTheMostElements)
{
    Random random(77);
    for (const char* prefix : {"", kUtf8}) {
        const std::vector<std::string> fillers = LoadableFillers(prefix);
        for (int elements = 99990; elements <= 100000; elements += 2) {
            std::string text = prefix + Repeat("<a/>", elements);
            for (int count = 0; count < 5; ++count)
                text += "<a>" + fillers[Below(random, fillers.size())] + "</a>";
            const Built built = BuildWithLibrary(text);
            EXPECT_TRUE(built.isLoaded);
            EXPECT_EQ(!Refusal(text).empty(), built.elements > kMostElements)
                << built.elements << text.substr(text.size() - 300);
        }
    }
}

TEST(XmlGuard, AgreesWithTheLibraryNearTheMostAttributes)
{
    const std::vector<std::string> kForms = {"='1'", "=\"'\"",        "='>'",          "=\"/>\"", " = 'x' ",
                                             "=x",   "='&#x'/>x41;'", "='<b c=\"d\"'", "=''"};
    Random random(78);
    for (const char* prefix : {"", kUtf8Mark, kLatin1}) {
        for (int round = 0; round < 60; ++round) {
            const std::size_t attributes = 250 + Below(random, 12);
            std::string text = std::string(prefix) + "<r>\n<a";
            for (std::size_t number = 0; number < attributes; ++number)
                text += " b" + std::to_string(number) + kForms[Below(random, kForms.size())];
            text += "\n/></r>";
            const Built built = BuildWithLibrary(text);
            EXPECT_TRUE(built.isLoaded);
            EXPECT_EQ(built.attributes, static_cast<int>(attributes));
            EXPECT_EQ(Refusal(text), attributes > 256 ? kTooManyAttributes : "");
        }
    }
}
