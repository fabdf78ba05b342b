// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "contactV4XToV50.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

#include "bundledPlatform.h"
#include "translation.h"
#include "xmlText.h"

namespace
{

const std::string kEnter = "chTraceStack: enter ContactV4XToV50\n";
const std::string kRead = "chTraceStack: enter GetV4XContactData\nchTraceStack: leave GetV4XContactData\n";
const std::string kLeave = "chTraceStack: leave ContactV4XToV50\n";

const std::string kAllGroup = "    <group id_name=\"0\" display_name=\"All\" ring=\"\" read_only=\"1\" />\n";
const std::string kBlackList = "    <group id_name=\"1\" display_name=\"Black List\" ring=\"\" read_only=\"1\" />\n";

/// Old contacts and the two new lists in a separate folder.
struct Lists {
    ScratchFolder folder;
    std::string oldPath = folder.Path("contactData.xml");
    std::string contactPath = folder.Path("contact_list.xml");
    std::string groupPath = folder.Path("contact_group_list.xml");
    std::string reports;

    int Translate()
    {
        testing::internal::CaptureStderr();
        const int result = ContactV4XToV50(oldPath.c_str(), contactPath.c_str(), groupPath.c_str());
        reports = testing::internal::GetCapturedStderr();
        return result;
    }

    /// Translates old contacts with that content, which must succeed.
    void Translate(const std::string& oldText)
    {
        WriteBytes(oldPath, oldText);
        EXPECT_EQ(Translate(), 1) << oldText;
        EXPECT_EQ(reports, kEnter + kRead + kLeave) << oldText;
        EXPECT_EQ(ReadBytes(oldPath), oldText);
        EXPECT_EQ(FileCount(), 3u) << oldText;
    }

    void ExpectContacts(const std::string& elements) const
    {
        EXPECT_EQ(ReadBytes(contactPath), "<root_contact>\n" + elements + "</root_contact>\n");
    }

    /// @param elements  those of the custom groups
    void ExpectGroups(const std::string& elements) const
    {
        EXPECT_EQ(ReadBytes(groupPath), "<root_group>\n" + kAllGroup + elements + kBlackList + "</root_group>\n");
    }

    std::size_t FileCount() const { return CountNames(folder); }
};

/// A new contact that has only a name, a group and a photo.
std::string Contact(const std::string& name, int groupId, const std::string& photo = "")
{
    return "    <contact display_name=\"" + name +
           "\" office_number=\"\" mobile_number=\"\" other_number=\"\" line=\"0\" ring=\"\" group_id_name=\"" +
           std::to_string(groupId) + "\" default_photo=\"" + photo + "\" />\n";
}

std::string CustomGroup(int id, const std::string& name)
{
    return "    <group id_name=\"" + std::to_string(id) + "\" display_name=\"" + name +
           "\" ring=\"\" read_only=\"0\" />\n";
}

/// Old contacts named "<prefix>1", "<prefix>2" and so on.
std::string OldContacts(const std::string& prefix, int count)
{
    std::string text;
    for (int number = 1; number <= count; ++number)
        text += Element("contact", "sLocalRename=\"" + prefix + std::to_string(number) + "\"");
    return text;
}

std::string NewContacts(const std::string& prefix, int count, int groupId)
{
    std::string text;
    for (int number = 1; number <= count; ++number)
        text += Contact(prefix + std::to_string(number), groupId);
    return text;
}

} // namespace

