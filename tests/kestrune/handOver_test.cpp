// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The whole hand-over: mode "1" and then mode "2" on one phone, also with damaged files.

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

#include "bundledPlatform.h"
#include "phoneImage.h"
#include "untouchedFiles.h"

namespace
{

using Files = std::map<std::string, std::string>;

constexpr char kSystem[] = "/config/system/system.ini";
constexpr char kHandOver[] = "/tmp/VersionInfo.cfg";
constexpr char kFactory[] = "/phone/factory/user/user.ini";
constexpr char kFactoryAccount[] = "/phone/factory/user/voip/sipAccount16.cfg";
constexpr char kDirectIP[] = "/config/user/voip/directip.cfg";
constexpr char kAccount0[] = "/config/user/voip/sipAccount0.cfg";
constexpr char kAccount4[] = "/config/user/voip/sipAccount4.cfg";
constexpr char kAccount16[] = "/config/user/voip/sipAccount16.cfg";
constexpr char kLineKeys[] = "/config/data/linekey.xml";
constexpr char kProgramKeys[] = "/config/data/programkey.xml";
constexpr char kModule0[] = "/config/data/expkey0.xml";
constexpr char kModule3[] = "/config/data/expkey3.xml";
constexpr char kExpansionKeys[] = "/config/data/expkey5.xml";

const std::string kOldLayout = "<dsskey><item type=\"28\"><itemdata line=\"2\"/></item></dsskey>";
const std::string kNewLayout = "<?xml version=\"1.0\"?>\n<dsskey>\n\t<item type=\"28\">\n\t\t<itemdata line=\"2\" "
                               "history_type=\"2\" />\n\t</item>\n</dsskey>\n";
const std::string kOldProgramLayout = "<programkey><item type=\"14\"><itemdata/></item></programkey>";
const std::string kNewProgramLayout = "<?xml version=\"1.0\"?>\n<programkey>\n\t<item type=\"14\">\n\t\t<itemdata "
                                      "pickup_value=\"\" />\n\t</item>\n</programkey>\n";

const std::string kFeatures = "[Features]\nBLFLedOffIdle=1\nBLfNotifyType=0\nClosePowerLight=1\nPowerLedIdle&Talk=0\n"
                              "PowerLedMail=1\n";
const std::string kOldLog = "[Syslog]\neLogType=3\nstrServerName=syslog.example.com\n";

/// A small phone with every file that modes "1" and "2" work on, before mode "1".
Files OldPhone()
{
    return {
        {kUserIni, "[Feature]\nRingbackTimeout=90\n\n" + kFeatures + "\n[Backlight]\nnBacklightTime=5\n"},
        {kSystem, kOldLog},
        {kFactory, "[Sync]\nSyncCfgByVersion=1\n"},
        {kFactoryAccount, "[account]\nSCALineKeyNumber=2\nLabel=?factory\n"},
        {kAccount0, "[account]\nSCALineKeyNumber=2\n"},
        {kAccount4, "[account]\nSCALineKeyNumber=2\ndirectip=1\n"},
        {kAccount16, "[account]\nSCALineKeyNumber=2\nLabel=spare\n"},
        {kLineKeys, kOldLayout},
        {kProgramKeys, kOldProgramLayout},
        {kExpansionKeys, kOldLayout},
    };
}

/// The same phone after mode "1".
Files PhoneBetween()
{
    Files files = OldPhone();
    files[kHandOver] = kFeatures + "\n" + kOldLog;
    files[kDirectIP] = files[kAccount4];
    files.erase(kAccount4);
    return files;
}

/// The same phone after mode "2".
Files NewPhone()
{
    Files files = PhoneBetween();
    files[kUserIni] = "[Feature]\nRingbackTimeout=90\n\n" + kFeatures +
                      "\n[Backlight]\nnBacklightTime=300\n\n[BLFLed]\nBLFLedMode=2\n\n"
                      "[PowerLed]\nPowerLed_Common=0\nPowerLed_Ring=1\nPowerLed_Mail=0\nPowerLed_Mute=0\n"
                      "PowerLed_HoldHeld=0\nPowerLed_TalkDial=0\n";
    files[kSystem] = kOldLog + "LogType=2\nSyslogServer=syslog.example.com\n";
    files[kAccount0] += "\n[CallCenter]\nbEnableQueueStatusLight=0\n";
    files[kAccount16] = files[kDirectIP];
    files.erase(kDirectIP);
    files[kLineKeys] = files[kExpansionKeys] = kNewLayout;
    files[kProgramKeys] = kNewProgramLayout;
    return files;
}

/// Inserts lines after the first line of that text that follows the section line.
void Insert(std::string& text, const std::string& section, const std::string& line, const std::string& inserted)
{
    const std::size_t position = text.find(line, text.find(section));
    if (position == std::string::npos)
        ADD_FAILURE() << "no " << section << line;
    else
        text.insert(position + line.size(), inserted);
}

void Replace(std::string& text, const std::string& from, const std::string& to)
{
    const std::size_t position = text.find(from);
    if (position == std::string::npos)
        ADD_FAILURE() << "no " << from;
    else
        text.replace(position, from.size(), to);
}

/// The values of all attributes of that name, as in the text and in its order.
void ExpectAttributes(const std::string& text, const std::string& name, const std::vector<std::string>& values)
{
    std::vector<std::string> found;
    const std::string begin = " " + name + "=\"";
    for (std::size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at)) {
        at += begin.size();
        found.push_back(text.substr(at, text.find('"', at) - at));
    }
    EXPECT_EQ(found, values) << name;
}

