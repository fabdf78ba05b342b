// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The key layout migration, a step of mode "2": items gain the attributes that the firmware expects, and the files are
// those that the XML library itself would have written.

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pugixml.hpp>
#include <set>
#include <sys/stat.h>

#include "phoneImage.h"
#include "untouchedFiles.h"
#include "xmlText.h"

namespace
{

constexpr char kLineKeys[] = "/config/data/linekey.xml";
constexpr char kProgramKeys[] = "/config/data/programkey.xml";
constexpr char kDeclaration[] = "<?xml version=\"1.0\"?>\n";

std::string ExpansionKeys(int number)
{
    return "/config/data/expkey" + std::to_string(number) + ".xml";
}

/// A phone on which mode "2" changes only key layout files.
void PutQuietPhone(PhoneImage& phone)
{
    phone.Put("/tmp/VersionInfo.cfg", "");
    phone.Put("/config/user/user.ini", "[Feature]\nRingbackTimeout=90\n[Backlight]\nnBacklightTime=0\n");
}

/// Mode "2" converts the line keys to this, and changes nothing else.
void ExpectLayout(const std::string& before, const std::string& after)
{
    PhoneImage phone;
    PutQuietPhone(phone);
    phone.Put(kLineKeys, before);
    phone.Run("2");
    phone.Expect(kLineKeys, after);
    phone.ExpectNothingElseChanged();
}

/// A layout of one item, in the way in which the library saves it; `Old` writes the same on one line.
std::string New(const std::string& root, const std::string& itemAttributes, const std::string& dataAttributes)
{
    return std::string(kDeclaration) + "<" + root + ">\n\t<item" + itemAttributes + ">\n\t\t<itemdata" +
           dataAttributes + " />\n\t</item>\n</" + root + ">\n";
}

std::string Old(const std::string& root, const std::string& itemAttributes, const std::string& dataAttributes)
{
    return "<" + root + "><item" + itemAttributes + "><itemdata" + dataAttributes + "/></item></" + root + ">";
}

void SetAttribute(pugi::xml_node element, const char* name, const std::string& value)
{
    pugi::xml_attribute attribute = element.attribute(name);
    if (!attribute)
        attribute = element.append_attribute(name);
    attribute.set_value(value.c_str());
}

/// The result of the library's own functions on paths for a layout with the same edit; the bytes themselves if the
/// layout must not be changed.
std::string Reference(const std::string& bytes, const char* rootName)
{
    const ScratchFolder folder;
    const std::string path = folder.Path("layout.xml");
    WriteBytes(path, bytes);
    pugi::xml_document document;
    if (!document.load_file(path.c_str(), 0xF4, pugi::encoding_auto) || !document.child(rootName))
        return bytes;
    for (const pugi::xml_node item : document.child(rootName).children("item")) {
        const int type = item.attribute("type").as_int();
        const pugi::xml_node data = item.child("itemdata");
        if (!data)
            continue;
        if (std::set<int>{14, 16, 55}.count(type) != 0)
            SetAttribute(data, "pickup_value", data.attribute("extension").value());
        if (type == 28)
            SetAttribute(data, "history_type", std::to_string(data.attribute("line").as_int()));
        if (std::set<int>{22, 45, 46, 47, 54}.count(type) != 0)
            SetAttribute(data, "xml_phonebook", std::to_string(data.attribute("line").as_int()));
    }
    EXPECT_TRUE(document.save_file(path.c_str(), "\t", pugi::format_indent, pugi::encoding_auto));
    return ReadBytes(path);
}

/// The text in UTF-16.
std::string Utf16(const std::u16string& text, bool isBigEndian)
{
    std::string bytes;
    for (const char16_t unit : text) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xff);
        bytes += isBigEndian ? high : low;
        bytes += isBigEndian ? low : high;
    }
    return bytes;
}