TEST(ContactV4XToV50, NestedContactsBecomeTwoFlatLists)
{
    Lists lists;
    lists.Translate("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                    "<contactData>\n"
                    "  <group sGroupName=\"Family\">\n"
                    "    <contact sImagePath=\"/rundata/photo/a.png\" sPrivateNumber=\"3\" sMobilNumber=\"2\"\n"
                    "             sOfficeNumber=\"1\" sLocalRename=\"Ada\" sRing=\"x\" />\n"
                    "  </group>\n"
                    "  <group sGroupName=\"\"><contact sLocalRename=\"Bob\" sOfficeNumber=\"11\"/></group>\n"
                    "  <group sGroupName=\"Work\" />\n"
                    "  <group sGroupName=\"Club\"><contact sLocalRename=\"Cem\" sMobilNumber=\"22\"/></group>\n"
                    "</contactData>\n");
    lists.ExpectContacts("    <contact display_name=\"Ada\" office_number=\"1\" mobile_number=\"2\" other_number=\"3\" "
                         "line=\"0\" ring=\"\""
                         " group_id_name=\"2\" default_photo=\"/data/photo/a.png\" />\n"
                         "    <contact display_name=\"Bob\" office_number=\"11\" mobile_number=\"\" other_number=\"\" "
                         "line=\"0\" ring=\"\""
                         " group_id_name=\"0\" default_photo=\"\" />\n"
                         "    <contact display_name=\"Cem\" office_number=\"\" mobile_number=\"22\" other_number=\"\" "
                         "line=\"0\" ring=\"\""
                         " group_id_name=\"4\" default_photo=\"\" />\n");
    lists.ExpectGroups(CustomGroup(2, "Family") + CustomGroup(3, "Work") + CustomGroup(4, "Club"));
}

TEST(ContactV4XToV50, AZeroCharacterEndsAText)
{
    Lists lists;
    lists.Translate(
        "<contactData><group sGroupName='Black List&#0;!'><contact sLocalRename='a&#0;b'/></group>"
        "<group sGroupName='&#0;Sales'><contact sLocalRename='&#0;c'/><contact sLocalRename='d'/></group>"
        "<group sGroupName='Sales&#x0;x'><contact sLocalRename='e' sOfficeNumber='1&#0;2' "
        "sMobilNumber='&#x00;3' sPrivateNumber='4&#0;' sImagePath='/rundata/&#0;f.png'/></group></contactData>");
    lists.ExpectContacts(Contact("a", 1) + Contact("d", 0) +
                         "    <contact display_name=\"e\" office_number=\"1\" mobile_number=\"\" other_number=\"4\" "
                         "line=\"0\" ring=\"\" group_id_name=\"2\" default_photo=\"/data/\" />\n");
    lists.ExpectGroups(CustomGroup(2, "Sales"));
}

TEST(ContactV4XToV50, GroupsWithoutANameAndAnonymousJoinAll)
{
    Lists lists;
    lists.Translate("<contactData><group><contact sLocalRename='a'/></group>"
                    "<group sGroupName='Anonymous'><contact sLocalRename='b'/></group>"
                    "<group sGroupName=''><contact sLocalRename='c'/></group></contactData>");
    lists.ExpectContacts(Contact("a", 0) + Contact("b", 0) + Contact("c", 0));
    lists.ExpectGroups("");
}

TEST(ContactV4XToV50, TheBlackListIsThereOnceAndLast)
{
    Lists lists;
    lists.Translate("<contactData><group sGroupName='Black List'><contact sLocalRename='a'/></group>"
                    "<group sGroupName='Work'><contact sLocalRename='b'/></group>"
                    "<group sGroupName='Black List'><contact sLocalRename='c'/></group></contactData>");
    lists.ExpectContacts(Contact("a", 1) + Contact("b", 2) + Contact("c", 1));
    lists.ExpectGroups(CustomGroup(2, "Work"));
}

TEST(ContactV4XToV50, GroupNamesAreComparedToTheLetter)
{
    Lists lists;
    lists.Translate("<contactData><group sGroupName='anonymous'/><group sGroupName='Black list'/>"
                    "<group sGroupName=' '/><group sGroupName='All'><contact sLocalRename='a'/></group></contactData>");
    lists.ExpectContacts(Contact("a", 5));
    lists.ExpectGroups(CustomGroup(2, "anonymous") + CustomGroup(3, "Black list") + CustomGroup(4, " ") +
                       CustomGroup(5, "All"));
}

TEST(ContactV4XToV50, GroupsOfOneNameStayTwo)
{
    Lists lists;
    lists.Translate("<contactData><group sGroupName='Work'><contact sLocalRename='a'/></group>"
                    "<group sGroupName='Work'><contact sLocalRename='b'/></group></contactData>");
    lists.ExpectContacts(Contact("a", 2) + Contact("b", 3));
    lists.ExpectGroups(CustomGroup(2, "Work") + CustomGroup(3, "Work"));
}