void Put(PhoneImage& phone, const Files& files)
{
    for (const auto& [path, bytes] : files)
        phone.Put(path, bytes);
}

/// Every regular file of the phone, and no other.
Files AllFiles(const PhoneImage& phone)
{
    Files files;
    for (const char* tree : {"/config", "/phone", "/tmp"}) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(phone.HostPath(tree))) {
            if (entry.is_regular_file())
                files[entry.path().string().substr(phone.HostPath("").size())] = ReadBytes(entry.path().string());
        }
    }
    return files;
}

/// Bytes that are not text: no line end among the first or at the end, so that text added after them is known.
std::string Garbage()
{
    std::mt19937 random(20240311);
    std::string bytes(4000, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random() & 0xff);
    std::replace(bytes.begin(), bytes.begin() + 1000, '\n', '\x80');
    bytes.back() = '\x80';
    return bytes;
}

/// Ways in which a file is damaged: regular files with these bytes, or something that cannot be read.
enum class Damage { Empty, Garbage, Folder, Fifo, Unreadable };

constexpr Damage kAllDamage[] = {Damage::Empty, Damage::Garbage, Damage::Folder, Damage::Fifo, Damage::Unreadable};

std::ostream& operator<<(std::ostream& stream, Damage damage)
{
    constexpr const char* kNames[] = {"empty", "garbage", "a folder", "a FIFO", "unreadable"};
    return stream << kNames[static_cast<int>(damage)];
}

