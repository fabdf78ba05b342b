// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "doorPhoneV4XToV50.h"

#include <gtest/gtest.h>

#include "translation.h"

namespace
{

const std::string kEnter = "chTraceStack: enter DoorPhoneV4XToV50\n";
const std::string kLeave = "chTraceStack: leave DoorPhoneV4XToV50\n";

constexpr char kEmptyItem[] = "    <item id_name=\"\" device_model=\"0\" display_name=\"\" phone_number=\"\""
                              " unlock_pin=\"\" send_audio=\"1\" send_video=\"1\" full_screen=\"1\" />\n";

/// On the device, this is both the old and the new file.
struct DoorPhones : Translation {
    DoorPhones() : Translation(&DoorPhoneV4XToV50, "doorphonedata.xml", "doorphonedata.xml") {}
};

/// The result for a file with this content, in place.
std::string Translated(const std::string& oldText)
{
    return DoorPhones().Translated(oldText, kEnter + kLeave);
}

std::string NewFile(const std::string& items)
{
    return "<DoorPhone>\n" + items + "</DoorPhone>\n";
}

/// A new entry that has a model and a display name only.
std::string NewItem(const std::string& model, const std::string& displayName)
{
    return "    <item id_name=\"\" device_model=\"" + model + "\" display_name=\"" + displayName +
           "\" phone_number=\"\" unlock_pin=\"\" send_audio=\"1\" send_video=\"1\" full_screen=\"1\" />\n";
}

} // namespace

TEST(DoorPhoneV4XToV50, ChildElementsBecomeAttributesInPlace)
{
    EXPECT_EQ(Translated("<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n"
                         "<DoorPhone>\n"
                         "  <item title=\"Door1\" colour=\"red\">\n"
                         "    <UnlockPIN>0042#</UnlockPIN>\n"
                         "    <PhoneNumber>8001</PhoneNumber>\n"
                         "    <DisplayName>Front door</DisplayName>\n"
                         "    <DeviceModel>2N</DeviceModel>\n"
                         "    <Volume>7</Volume>\n"
                         "  </item>\n"
                         "  <note>dropped</note>\n"
                         "  <item title=\"Door2\"><DeviceModel>Custom</DeviceModel></item>\n"
                         "  <item title=\"\"><PhoneNumber>8003</PhoneNumber></item>\n"
                         "</DoorPhone>\n"),
              "<DoorPhone>\n"
              "    <item id_name=\"Door1\" device_model=\"1\" display_name=\"Front door\" phone_number=\"8001\""
              " unlock_pin=\"0042#\" send_audio=\"1\" send_video=\"1\" full_screen=\"1\" />\n"
              "    <item id_name=\"Door2\" device_model=\"3\" display_name=\"\" phone_number=\"\""
              " unlock_pin=\"\" send_audio=\"1\" send_video=\"1\" full_screen=\"1\" />\n"
              "    <item id_name=\"\" device_model=\"0\" display_name=\"\" phone_number=\"8003\""
              " unlock_pin=\"\" send_audio=\"1\" send_video=\"1\" full_screen=\"1\" />\n"
              "</DoorPhone>\n");
}

TEST(DoorPhoneV4XToV50, AZeroCharacterEndsAText)
{
    EXPECT_EQ(
        Translated("<DoorPhone><item title='t&#0;u'><DeviceModel>2N&#0;x</DeviceModel>"
                   "<DisplayName>a&#x0;b</DisplayName><PhoneNumber>&#0;1</PhoneNumber><UnlockPIN>2&#00;</UnlockPIN>"
                   "</item><item title='&#0;'><DeviceModel>&#0;Custom</DeviceModel></item></DoorPhone>"),
        NewFile("    <item id_name=\"t\" device_model=\"1\" display_name=\"a\" phone_number=\"\" "
                "unlock_pin=\"2\" send_audio=\"1\" send_video=\"1\" full_screen=\"1\" />\n" +
                std::string(kEmptyItem)));
}