TEST(ContactV4XToV50, OnlyNamedContactsInsideAGroupAreRead)
{
    Lists lists;
    lists.Translate("<contactData><contact sLocalRename='outside'/><group><contact sOfficeNumber='1' sMobilNumber='2'/>"
                    "<contact sLocalRename='' sOfficeNumber='1'/><Contact sLocalRename='x'/><contact slocalrename='y'/>"
                    "<sub><contact sLocalRename='deeper'/></sub><contact sLocalRename='a'/></group>"
                    "<Group sGroupName='no group'><contact sLocalRename='z'/></Group></contactData>");
    lists.ExpectContacts(Contact("a", 0));
    lists.ExpectGroups("");
}

TEST(ContactV4XToV50, ThePhotoFolderMoves)
{
    struct Row {
        const char* oldPath;
        const char* newPath;
    };
    const Row rows[] = {
        {"/rundata/photo/a.png", "/data/photo/a.png"},
        {"/rundata/", "/data/"},
        {"/rundata//rundata/b.png", "/data//rundata/b.png"},
        {"/rundata", "/rundata"},
        {"/RunData/x.png", "/RunData/x.png"},
        {"rundata/x.png", "rundata/x.png"},
        {" /rundata/x.png", " /rundata/x.png"},
        {"/config/rundata/x.png", "/config/rundata/x.png"},
        {"/data/x.png", "/data/x.png"},
        {"", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.oldPath);
        Lists lists;
        lists.Translate(std::string("<contactData><group><contact sLocalRename='a' sImagePath='") + row.oldPath +
                        "'/></group></contactData>");
        lists.ExpectContacts(Contact("a", 0, row.newPath));
    }
}

TEST(ContactV4XToV50, TextsAreCarriedOverAsTheyStand)
{
    Lists lists;
    lists.Translate(
        "<?xml version='1.0' encoding='UTF-8'?><contactData><group sGroupName='R&amp;D &lt;%s&gt;'>"
        "<contact sLocalRename=' \xD0\x90\xD0\xBD\xD0\xBD\xD0\xB0 &quot;A&quot; ' sOfficeNumber='+41 (0)1,#*'/>"
        "</group></contactData>");
    lists.ExpectContacts("    <contact display_name=' \xD0\x90\xD0\xBD\xD0\xBD\xD0\xB0 &quot;A&quot; '"
                         " office_number=\"+41 (0)1,#*\" mobile_number=\"\" other_number=\"\" line=\"0\" ring=\"\""
                         " group_id_name=\"2\" default_photo=\"\" />\n");
    lists.ExpectGroups(CustomGroup(2, "R&amp;D &lt;%s&gt;"));
}

TEST(ContactV4XToV50, AfterFiftyCustomGroupsNoGroupIsRead)
{
    std::string groups;
    std::string newContacts;
    std::string newGroups;
    for (int number = 1; number <= 50; ++number) {
        const std::string name = std::to_string(number);
        groups +=
            Element("group", "sGroupName=\"g" + name + "\"", Element("contact", "sLocalRename=\"c" + name + "\""));
        newContacts += Contact("c" + name, number + 1);
        newGroups += CustomGroup(number + 1, "g" + name);
    }
    const std::string late = "<group sGroupName='g51'><contact sLocalRename='c51'/></group>"
                             "<group><contact sLocalRename='unnamed'/></group>"
                             "<group sGroupName='Black List'><contact sLocalRename='black'/></group>";
    Lists lists;
    lists.Translate(Element("contactData", "", groups + late));
    lists.ExpectContacts(newContacts);
    lists.ExpectGroups(newGroups);

    // Groups without a record do not count.
    lists.Translate(Element("contactData", "", Repeat("<group/><group sGroupName='Black List'/>", 60) + groups));
    lists.ExpectContacts(newContacts);
    lists.ExpectGroups(newGroups);
}

TEST(ContactV4XToV50, AThousandAndOneContactsAreKept)
{
    for (const int count : {1000, 1001, 1002, 1200}) {
        SCOPED_TRACE(count);
        Lists lists;
        lists.Translate(Element("contactData", "", Element("group", "", OldContacts("c", count))));
        lists.ExpectContacts(NewContacts("c", std::min(count, 1001), 0));
    }
}