/// Runs a mode with one damaged file. Afterwards the phone must contain these files, including the damaged one.
void ExpectWithDamage(const std::string& mode, Files before, const std::string& path, Damage damage, const Files& after)
{
    std::ostringstream trace;
    trace << "mode " << mode << ", " << path << " is " << damage;
    SCOPED_TRACE(trace.str());
    PhoneImage phone;
    Put(phone, before);
    const std::string hostPath = phone.HostPath(path);
    if (damage == Damage::Folder || damage == Damage::Fifo)
        phone.Remove(path);
    if (damage == Damage::Folder)
        phone.PutFolder(path);
    else if (damage == Damage::Fifo)
        EXPECT_EQ(mkfifo(hostPath.c_str(), 0600), 0);
    else if (damage != Damage::Unreadable)
        phone.Put(path, damage == Damage::Empty ? "" : Garbage());
    else
        EXPECT_EQ(chmod(hostPath.c_str(), 0), 0);

    // Without the capabilities of root, a file without permissions cannot be read by root either.
    phone.AddSandboxOptions({"--cap-drop", "ALL"});
    const ProcessResult result = RunProcess(phone.Command({mode}), phone.Environment());
    EXPECT_EQ(result.exitStatus, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output, "");

    if (damage == Damage::Unreadable) {
        struct stat status = {};
        EXPECT_EQ(stat(hostPath.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777u, 0u);
        chmod(hostPath.c_str(), 0600);
    }
    EXPECT_EQ(std::filesystem::is_directory(hostPath), damage == Damage::Folder);
    EXPECT_EQ(std::filesystem::is_fifo(hostPath), damage == Damage::Fifo);
    EXPECT_EQ(AllFiles(phone), after);
}

/// The content of the damaged file after a run that adds nothing to it.
void PutDamaged(Files& files, const std::string& path, Damage damage, const std::string& unreadableBytes)
{
    files.erase(path);
    if (damage == Damage::Empty)
        files[path] = "";
    if (damage == Damage::Garbage)
        files[path] = Garbage();
    if (damage == Damage::Unreadable)
        files[path] = unreadableBytes;
}

bool CanBeWritten(Damage damage)
{
    return damage == Damage::Empty || damage == Damage::Garbage;
}

/// The content of the damaged INI file after sections are added to it.
std::string WithSections(Damage damage, const std::string& sections)
{
    return damage == Damage::Empty ? sections : Garbage() + "\n\n" + sections;
}

const std::string kNewExampleProgramKeys =
    "<?xml version=\"1.0\"?>\n<programkey>\n"
    "\t<item id=\"1\" name=\"softkey1\" type=\"28\">\n"
    "\t\t<itemdata line=\"0\" label=\"History\" value=\"\" history_type=\"0\" />\n\t</item>\n"
    "\t<item id=\"2\" name=\"softkey2\" type=\"22\">\n"
    "\t\t<itemdata line=\"1\" label=\"Directory\" value=\"\" xml_phonebook=\"1\" />\n\t</item>\n"
    "\t<item id=\"3\" name=\"softkey3\" type=\"31\">\n\t\t<itemdata label=\"DND\" />\n\t</item>\n"
    "\t<item id=\"4\" name=\"softkey4\" type=\"38\" />\n"
    "\t<item id=\"5\" name=\"up\" type=\"28\">\n"
    "\t\t<itemdata label=\"Calls\" history_type=\"0\" />\n\t</item>\n"
    "\t<item id=\"6\" name=\"down\" type=\"45\">\n"
    "\t\t<itemdata line=\"3\" label=\"Agents\" value=\"\" xml_phonebook=\"3\" />\n\t</item>\n"
    "\t<item id=\"7\" name=\"left\" type=\"54\">\n"
    "\t\t<itemdata line=\"0\" label=\"\" xml_phonebook=\"0\" />\n\t</item>\n"
    "\t<item id=\"8\" name=\"right\" type=\"47\">\n"
    "\t\t<itemdata label=\"Zoll\" xml_phonebook=\"0\" />\n\t</item>\n"
    "\t<item id=\"9\" name=\"ok\" type=\"0\" />\n\t<item id=\"10\" name=\"cancel\" />\n"
    "\t<item id=\"11\" name=\"mute\" type=\"71\">\n"
    "\t\t<itemdata line=\"4\" value=\"#9\" label=\"Open door\" extension=\"\" />\n\t</item>\n"
    "</programkey>\n";

} // namespace

TEST(HandOver, ModeOneThenTwoOnAPhoneWithAllFiles)
{
    PhoneImage phone;
    Put(phone, OldPhone());
    phone.Run("1");
    EXPECT_EQ(AllFiles(phone), PhoneBetween());
    const UntouchedFiles sources(phone, {kHandOver, kFactory, kFactoryAccount});
    phone.Run("2");
    EXPECT_EQ(AllFiles(phone), NewPhone());
    sources.Check();
    EXPECT_THAT(phone.Reports(), testing::IsEmpty());
}

TEST(HandOver, ModeOneTouchesNoFileThatItOnlyReads)
{
    PhoneImage phone;
    Put(phone, OldPhone());
    const UntouchedFiles others(phone, {kUserIni, kSystem, kFactory, kFactoryAccount, kAccount0, kAccount16, kLineKeys,
                                        kProgramKeys, kExpansionKeys});
    phone.Run("1");
    others.Check();
}

TEST(HandOver, ModeTwoTwiceConvertsAgain)
{
    PhoneImage phone;
    Put(phone, PhoneBetween());
    phone.Run("2");
    phone.Run("2");
    Files expected = NewPhone();
    std::string& user = expected[kUserIni];
    user.replace(user.find("nBacklightTime=300"), 18, "nBacklightTime=18000");
    expected[kAccount16] = "[account]\nSCALineKeyNumber=2\nLabel=factory\n"; // the direct-IP file was removed
    EXPECT_EQ(AllFiles(phone), expected);
}