TEST(DoorPhoneV4XToV50, AModelBecomesItsNumber)
{
    struct Row {
        const char* element;
        const char* number;
    };
    const Row rows[] = {
        {"<DeviceModel>Mobotix</DeviceModel>", "0"},
        {"<DeviceModel>2N</DeviceModel>", "1"},
        {"<DeviceModel>Linkcom</DeviceModel>", "2"},
        {"<DeviceModel>Custom</DeviceModel>", "3"},
        {"<DeviceModel><![CDATA[Custom]]></DeviceModel>", "3"},
        {"<DeviceModel><![CDATA[Custom ]]></DeviceModel>", "0"},
        {"<DeviceModel>2n</DeviceModel>", "0"},
        {"<DeviceModel>CUSTOM</DeviceModel>", "0"},
        {"<DeviceModel>Link com</DeviceModel>", "0"},
        {"<DeviceModel>Custom2N</DeviceModel>", "0"},
        {"<DeviceModel>3</DeviceModel>", "0"},
        {"<DeviceModel></DeviceModel>", "0"},
        {"<DeviceModel/>", "0"},
        {"<DeviceModel><b>Custom</b></DeviceModel>", "0"},
        {"<DeviceModel>2N</DeviceModel><DeviceModel>Custom</DeviceModel>", "1"},
        {"<devicemodel>Custom</devicemodel>", "0"},
        {"", "0"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Translated(std::string("<DoorPhone><item>") + row.element + "</item></DoorPhone>"),
                  NewFile(NewItem(row.number, "")))
            << row.element;
}

TEST(DoorPhoneV4XToV50, ATextIsTheFirstChildNodeIfThatIsText)
{
    struct Row {
        const char* element;
        const char* text;
    };
    const Row rows[] = {
        {"<DisplayName>Gate</DisplayName>", "Gate"},
        {"<DisplayName>Gate<b/>way</DisplayName>", "Gate"},
        {"<DisplayName>Gate<!-- old -->way</DisplayName>", "Gate"},
        {"<DisplayName><!-- old -->Gate</DisplayName>", ""},
        {"<DisplayName><b>Gate</b></DisplayName>", ""},
        {"<DisplayName><b/>Gate</DisplayName>", ""},
        {"<DisplayName><?sort name?>Gate</DisplayName>", ""},
        {"<DisplayName><![CDATA[ <Gate> & ]]></DisplayName>", " &lt;Gate&gt; &amp; "},
        {"<DisplayName><![CDATA[Gate]]>way</DisplayName>", "Gate"},
        {"<DisplayName>A&amp;B &lt;C&gt; %s</DisplayName>", "A&amp;B &lt;C&gt; %s"},
        {"<DisplayName></DisplayName>", ""},
        {"<DisplayName/>", ""},
        {"<DisplayName value='Gate'/>", ""},
        {"<DisplayName/><DisplayName>Gate</DisplayName>", ""},
        {"<DisplayName>Gate</DisplayName><DisplayName>Yard</DisplayName>", "Gate"},
        {"<box><DisplayName>Gate</DisplayName></box>", ""},
        {"<displayName>Gate</displayName>", ""},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Translated(std::string("<DoorPhone><item>") + row.element + "</item></DoorPhone>"),
                  NewFile(NewItem("0", row.text)))
            << row.element;
}

TEST(DoorPhoneV4XToV50, SpecialCharactersComeOutUnchanged)
{
    EXPECT_EQ(Translated("<?xml version='1.0' encoding='UTF-8'?><DoorPhone><item title=' T\xC3\xBCr &quot;1&quot; '>"
                         "<UnlockPIN>&apos;1&apos;</UnlockPIN></item></DoorPhone>"),
              "<DoorPhone>\n"
              "    <item id_name=' T\xC3\xBCr &quot;1&quot; ' device_model=\"0\" display_name=\"\" phone_number=\"\""
              " unlock_pin=\"&apos;1&apos;\" send_audio=\"1\" send_video=\"1\" full_screen=\"1\" />\n"
              "</DoorPhone>\n");
}

TEST(DoorPhoneV4XToV50, AnEmptyEntryIsWrittenWithItsSwitchesOn)
{
    EXPECT_EQ(Translated("<DoorPhone><item/><item Title='x'></item></DoorPhone>"),
              NewFile(std::string(kEmptyItem) + kEmptyItem));
}

TEST(DoorPhoneV4XToV50, AListWithoutEntriesBecomesAnEmptyRoot)
{
    for (const char* text :
         {"<DoorPhone/>", "<DoorPhone></DoorPhone>", "<DoorPhone><Item title='x'/><!-- none --></DoorPhone>",
          "<Head/><DoorPhone/><DoorPhone><item title='x'/></DoorPhone>"})
        EXPECT_EQ(Translated(text), "<DoorPhone />\n") << text;
}

TEST(DoorPhoneV4XToV50, EveryEntryIsKeptInOrder)
{
    std::string oldText = "<DoorPhone>";
    std::string newItems;
    for (int number = 0; number < 300; ++number) {
        const std::string name = "d" + std::to_string(number);
        oldText += "<item><DisplayName>" + name + "</DisplayName></item><other><item/></other>";
        newItems += NewItem("0", name);
    }
    EXPECT_EQ(Translated(oldText + "</DoorPhone>"), NewFile(newItems));
}

TEST(DoorPhoneV4XToV50, TheNewFormReadAsTheOldOneLosesItsTexts)
{
    DoorPhones files;
    WriteBytes(files.oldPath,
               "<DoorPhone><item title='a'><DeviceModel>2N</DeviceModel><DisplayName>b</DisplayName></item>"
               "<item title='c'/></DoorPhone>");
    EXPECT_EQ(files.Translate(), 1);
    EXPECT_NE(ReadBytes(files.oldPath).find("id_name=\"a\" device_model=\"1\" display_name=\"b\""), std::string::npos);
    for (int run = 0; run < 2; ++run) {
        EXPECT_EQ(files.Translate(), 1);
        EXPECT_EQ(ReadBytes(files.oldPath), NewFile(std::string(kEmptyItem) + kEmptyItem));
    }
}

TEST(DoorPhoneV4XToV50, AnotherTargetLeavesTheOldFileAlone)
{
    DoorPhones files;
    WriteBytes(files.oldPath, "<DoorPhone><item/></DoorPhone>");
    EXPECT_EQ(files.Translate(files.folder.Path("new.xml")), 1);
    EXPECT_EQ(ReadBytes(files.oldPath), "<DoorPhone><item/></DoorPhone>");
    EXPECT_EQ(ReadBytes(files.folder.Path("new.xml")), NewFile(kEmptyItem));
}

TEST(DoorPhoneV4XToV50, ANullPathIsAFailureWithoutAWord)
{
    const DoorPhones files;
    WriteBytes(files.oldPath, "<DoorPhone><item/></DoorPhone>");
    testing::internal::CaptureStderr();
    EXPECT_EQ(DoorPhoneV4XToV50(nullptr, files.oldPath.c_str()), 0);
    EXPECT_EQ(DoorPhoneV4XToV50(files.oldPath.c_str(), nullptr), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), kEnter + kLeave + kEnter + kLeave);
    EXPECT_EQ(ReadBytes(files.oldPath), "<DoorPhone><item/></DoorPhone>");
}