TEST(ContactV4XToV50, ContactsWithoutANameDoNotCount)
{
    Lists lists;
    const std::string nameless = Repeat("<contact sLocalRename='' sOfficeNumber='1'/>", 500);
    lists.Translate(Element("contactData", "", Element("group", "", nameless + OldContacts("c", 700) + nameless)) +
                    "\n");
    lists.ExpectContacts(NewContacts("c", 700, 0));

    lists.Translate(Element("contactData", "",
                            Element("group", "", OldContacts("a", 900) + nameless) +
                                Element("group", "", nameless + OldContacts("b", 200))));
    lists.ExpectContacts(NewContacts("a", 900, 0) + NewContacts("b", 101, 0));
}

TEST(ContactV4XToV50, GroupsAfterTheLastContactStillGetTheirRecords)
{
    Lists lists;
    lists.Translate(Element("contactData", "",
                            Element("group", "sGroupName='full'", OldContacts("c", 1100)) +
                                Element("group", "sGroupName='late'", OldContacts("d", 3)) +
                                Element("group", "", OldContacts("e", 3)) + Element("group", "sGroupName='last'")));
    lists.ExpectContacts(NewContacts("c", 1001, 2));
    lists.ExpectGroups(CustomGroup(2, "full") + CustomGroup(3, "late") + CustomGroup(4, "last"));
}

TEST(ContactV4XToV50, ASecondRunWritesTheSameOverWhateverIsThere)
{
    Lists lists;
    WriteBytes(lists.contactPath, "<root_contact>edited by hand</root_contact>");
    WriteBytes(lists.groupPath, "<root_group>edited by hand</root_group>");
    for (int run = 0; run < 2; ++run) {
        lists.Translate("<contactData><group sGroupName='Work'><contact sLocalRename='a'/></group></contactData>");
        lists.ExpectContacts(Contact("a", 2));
        lists.ExpectGroups(CustomGroup(2, "Work"));
    }
}

TEST(ContactV4XToV50, ANullPathIsAFailureWithoutAWord)
{
    const Lists lists;
    WriteBytes(lists.oldPath, "<contactData><group><contact sLocalRename='a'/></group></contactData>");
    const char* oldPath = lists.oldPath.c_str();
    const char* contactPath = lists.contactPath.c_str();
    const char* groupPath = lists.groupPath.c_str();
    testing::internal::CaptureStderr();
    EXPECT_EQ(ContactV4XToV50(nullptr, contactPath, groupPath), 0);
    EXPECT_EQ(ContactV4XToV50(oldPath, nullptr, groupPath), 0);
    EXPECT_EQ(ContactV4XToV50(oldPath, contactPath, nullptr), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), kEnter + kLeave + kEnter + kLeave + kEnter + kLeave);
    EXPECT_EQ(lists.FileCount(), 1u);
}

TEST(ContactV4XToV50, WithoutContactsNothingIsWritten)
{
    struct Row {
        const char* oldText; // null for no old file
        const char* report;  // in addition to the scopes
    };
    const Row rows[] = {
        {nullptr, ""},
        {"<other><contactData/></other>", ""},
        {"<ContactData><group><contact sLocalRename='a'/></group></ContactData>", ""},
        {"<contactData/>", "etlTrace 2: Contact list is empty !!\n"},
        {"<contactData><group sGroupName='Work'/></contactData>", "etlTrace 2: Contact list is empty !!\n"},
        {"<contactData><group><contact sLocalRename='' sOfficeNumber='1'/></group></contactData>",
         "etlTrace 2: Contact list is empty !!\n"},
        {"<contactData><contact sLocalRename='outside'/></contactData>", "etlTrace 2: Contact list is empty !!\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.oldText == nullptr ? "no file" : row.oldText);
        Lists lists;
        if (row.oldText != nullptr)
            WriteBytes(lists.oldPath, row.oldText);
        WriteBytes(lists.groupPath, "before");
        EXPECT_EQ(lists.Translate(), 0);
        EXPECT_EQ(lists.reports, kEnter + kRead + row.report + kLeave);
        EXPECT_EQ(ReadBytes(lists.groupPath), "before");
        EXPECT_FALSE(std::filesystem::exists(lists.contactPath));
    }
}

TEST(ContactV4XToV50, AFileThatDoesNotLoadIsTracedWithTheDescriptionInThePathsPlace)
{
    struct Row {
        const char* oldText;
        const char* description; // the library's own
    };
    const Row rows[] = {
        {"", "Error document empty."},
        {"<contactData>", "Error reading Element value."},
        {"<contactData><group></contactData>", "Error reading end tag."},
        {"<contactData><group sGroupName></group></contactData>", "Error reading Attributes."},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.oldText);
        Lists lists;
        WriteBytes(lists.oldPath, row.oldText);
        WriteBytes(lists.groupPath, "before");
        EXPECT_EQ(lists.Translate(), 0);
        EXPECT_EQ(lists.reports, kEnter + "chTraceStack: enter GetV4XContactData\netlTrace 2: Fail to load file [" +
                                     row.description + "]. Error Desc []\nchTraceStack: leave GetV4XContactData\n" +
                                     kLeave);
        EXPECT_EQ(ReadBytes(lists.groupPath), "before");
        EXPECT_FALSE(std::filesystem::exists(lists.contactPath));
        EXPECT_EQ(ReadBytes(lists.oldPath), row.oldText);
    }
}