TEST(HandOver, ModeTwoAloneOnlyTakesTheFactoryAccount)
{
    PhoneImage phone;
    Put(phone, OldPhone());
    phone.Run("2");
    Files expected = OldPhone();
    expected[kAccount16] = "[account]\nSCALineKeyNumber=2\nLabel=factory\n";
    EXPECT_EQ(AllFiles(phone), expected);
}

TEST(HandOver, APhoneWithSomeOfTheFiles)
{
    // No system.ini, only one expansion module, no marked account, no factory account.
    PhoneImage phone;
    phone.Put(kUserIni, "[Features]\nBLfNotifyType=1\nBLFLedOffIdle=0\n\n[Feature]\nRingbackTimeout=90\n");
    phone.Put(kFactory, "[Sync]\nSyncCfgByVersion=1\n");
    phone.Put(kAccount0, "[account]\n");
    phone.Put(kExpansionKeys, kOldLayout);
    phone.Run("1");
    const std::string handOver = "[Features]\nBLFLedOffIdle=0\nBLfNotifyType=1\nClosePowerLight=\nPowerLedIdle&Talk=\n"
                                 "PowerLedMail=\n\n[Syslog]\neLogType=\nstrServerName=\n";
    phone.Expect(kHandOver, handOver);
    phone.Expect(kAccount0, "[account]\nSCALineKeyNumber=-1\n");
    phone.ExpectNothingElseChanged();
    phone.Run("2");
    phone.Expect(kUserIni, "[Features]\nBLfNotifyType=1\nBLFLedOffIdle=0\n\n[Feature]\nRingbackTimeout=90\n\n"
                           "[BLFLed]\nBLFLedMode=1\n\n[Backlight]\nnBacklightTime=60\n");
    phone.Expect(kExpansionKeys, kNewLayout);
    phone.ExpectNothingElseChanged();
}

TEST(HandOver, APhoneWithNoneOfTheFiles)
{
    for (const bool areFoldersThere : {false, true}) {
        PhoneImage phone;
        for (const char* folder : {"/config/user/voip", "/config/system", "/config/data", "/phone/factory/user/voip"}) {
            if (areFoldersThere)
                phone.PutFolder(folder);
        }
        phone.Run("1");
        const Files seeded = {{kUserIni, "[Feature]\nRingbackTimeout=180\n"}};
        EXPECT_EQ(AllFiles(phone), areFoldersThere ? seeded : Files());
        phone.Run("2");
        phone.ExpectNothingElseChanged();

        phone.Put(kHandOver, "");
        phone.Run("2");
        if (areFoldersThere)
            phone.Expect(kUserIni, "[Feature]\nRingbackTimeout=180\n\n[Backlight]\nnBacklightTime=60\n");
        phone.ExpectNothingElseChanged();
    }
}

TEST(HandOver, DamagedHandOverFileInModeOne)
{
    for (const Damage damage : kAllDamage) {
        Files before = OldPhone();
        before[kHandOver] = "[Features]\nPowerLedMail=7\n";
        Files after = PhoneBetween();
        PutDamaged(after, kHandOver, damage, before[kHandOver]);
        if (CanBeWritten(damage))
            after[kHandOver] = WithSections(damage, kFeatures + "\n" + kOldLog);
        ExpectWithDamage("1", before, kHandOver, damage, after);
    }
}

TEST(HandOver, DamagedUserFileInModeOne)
{
    for (const Damage damage : kAllDamage) {
        Files after = PhoneBetween();
        PutDamaged(after, kUserIni, damage, OldPhone()[kUserIni]);
        after[kHandOver] = kOldLog; // nothing can be read from its section, so no key of it is saved
        if (CanBeWritten(damage)) {
            after[kUserIni] = WithSections(damage, "[Feature]\nRingbackTimeout=180\n");
            after[kHandOver] = "[Features]\nBLFLedOffIdle=\nBLfNotifyType=\nClosePowerLight=\nPowerLedIdle&Talk=\n"
                               "PowerLedMail=\n\n" +
                               kOldLog;
        }
        ExpectWithDamage("1", OldPhone(), kUserIni, damage, after);
    }
}