/// The ASCII text in UTF-16 with a byte order mark.
std::string Utf16(const std::string& text, bool isBigEndian)
{
    return Utf16(u"\ufeff" + std::u16string(text.begin(), text.end()), isBigEndian);
}

const std::string kTwoKeys = "<item type=\"16\"><itemdata extension=\"201\"/></item>"
                             "<item type=\"28\"><itemdata line=\"2\"/></item>";

/// Line keys of these bytes end as the XML library itself saves them; those that it does not load stay.
void ExpectSavedByTheLibrary(const std::string& layout)
{
    SCOPED_TRACE(testing::PrintToString(layout));
    ExpectLayout(layout, Reference(layout, "dsskey"));
}

} // namespace

TEST(MigrateKeyLayouts, EachKeyTypeGainsItsAttribute)
{
    struct Row {
        const char* type;
        const char* data;  // attributes of "itemdata" before
        const char* added; // attributes after them
    };
    const Row rows[] = {
        {"14", " extension=\"201\"", " pickup_value=\"201\""},
        {"16", " extension=\"201\" label=\"A\"", " pickup_value=\"201\""},
        {"55", " extension=\"*8&amp;&quot;1\"", " pickup_value=\"*8&amp;&quot;1\""},
        {"55", "", " pickup_value=\"\""},
        {"14", " extension=\"\" line=\"3\"", " pickup_value=\"\""},
        {"16", " Extension=\"201\" line=\"2\"", " pickup_value=\"\""},
        {"28", " line=\"2\"", " history_type=\"2\""},
        {"28", " line=\"2\" xml_phonebook=\"7\"", " history_type=\"2\""},
        {"28", " label=\"x\"", " history_type=\"0\""},
        {"22", " line=\"1\"", " xml_phonebook=\"1\""},
        {"45", " line=\"3\" extension=\"9\"", " xml_phonebook=\"3\""},
        {"46", " line=\"4\" history_type=\"7\"", " xml_phonebook=\"4\""},
        {"47", "", " xml_phonebook=\"0\""},
        {"54", " line=\"6\" pickup_value=\"7\"", " xml_phonebook=\"6\""},
    };
    for (const Row& row : rows) {
        const std::string type = std::string(" type=\"") + row.type + "\"";
        SCOPED_TRACE(type + row.data);
        PhoneImage phone;
        PutQuietPhone(phone);
        phone.Put(kLineKeys, Old("dsskey", type, row.data));
        phone.Run("2");
        phone.Expect(kLineKeys, New("dsskey", type, std::string(row.data) + row.added));
        phone.ExpectNothingElseChanged();
    }
}

TEST(MigrateKeyLayouts, AnAttributeThatIsThereIsOverwrittenInItsPlace)
{
    struct Row {
        const char* type;
        const char* before;
        const char* after;
    };
    const Row rows[] = {
        {"16", " pickup_value=\"**\" extension=\"201\"", " pickup_value=\"201\" extension=\"201\""},
        {"14", " pickup_value=\"**\" line=\"1\"", " pickup_value=\"\" line=\"1\""},
        {"28", " history_type=\"9\" line=\"2\"", " history_type=\"2\" line=\"2\""},
        {"28", " history_type=\"9\"", " history_type=\"0\""},
        {"54", " a=\"\" xml_phonebook=\"x\" line=\"-2\"", " a=\"\" xml_phonebook=\"-2\" line=\"-2\""},
    };
    for (const Row& row : rows) {
        const std::string type = std::string(" type=\"") + row.type + "\"";
        SCOPED_TRACE(type + row.before);
        PhoneImage phone;
        PutQuietPhone(phone);
        phone.Put(kLineKeys, Old("dsskey", type, row.before));
        phone.Run("2");
        phone.Expect(kLineKeys, New("dsskey", type, row.after));
        phone.ExpectNothingElseChanged();
    }
}