TEST(ContactV4XToV50, ARefusedFileIsTracedWithOurDescription)
{
    if (!kHasBundledPlatform)
        GTEST_SKIP() << "rests on the bundled library's description";
    Lists lists;
    WriteBytes(lists.oldPath, Repeat("<a>", 201) + Repeat("</a>", 201));
    EXPECT_EQ(lists.Translate(), 0);
    EXPECT_NE(lists.reports.find("etlTrace 2: Fail to load file [Document nested too deep.]. Error Desc []\n"),
              std::string::npos)
        << lists.reports;
}

TEST(ContactV4XToV50, WhenTheContactListIsNotSavedTheGroupListIsNotWritten)
{
    for (const char* name : {"missing/contact_list.xml", "."}) {
        SCOPED_TRACE(name);
        Lists lists;
        WriteBytes(lists.oldPath, "<contactData><group><contact sLocalRename='a'/></group></contactData>");
        WriteBytes(lists.groupPath, "before");
        lists.contactPath = lists.folder.Path(name);
        EXPECT_EQ(lists.Translate(), 0);
        EXPECT_EQ(lists.reports, kEnter + kRead + kLeave);
        EXPECT_EQ(ReadBytes(lists.groupPath), "before");
        EXPECT_EQ(lists.FileCount(), 2u);
    }
}

TEST(ContactV4XToV50, WhenTheGroupListIsNotSavedTheContactListIsAlreadyWritten)
{
    for (const char* name : {"missing/contact_group_list.xml", "."}) {
        SCOPED_TRACE(name);
        Lists lists;
        WriteBytes(lists.oldPath, "<contactData><group><contact sLocalRename='a'/></group></contactData>");
        lists.groupPath = lists.folder.Path(name);
        EXPECT_EQ(lists.Translate(), 0);
        EXPECT_EQ(lists.reports, kEnter + kRead + kLeave);
        lists.ExpectContacts(Contact("a", 0));
        EXPECT_EQ(lists.FileCount(), 2u);
    }
}

TEST(ContactV4XToV50GetData, BothListsAreEmptiedOnceTheFileIsFound)
{
    struct Row {
        const char* text; // of the old file; null for none
        int result;       // of the reader
        std::size_t expectedContacts;
        std::size_t expectedGroups;
    };
    const Row rows[] = {
        {nullptr, 0, 1, 1},
        {"<contactData", 0, 0, 0},
        {"<Other/>", 0, 0, 0},
        {"<contactData/>", 1, 0, 2},
        {"<contactData><group sGroupName='g'><contact sLocalRename='a'/><contact "
         "sLocalRename='b'/></group></contactData>",
         1, 2, 3},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text == nullptr ? "no file" : row.text);
        const Lists lists;
        if (row.text != nullptr)
            WriteBytes(lists.oldPath, row.text);
        std::list<ContactRecord> contacts(1);
        std::list<GroupRecord> groups(1);
        testing::internal::CaptureStderr();
        EXPECT_EQ(GetV4XContactData(lists.oldPath.c_str(), contacts, groups), row.result);
        (void)testing::internal::GetCapturedStderr();
        EXPECT_EQ(contacts.size(), row.expectedContacts);
        EXPECT_EQ(groups.size(), row.expectedGroups);
    }
}