TEST(HandOver, DamagedSystemFileInModeOne)
{
    for (const Damage damage : kAllDamage) {
        Files after = PhoneBetween();
        PutDamaged(after, kSystem, damage, OldPhone()[kSystem]);
        after[kHandOver] = CanBeWritten(damage) ? kFeatures + "\n[Syslog]\neLogType=\nstrServerName=\n" : kFeatures;
        ExpectWithDamage("1", OldPhone(), kSystem, damage, after);
    }
}

TEST(HandOver, DamagedHandOverFileInModeTwo)
{
    // The file exists, so the steps that need no value from it run; it has no value, so the others change nothing.
    for (const Damage damage : kAllDamage) {
        Files after = NewPhone();
        for (const char* path : {kSystem, kAccount0})
            after[path] = OldPhone()[path];
        after[kUserIni] = OldPhone()[kUserIni];
        after[kUserIni].replace(after[kUserIni].find("Time=5\n"), 7, "Time=300\n");
        PutDamaged(after, kHandOver, damage, PhoneBetween()[kHandOver]);
        ExpectWithDamage("2", PhoneBetween(), kHandOver, damage, after);
    }
}

TEST(HandOver, DamagedUserFileInModeTwo)
{
    for (const Damage damage : kAllDamage) {
        Files after = NewPhone();
        PutDamaged(after, kUserIni, damage, OldPhone()[kUserIni]);
        if (CanBeWritten(damage))
            after[kUserIni] = WithSections(damage, "[Feature]\nRingbackTimeout=180\n\n[BLFLed]\nBLFLedMode=2\n\n"
                                                   "[PowerLed]\nPowerLed_Common=0\nPowerLed_Ring=1\nPowerLed_Mail=0\n"
                                                   "PowerLed_Mute=0\nPowerLed_HoldHeld=0\nPowerLed_TalkDial=0\n\n"
                                                   "[Backlight]\nnBacklightTime=60\n");
        ExpectWithDamage("2", PhoneBetween(), kUserIni, damage, after);
    }
}

TEST(HandOver, DamagedSystemFileInModeTwo)
{
    for (const Damage damage : kAllDamage) {
        Files after = NewPhone();
        PutDamaged(after, kSystem, damage, OldPhone()[kSystem]);
        if (CanBeWritten(damage))
            after[kSystem] = WithSections(damage, "[Syslog]\nLogType=2\nSyslogServer=syslog.example.com\n");
        ExpectWithDamage("2", PhoneBetween(), kSystem, damage, after);
    }
}

TEST(HandOver, DamagedKeyLayoutsInModeTwo)
{
    for (const char* path : {kLineKeys, kProgramKeys, kExpansionKeys}) {
        for (const Damage damage : kAllDamage) {
            Files after = NewPhone();
            PutDamaged(after, path, damage, OldPhone()[path]);
            ExpectWithDamage("2", PhoneBetween(), path, damage, after);
        }
    }
}

TEST(HandOver, TheExamplePhoneHasItsNewSettingsAfterModesOneAndTwo)
{
    PhoneImage phone;
    phone.PutExamplePhone();
    Files expected = AllFiles(phone);
    phone.Run("1");
    phone.Run("2");
    EXPECT_THAT(phone.Reports(), testing::IsEmpty());

    // The start-up fix-ups, and account 4 as the new account 16.
    Insert(expected[kAccount0], "[account]\n", "CallerIdSource=4\n", "SCALineKeyNumber=-1\n");
    Insert(expected[Account(2)], "[account]\r\n", "CallerIdSource=2\r\n", "SCALineKeyNumber=-1\r\n");
    Insert(expected[Account(3)], "[account]\n", "HoldMusic=sip:moh-customs@contact.example.org\n",
           "SCALineKeyNumber=-1\n");
    Insert(expected[kAccount4], "[account]\n", "CallerIdSource=2\n", "SCALineKeyNumber=-1\n");
    expected[kAccount16] = expected[kAccount4];
    expected.erase(kAccount4);
    Insert(expected[kUserIni], "[Feature]\n", "bKeepRingback183=0\n", "RingbackTimeout=150\n");

    // The power light was switched off, and with it the queue-status light of the accounts below 16.
    for (int number : {0, 1, 3})
        Replace(expected[Account(number)], "bEnableQueueStatusLight=1\n", "bEnableQueueStatusLight=0\n");
    expected[Account(2)] += "\r\n[CallCenter]\r\nbEnableQueueStatusLight=0\r\n";
    Replace(expected[kUserIni], "nBacklightTime=5\n", "nBacklightTime=300\n");
    expected[kUserIni] +=
        "\n[BLFLed]\nBLFLedMode=2\n\n[PowerLed]\nPowerLed_Common=0\nPowerLed_Ring=1\nPowerLed_Mail=0\n"
        "PowerLed_Mute=0\nPowerLed_HoldHeld=0\nPowerLed_TalkDial=0\n";
    Insert(expected[kSystem], "[Syslog]\n", "bPrependMac=1\n", "LogType=2\nSyslogServer=syslog.ldn.example.com\n");
    expected[kHandOver] = kFeatures + "\n[Syslog]\neLogType=3\nstrServerName=syslog.ldn.example.com\n";

    // Of the other key layouts the next test looks at the attributes.
    const Files after = AllFiles(phone);
    expected[kProgramKeys] = kNewExampleProgramKeys;
    for (const char* path : {kLineKeys, kModule0, kModule3})
        expected[path] = after.at(path);

    EXPECT_FALSE(phone.Has(kDirectIP));
    EXPECT_EQ(after, expected);
}