TEST(DoorPhoneV4XToV50, MissingDoorPhonesAreTracedWithoutAPath)
{
    DoorPhones files;
    EXPECT_EQ(files.Translate(), 0);
    EXPECT_EQ(files.reports, kEnter + "etlTrace 2: DoorPhone file not exist !\n" + kLeave);
    EXPECT_EQ(files.FileCount(), 0u);
}

TEST(DoorPhoneV4XToV50, DoorPhonesThatDoNotLoadAreTracedAndStay)
{
    for (const char* text : {"", "\n", "<DoorPhone>", "<DoorPhone><item></DoorPhone>", "no XML"}) {
        DoorPhones files;
        WriteBytes(files.oldPath, text);
        EXPECT_EQ(files.Translate(), 0) << text;
        EXPECT_EQ(files.reports,
                  kEnter + "etlTrace 2: Can't load the DoorPhone file [" + files.oldPath + "]!\n" + kLeave)
            << text;
        EXPECT_EQ(ReadBytes(files.oldPath), text);
        EXPECT_EQ(files.FileCount(), 1u) << text;
    }
}

TEST(DoorPhoneV4XToV50, AnotherRootIsAFailureWithoutAWord)
{
    for (const char* text : {"<doorPhone><item/></doorPhone>", "<Other><DoorPhone/></Other>"}) {
        DoorPhones files;
        WriteBytes(files.oldPath, text);
        EXPECT_EQ(files.Translate(), 0) << text;
        EXPECT_EQ(files.reports, kEnter + kLeave) << text;
        EXPECT_EQ(ReadBytes(files.oldPath), text);
    }
}