TEST(MigrateKeyLayouts, NoOtherTypeAndNoItemWithoutTypeOrDataChanges)
{
    std::string before = "<dsskey>";
    std::string after = std::string(kDeclaration) + "<dsskey>\n";
    const std::set<int> handled = {14, 16, 22, 28, 45, 46, 47, 54, 55};
    for (int type = -60; type <= 80; ++type) {
        if (handled.count(type) != 0)
            continue;
        const std::string number = std::to_string(type);
        before += "<item type=\"" + number + "\"><itemdata line=\"2\" extension=\"3\"/></item>";
        after += "\t<item type=\"" + number + "\">\n\t\t<itemdata line=\"2\" extension=\"3\" />\n\t</item>\n";
    }
    before += "<item><itemdata line=\"2\"/></item><item Type=\"28\"><itemdata line=\"2\"/></item><item type=\"28\"/>"
              "<item type=\"28\"><ItemData line=\"2\"/></item><Item type=\"28\"><itemdata line=\"2\"/></Item></dsskey>";
    after += "\t<item>\n\t\t<itemdata line=\"2\" />\n\t</item>\n\t<item Type=\"28\">\n\t\t<itemdata line=\"2\" "
             "/>\n\t</item>\n"
             "\t<item type=\"28\" />\n\t<item type=\"28\">\n\t\t<ItemData line=\"2\" />\n\t</item>\n"
             "\t<Item type=\"28\">\n\t\t<itemdata line=\"2\" />\n\t</Item>\n</dsskey>\n";
    ExpectLayout(before, after);
}

TEST(MigrateKeyLayouts, NumbersAreReadByTheLibrarysOwnRules)
{
    struct Row {
        const char* line;  // as in the file
        const char* value; // as it is written
    };
    const Row lines[] = {
        {"2", "2"},
        {"-3", "-3"},
        {"+4", "4"},
        {"007", "7"},
        {"0x1F", "31"},
        {"-0x10", "-16"},
        {"12 and more", "12"},
        {"1.9", "1"},
        {"", "0"},
        {"none", "0"},
        {"2147483647", "2147483647"},
        {"2147483648", "2147483647"},
        {"99999999999", "2147483647"},
        {"4294967297", "2147483647"},
        {"0xFFFFFFFF", "2147483647"},
        {"-2147483648", "-2147483648"},
        {"-2147483649", "-2147483648"},
        {"-99999999999", "-2147483648"},
    };
    std::string before = "<dsskey>";
    std::string after = std::string(kDeclaration) + "<dsskey>\n";
    for (const Row& row : lines) {
        const std::string line = std::string(" line=\"") + row.line + "\"";
        before += "<item type=\"28\"><itemdata" + line + "/></item>";
        after += "\t<item type=\"28\">\n\t\t<itemdata" + line + " history_type=\"" + row.value + "\" />\n\t</item>\n";
    }
    ExpectLayout(before + "</dsskey>", after + "</dsskey>\n");
}

TEST(MigrateKeyLayouts, TypesAreReadByTheLibrarysOwnRules)
{
    std::string before = "<dsskey>";
    std::string after = std::string(kDeclaration) + "<dsskey>\n";
    // Those that are 28, and those that are not.
    for (const char* type : {"28", "+28", "028", "0x1C", "0X1c", "28th", "28.5"}) {
        before += std::string("<item type=\"") + type + "\"><itemdata/></item>";
        after += std::string("\t<item type=\"") + type + "\">\n\t\t<itemdata history_type=\"0\" />\n\t</item>\n";
    }
    for (const char* type : {"", "-28", "x28", "2 8", "0x", "0x28", "1C", "4294967324", "99999999999", "#28"}) {
        before += std::string("<item type=\"") + type + "\"><itemdata/></item>";
        after += std::string("\t<item type=\"") + type + "\">\n\t\t<itemdata />\n\t</item>\n";
    }
    ExpectLayout(before + "</dsskey>", after + "</dsskey>\n");
}