TEST(HandOver, TheExamplePhonesKeysHaveTheirNewAttributesAfterModesOneAndTwo)
{
    PhoneImage phone;
    phone.PutExamplePhone();
    phone.Run("1");
    phone.Run("2");
    const Files after = AllFiles(phone);
    ExpectAttributes(after.at(kLineKeys), "pickup_value", {"*82101", "*8", "", "*82160"});
    ExpectAttributes(after.at(kLineKeys), "xml_phonebook", {"0"});
    ExpectAttributes(after.at(kLineKeys), "history_type", {"2"});
    ExpectAttributes(after.at(kModule0), "pickup_value",
                     {"*82101", "*82102", "*82103", "*82104", "", "*8&amp;2106", "*82160", "", "*33", "*83101"});
    ExpectAttributes(after.at(kModule0), "xml_phonebook", {"1"});
    ExpectAttributes(after.at(kModule0), "history_type", {});
    ExpectAttributes(after.at(kModule3), "pickup_value", {"**4101", "**4109", "**4160", ""});
    ExpectAttributes(after.at(kModule3), "xml_phonebook", {"2", "0", "4", "0", "0"});
    ExpectAttributes(after.at(kModule3), "history_type", {"1", "3"});
}

TEST(HandOver, AnotherUsersFileInAFolderThatEveryoneMayWriteToIsNoHandOver)
{
    if (!kHasBundledPlatform)
        GTEST_SKIP() << "rests on what the bundled library trusts";
    const std::string planted = kFeatures + "[Syslog]\neLogType=3\nstrServerName=planted.example.net\n";
    for (const mode_t mode : {01777u, 0777u}) {
        for (const bool isLink : {false, true}) {
            SCOPED_TRACE(testing::Message() << std::oct << mode << (isLink ? ", a link" : ", a file"));
            PhoneImage phone;
            for (const auto& [path, text] : PhoneBetween())
                phone.Put(path, text);
            phone.Remove(kHandOver);
            const std::string path = phone.HostPath(kHandOver);
            phone.Put("/tmp/theirs", planted);
            if (isLink)
                std::filesystem::create_symlink("theirs", path);
            else
                phone.Put(kHandOver, planted);
            if (lchown(path.c_str(), 2345, 2345) != 0)
                GTEST_SKIP() << "only root can give a file to another user";
            ASSERT_EQ(chmod(phone.HostPath("/tmp").c_str(), mode), 0);
            phone.Run("2");
            EXPECT_EQ(phone.Get(kSystem).find("planted"), std::string::npos);
            EXPECT_EQ(phone.Get(kUserIni).find("BLFLedMode"), std::string::npos);
            EXPECT_EQ(phone.Get("/tmp/theirs"), planted);

            phone.Run("1");
            struct stat status = {};
            ASSERT_EQ(lstat(path.c_str(), &status), 0);
            EXPECT_TRUE(S_ISREG(status.st_mode));
            EXPECT_EQ(status.st_uid, geteuid()) << "it was replaced itself";
            EXPECT_EQ(phone.Get(kHandOver).find("planted"), std::string::npos);
            EXPECT_EQ(phone.Get("/tmp/theirs"), planted);
        }
    }
}