TEST(DoorPhoneV4XToV50, AFailedSaveIsAFailureWithoutAWord)
{
    DoorPhones files;
    WriteBytes(files.oldPath, "<DoorPhone><item/></DoorPhone>");
    for (const std::string& path : {files.folder.Path("missing/doorphonedata.xml"), files.folder.Path()}) {
        EXPECT_EQ(files.Translate(path), 0) << path;
        EXPECT_EQ(files.reports, kEnter + kLeave) << path;
    }
    EXPECT_EQ(ReadBytes(files.oldPath), "<DoorPhone><item/></DoorPhone>");
    EXPECT_EQ(files.FileCount(), 1u);
}

TEST(DoorPhoneV4XToV50GetData, TheListIsEmptiedOnceTheFileIsFound)
{
    struct Row {
        const char* text;          // of the old file; null for none
        int result;                // of the reader
        std::size_t expectedCount; // of door phones, one of which was already in the list
    };
    const Row rows[] = {
        {nullptr, 0, 1},
        {"<DoorPhone", 0, 0},
        {"<Other/>", 0, 0},
        {"<DoorPhone/>", 1, 0},
        {"<DoorPhone><item/><item/></DoorPhone>", 1, 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text == nullptr ? "no file" : row.text);
        const DoorPhones files;
        if (row.text != nullptr)
            WriteBytes(files.oldPath, row.text);
        std::list<DoorPhoneRecord> doorPhones(1);
        testing::internal::CaptureStderr();
        EXPECT_EQ(GetV4XDoorPhoneData(files.oldPath.c_str(), doorPhones), row.result);
        (void)testing::internal::GetCapturedStderr();
        EXPECT_EQ(doorPhones.size(), row.expectedCount);
    }
}

TEST(DoorPhoneV4XToV50GetData, ANullPathLeavesTheListAlone)
{
    std::list<DoorPhoneRecord> doorPhones(1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(GetV4XDoorPhoneData(nullptr, doorPhones), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(doorPhones.size(), 1u);
}

TEST(DoorPhoneV4XToV50SetData, SwitchesAreWrittenAsTheyAre)
{
    const DoorPhones files;
    DoorPhoneRecord doorPhone;
    doorPhone.idName = "i";
    doorPhone.deviceModel = -7;
    doorPhone.displayName = "d";
    doorPhone.phoneNumber = "p";
    doorPhone.unlockPin = "u";
    doorPhone.sendAudio = false;
    doorPhone.fullScreen = false;
    EXPECT_EQ(SetV50DoorPhoneData(nullptr, {doorPhone}), 0);
    EXPECT_EQ(SetV50DoorPhoneData(files.folder.Path("missing/new.xml").c_str(), {doorPhone}), 0);
    EXPECT_EQ(SetV50DoorPhoneData(files.oldPath.c_str(), {doorPhone}), 1);
    EXPECT_EQ(
        ReadBytes(files.oldPath),
        NewFile("    <item id_name=\"i\" device_model=\"-7\" display_name=\"d\" phone_number=\"p\" unlock_pin=\"u\""
                " send_audio=\"0\" send_video=\"1\" full_screen=\"0\" />\n"));

    DoorPhoneRecord withoutVideo;
    withoutVideo.sendVideo = false;
    EXPECT_EQ(SetV50DoorPhoneData(files.oldPath.c_str(), {withoutVideo}), 1);
    EXPECT_EQ(ReadBytes(files.oldPath),
              NewFile("    <item id_name=\"\" device_model=\"0\" display_name=\"\" phone_number=\"\" unlock_pin=\"\""
                      " send_audio=\"1\" send_video=\"0\" full_screen=\"1\" />\n"));
}

TEST(DoorPhoneV4XToV50ModelIndex, AnUnknownNameCountsAsTheFirstModel)
{
    struct Row {
        const char* name;
        int number;
    };
    const Row rows[] = {
        {"Mobotix", 0}, {"2N", 1},      {"Linkcom", 2}, {"Custom", 3},   {nullptr, 0},  {"", 0},
        {"custom", 0},  {"Custom ", 0}, {" 2N", 0},     {"Linkcom2", 0}, {"Linkco", 0}, {"2n", 0},
        {"LINKCOM", 0}, {"2N\n", 0},    {"2N\t", 0},    {"1", 0},        {"3", 0},
    };
    for (const Row& row : rows)
        EXPECT_EQ(GetDoorPhoneModelIndex(row.name), row.number) << (row.name == nullptr ? "null" : row.name);
}