TEST(MigrateKeyLayouts, BlanksInAttributesAreNormalised)
{
    PhoneImage phone;
    PutQuietPhone(phone);
    phone.Put(kLineKeys, Old("dsskey", " type=\" \t16\n\"", " extension=\"  2  0\r\n1 \" label=\" a\t b \""));
    phone.Run("2");
    phone.Expect(kLineKeys, New("dsskey", " type=\"16\"", " extension=\"2 0 1\" label=\"a b\" pickup_value=\"2 0 1\""));
    phone.ExpectNothingElseChanged();
}

TEST(MigrateKeyLayouts, ReferencesInNumbersAreReadByTheLibrarysOwnRules)
{
    struct Row {
        const char* before;
        const char* after; // as it is saved
        const char* value;
    };
    const Row rows[] = {
        {" 5", "5", "5"},
        {"&#32;&#32;5", "  5", "5"},
        {"&#9;-5", "&#09;-5", "-5"},
        {"&#10;+5", "&#10;+5", "5"},
        {"&#32;0x1F", " 0x1F", "31"},
        {"&#x35;", "5", "5"},
        {"- 5", "- 5", "0"},
        {"--5", "--5", "0"},
        {"+-5", "+-5", "0"},
        {"5&#32;", "5", "5"}, // one at the end is trimmed
        {"5 6", "5 6", "5"},
        {"1e3", "1e3", "1"},
        {"0x", "0x", "0"},
        {"0x1G", "0x1G", "1"},
        {"0X", "0X", "0"},
        {"5&#0;6", "5", "5"},
        {"&#0;5", "", "0"},
        {"&#11;5", "&#11;5", "0"},
        {"\xC2\xA0"
         "5",
         "\xC2\xA0"
         "5",
         "0"}, // another kind of blank does not count
        {"00000000000000000005", "00000000000000000005", "5"},
        {"0x000000000000000005", "0x000000000000000005", "5"},
        {"-0x80000000", "-0x80000000", "-2147483648"},
        {"0x7fffffff", "0x7fffffff", "2147483647"},
    };
    std::string before = "<dsskey>";
    std::string after = std::string(kDeclaration) + "<dsskey>\n";
    for (const Row& row : rows) {
        before += std::string("<item type=\"47\"><itemdata line=\"") + row.before + "\"/></item>";
        after += std::string("\t<item type=\"47\">\n\t\t<itemdata line=\"") + row.after + "\" xml_phonebook=\"" +
                 row.value + "\" />\n\t</item>\n";
    }
    ExpectLayout(before + "</dsskey>", after + "</dsskey>\n");
}

TEST(MigrateKeyLayouts, ReferencesInTypesAreReadByTheLibrarysOwnRules)
{
    ExpectLayout("<dsskey>"
                 "<item type=\"&#32;28\"><itemdata/></item><item type=\"28&#0;9\"><itemdata/></item>"
                 "<item type=\"&#11;28\"><itemdata/></item></dsskey>",
                 std::string(kDeclaration) + "<dsskey>\n"
                                             "\t<item type=\" 28\">\n\t\t<itemdata history_type=\"0\" />\n\t</item>\n"
                                             "\t<item type=\"28\">\n\t\t<itemdata history_type=\"0\" />\n\t</item>\n"
                                             "\t<item type=\"&#11;28\">\n\t\t<itemdata />\n\t</item>\n</dsskey>\n");
}

TEST(MigrateKeyLayouts, OfSeveralRootsTheFirstOfItsNameIsProcessedAndAllAreSaved)
{
    const std::string item = "<item type=\"28\"><itemdata line=\"2\"/></item>";
    const std::string same = "\t<item type=\"28\">\n\t\t<itemdata line=\"2\" />\n\t</item>\n";
    const std::string done = "\t<item type=\"28\">\n\t\t<itemdata line=\"2\" history_type=\"2\" />\n\t</item>\n";
    struct Row {
        const char* path;
        std::string before;
        std::string after; // after the declaration
    };
    const Row rows[] = {
        {kLineKeys, "<dsskey a='1'>" + item + "</dsskey><dsskey a='2'>" + item + "</dsskey>",
         "<dsskey a=\"1\">\n" + done + "</dsskey>\n<dsskey a=\"2\">\n" + same + "</dsskey>\n"},
        {kLineKeys, "<dsskey/><dsskey>" + item + "</dsskey>", "<dsskey />\n<dsskey>\n" + same + "</dsskey>\n"},
        {kLineKeys, "<programkey>" + item + "</programkey><dsskey>" + item + "</dsskey>",
         "<programkey>\n" + same + "</programkey>\n<dsskey>\n" + done + "</dsskey>\n"},
        {kProgramKeys, "<dsskey>" + item + "</dsskey><programkey>" + item + "</programkey><programkey/>",
         "<dsskey>\n" + same + "</dsskey>\n<programkey>\n" + done + "</programkey>\n<programkey />\n"},
        {kLineKeys, "<item type='28'><itemdata line='2'/></item><dsskey>" + item + "</dsskey>",
         "<item type=\"28\">\n\t<itemdata line=\"2\" />\n</item>\n<dsskey>\n" + done + "</dsskey>\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.before);
        PhoneImage phone;
        PutQuietPhone(phone);
        phone.Put(row.path, row.before);
        phone.Run("2");
        phone.Expect(row.path, kDeclaration + row.after);
        phone.ExpectNothingElseChanged();
    }
}

TEST(MigrateKeyLayouts, ALayoutInUtf16IsSavedInUtf8WithOrWithoutItsByteOrderMark)
{
    const std::u16string text = u"<dsskey n=\"\u00e4\u20ac\U0001f4de\"><item type=\"16\">"
                                u"<itemdata extension=\"\u00fc1\"/></item></dsskey>";
    const std::string expected = std::string(kDeclaration) +
                                 "<dsskey n=\"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x93\x9E\">\n\t<item type=\"16\">\n"
                                 "\t\t<itemdata extension=\"\xC3\xBC"
                                 "1\" pickup_value=\"\xC3\xBC"
                                 "1\" />\n"
                                 "\t</item>\n</dsskey>\n";
    for (const std::u16string& beginning :
         {std::u16string(), std::u16string(u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\r\n")}) {
        for (const bool isBigEndian : {false, true}) {
            for (const bool hasMark : {false, true}) {
                SCOPED_TRACE(std::string(isBigEndian ? "big" : "little") + " end first, " +
                             (hasMark ? "with a mark, " : "without a mark, ") + std::to_string(beginning.size()));
                PhoneImage phone;
                PutQuietPhone(phone);
                phone.Put(kLineKeys, Utf16((hasMark ? u"\ufeff" : u"") + beginning + text, isBigEndian));
                phone.Run("2");
                phone.Expect(kLineKeys, expected);
                phone.ExpectNothingElseChanged();
                phone.Run("2"); // as UTF-8 now
                phone.Expect(kLineKeys, expected);
                phone.ExpectNothingElseChanged();
            }
        }
    }
}

TEST(MigrateKeyLayouts, EachFileIsSavedAsTheLibraryItselfWouldSaveIt)
{
    const std::string plain = "<dsskey>" + kTwoKeys + "</dsskey>";
    const std::string layouts[] = {
        plain,
        "<dsskey/>",
        "<dsskey></dsskey>\r\n",
        "<dsskey>\r\n  " + kTwoKeys + "\r\n  text\r\n</dsskey>\r\n",
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE dsskey>\n<!-- a --><dsskey><!-- b --><?c d?>" +
            kTwoKeys + "</dsskey><!-- e -->",
        "\xEF\xBB\xBF<dsskey a=\"\xc3\xa4\">" + kTwoKeys + "</dsskey>",
        Utf16(plain, /*isBigEndian=*/false),
        Utf16(plain, /*isBigEndian=*/true),
        Utf16(plain, /*isBigEndian=*/false).substr(2),
        Utf16(plain, /*isBigEndian=*/true).substr(2),
        Utf16(" " + plain, /*isBigEndian=*/false).substr(2), // without a mark nothing says the encoding
        Utf16(plain, /*isBigEndian=*/false) + "x",           // half a character
        Utf16(plain, /*isBigEndian=*/true).substr(0, 41),
        Utf16(u"\ufeff<dsskey n=\"\xd83d\"/>", /*isBigEndian=*/false), // half a pair
        std::string("\xff\xfe\0\0<\0\0\0a\0\0\0/\0\0\0>\0\0\0", 20),
        std::string("\0\0\0<\0\0\0d\0\0\0s\0\0\0s\0\0\0k\0\0\0e\0\0\0y\0\0\0/\0\0\0>", 36),
        "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?><dsskey a=\"\xe4\">" + kTwoKeys + "</dsskey>",
        "<dsskey a=\"\xe4\xff\">" + kTwoKeys + "</dsskey>",
        "<other/><dsskey><group>" + kTwoKeys + "</group>" + kTwoKeys +
            "<x/><item type=\"14\"><a/><itemdata/><itemdata/></item>" + "</dsskey><dsskey>" + kTwoKeys + "</dsskey>",
        "<dsskey><item type=\"16\"><a><itemdata extension=\"1\"/></a></item><item type=\"15\" "
        "type=\"16\"><itemdata/></item>"
        "<item type=\"16\"><itemdata extension=\"1\" extension=\"2\" pickup_value=\"\" "
        "pickup_value=\"3\"/></item></dsskey>",
        "<dsskey><![CDATA[<item>]]>&lt;&#x41;&nothing;<item type=\"16\"><itemdata "
        "extension='\"&#10;&#x9;&apos;&gt;'/></item>"
        "</dsskey>",
        "before<dsskey>" + kTwoKeys + "</dsskey>behind",
        std::string("<dsskey>\0", 9) + kTwoKeys + "</dsskey>",
    };
    for (const std::string& layout : layouts)
        ExpectSavedByTheLibrary(layout);
}

TEST(MigrateKeyLayouts, WhatIsNoKeyLayoutStaysAsItIs)
{
    const std::string layouts[] = {
        "<config><dsskey>" + kTwoKeys + "</dsskey></config>",
        "<DssKey>" + kTwoKeys + "</DssKey>",
        "<dsskey>" + kTwoKeys,
        "<dsskey>" + kTwoKeys + "</other>",
        "<!-- <dsskey/> -->",
        "",
        "no markup",
        std::string("\x80\x03\xff\x00\x1b<\xfe", 7),
    };
    for (const std::string& layout : layouts)
        ExpectSavedByTheLibrary(layout);
}

TEST(MigrateKeyLayouts, TheFilesOfTheExamplePhoneAreSavedAsTheLibraryItselfWouldSaveThem)
{
    PhoneImage phone;
    phone.PutExamplePhone();
    phone.Put("/tmp/VersionInfo.cfg", "");
    const std::map<std::string, std::string> layouts = {
        {kLineKeys, phone.Get(kLineKeys)},
        {kProgramKeys, phone.Get(kProgramKeys)},
        {ExpansionKeys(0), phone.Get(ExpansionKeys(0))},
        {ExpansionKeys(3), phone.Get(ExpansionKeys(3))},
    };
    phone.Run("2");
    for (const auto& [path, bytes] : layouts) {
        phone.Expect(path, Reference(bytes, path == kProgramKeys ? "programkey" : "dsskey"));
        EXPECT_NE(phone.Get(path), bytes) << path;
    }
    for (int number : {1, 2, 4, 5})
        phone.ExpectMissing(ExpansionKeys(number));
}

TEST(MigrateKeyLayouts, AllEightFilesAreProcessedUnderTheirOwnRootAndNoOther)
{
    PhoneImage phone;
    PutQuietPhone(phone);
    phone.Put(kLineKeys, Old("dsskey", " type=\"28\"", ""));
    phone.Put(kProgramKeys, Old("programkey", " type=\"28\"", ""));
    for (int number = 0; number <= 6; ++number)
        phone.Put(ExpansionKeys(number), Old("dsskey", " type=\"28\"", " line=\"" + std::to_string(number) + "\""));
    phone.Put("/config/data/dsskey.xml", Old("dsskey", " type=\"28\"", ""));
    const UntouchedFiles others(phone, {ExpansionKeys(6), "/config/data/dsskey.xml"});
    phone.Run("2");
    phone.Expect(kLineKeys, New("dsskey", " type=\"28\"", " history_type=\"0\""));
    phone.Expect(kProgramKeys, New("programkey", " type=\"28\"", " history_type=\"0\""));
    for (int number = 0; number <= 5; ++number) {
        const std::string text = std::to_string(number);
        phone.Expect(ExpansionKeys(number),
                     New("dsskey", " type=\"28\"", " line=\"" + text + "\" history_type=\"" + text + "\""));
    }
    phone.ExpectNothingElseChanged();
    others.Check();
}

TEST(MigrateKeyLayouts, AFileThatStandsAloneIsProcessedAndNoOtherIsMade)
{
    PhoneImage phone;
    PutQuietPhone(phone);
    phone.Put(ExpansionKeys(3), Old("dsskey", " type=\"16\"", " extension=\"201\""));
    phone.Run("2");
    phone.Expect(ExpansionKeys(3), New("dsskey", " type=\"16\"", " extension=\"201\" pickup_value=\"201\""));
    phone.ExpectNothingElseChanged();
}

TEST(MigrateKeyLayouts, AFileWithAnotherRootIsNotEvenSaved)
{
    PhoneImage phone;
    PutQuietPhone(phone);
    phone.Put(kLineKeys, Old("programkey", " type=\"28\"", ""));
    phone.Put(kProgramKeys, Old("dsskey", " type=\"28\"", ""));
    phone.Put(ExpansionKeys(0), "<dsskeys/>");
    const UntouchedFiles files(phone, {kLineKeys, kProgramKeys, ExpansionKeys(0)});
    phone.Run("2");
    phone.ExpectNothingElseChanged();
    files.Check();
}

TEST(MigrateKeyLayouts, AFileThatNeedsNoChangeIsStillSaved)
{
    PhoneImage phone;
    PutQuietPhone(phone);
    const std::string done = New("dsskey", " type=\"15\"", " line=\"2\"");
    phone.Put(kLineKeys, Old("dsskey", " type=\"15\"", " line=\"2\""));
    phone.Put(ExpansionKeys(0), done);
    const timespec times[2] = {{1000000000, 0}, {1000000000, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, phone.HostPath(ExpansionKeys(0)).c_str(), times, 0), 0);
    phone.Run("2");
    phone.Expect(kLineKeys, done);
    phone.ExpectNothingElseChanged();
    struct stat status = {};
    ASSERT_EQ(stat(phone.HostPath(ExpansionKeys(0)).c_str(), &status), 0);
    EXPECT_GT(status.st_mtim.tv_sec, 1000000000);
}

TEST(MigrateKeyLayouts, ASecondRunWritesTheSameBytes)
{
    PhoneImage phone;
    PutQuietPhone(phone);
    phone.Put(kLineKeys, Old("dsskey", " type=\"16\"", " extension=\"*8&#x20;&lt;\" label=\"\xc3\xa4\""));
    phone.Put(kProgramKeys, Old("programkey", " type=\"47\"", " line=\"99999999999\""));
    phone.Run("2");
    phone.Run("2");
    phone.ExpectNothingElseChanged();
}

TEST(MigrateKeyLayouts, AFileBeyondALimitIsLeftAloneAndTheOthersAreProcessed)
{
    const std::string item = "<item type=\"28\"><itemdata line=\"2\"/></item>";
    std::string attributes;
    for (int i = 0; i < 257; ++i)
        attributes += " a" + std::to_string(i) + "=\"\"";
    const std::pair<const char*, std::string> layouts[] = {
        {"201 levels", "<dsskey>" + item + Repeat("<a>", 200) + Repeat("</a>", 200) + "</dsskey>"},
        {"4 MiB and one byte", "<dsskey>" + item + std::string((4 << 20) + 1 - 17 - item.size(), ' ') + "</dsskey>"},
        {"100,001 elements", "<dsskey>" + item + Repeat("<a/>", 100001 - 3) + "</dsskey>"},
        {"257 attributes", "<dsskey>" + item + "<a" + attributes + "/></dsskey>"},
    };
    EXPECT_EQ(layouts[1].second.size(), 4194305u);
    for (const auto& [name, layout] : layouts) {
        SCOPED_TRACE(name);
        PhoneImage phone;
        PutQuietPhone(phone);
        phone.Put(kLineKeys, layout);
        phone.Put(ExpansionKeys(5), Old("dsskey", " type=\"28\"", " line=\"2\""));
        const UntouchedFiles file(phone, {kLineKeys});
        phone.Run("2");
        phone.Expect(ExpansionKeys(5), New("dsskey", " type=\"28\"", " line=\"2\" history_type=\"2\""));
        phone.ExpectNothingElseChanged();
        file.Check();
    }
}

TEST(MigrateKeyLayouts, AFileJustWithinEveryLimitIsProcessed)
{
    std::string attributes;
    for (int i = 0; i < 256; ++i)
        attributes += " a" + std::to_string(i) + "=\"\"";
    const std::string item = "<item type=\"28\"><itemdata line=\"2\"/></item>";
    std::string layout = "<dsskey>" + item + "<a" + attributes + "/>" + Repeat("<a>", 199) + Repeat("</a>", 199);
    layout += Repeat("<a/>", 100000 - 4 - 199);
    layout += std::string((4 << 20) - 9 - layout.size(), ' ') + "</dsskey>";
    PhoneImage phone;
    PutQuietPhone(phone);
    phone.Put(kLineKeys, layout);
    phone.Run("2");
    phone.Expect(kLineKeys, Reference(layout, "dsskey"));
    EXPECT_NE(phone.Get(kLineKeys).find("history_type=\"2\""), std::string::npos);
    phone.ExpectNothingElseChanged();
}

TEST(MigrateKeyLayouts, AFileThatCannotBeSavedStaysAsItWas)
{
    PhoneImage phone;
    PutQuietPhone(phone);
    phone.Put("/tmp/VersionInfo.cfg", "[Syslog]\neLogType=3\nstrServerName=s\n");
    phone.PutFolder("/config/system");
    phone.Put(kLineKeys, Old("dsskey", " type=\"28\"", ""));
    phone.AddSandboxOptions({"--ro-bind", phone.HostPath("/config/data"), "/config/data"});
    phone.Run("2");
    phone.Expect("/config/system/system.ini", "[Syslog]\nLogType=2\nSyslogServer=s\n"); // the step after it has run
    phone.ExpectNothingElseChanged();
}

TEST(MigrateKeyLayouts, PermissionsAndLinksStay)
{
    PhoneImage phone;
    PutQuietPhone(phone);
    phone.Put("/config/data/real.xml", Old("dsskey", " type=\"28\"", ""));
    chmod(phone.HostPath("/config/data/real.xml").c_str(), 0604);
    std::filesystem::create_symlink("real.xml", phone.HostPath(kLineKeys));
    phone.Run("2");
    phone.Expect("/config/data/real.xml", New("dsskey", " type=\"28\"", " history_type=\"0\""));
    phone.ExpectNothingElseChanged();
    struct stat status = {};
    ASSERT_EQ(stat(phone.HostPath("/config/data/real.xml").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777u, 0604u);
}
