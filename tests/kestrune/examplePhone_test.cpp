// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

// The example phone, a whole phone right after its upgrade: the results of the modes, and of a second run.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bundledPlatform.h"
#include "iniFile.h"
#include "phoneImage.h"

namespace
{

constexpr char kSystemIni[] = "/config/system/system.ini";
constexpr char kAccount0[] = "/config/user/voip/sipAccount0.cfg";
constexpr char kAccount1[] = "/config/user/voip/sipAccount1.cfg";
constexpr char kAccount2[] = "/config/user/voip/sipAccount2.cfg";
constexpr char kAccount3[] = "/config/user/voip/sipAccount3.cfg";
constexpr char kAccount4[] = "/config/user/voip/sipAccount4.cfg";
constexpr char kAccount16[] = "/config/user/voip/sipAccount16.cfg";
constexpr char kVersionIni[] = "/config/version.ini";
constexpr char kDoorPhones[] = "/config/data/doorphonedata.xml";

const char* const kIniFiles[] = {kUserIni,  kSystemIni, kVersionIni, kAccount0, kAccount1,
                                 kAccount2, kAccount3,  kAccount4,   kAccount16};
const char* const kNewXmlFiles[] = {"/config/data/contact_list.xml", "/config/data/contact_group_list.xml",
                                    "/config/data/DialPlan.xml",     "/config/data/DialNow.xml",
                                    "/config/data/memkey.xml",       "/config/data/remote_phonebook_list.xml"};

/// A secret of the phone in the order of the list of enciphered entries, with its token, which another implementation
/// of the cipher made with the phone's key.
struct Secret {
    const char* file;
    const char* section;
    const char* key;
    const char* plain;
    const char* token;
};

const Secret kSecrets[] = {
    {kAccount0, "account", "Password", "Gooseberry-Wharf=12", "y957M1KyQQUYzWScFjgYBwNt9PbiBZHkPq55CkcKUfunbaM"},
    {kAccount1, "account", "Password", "Spree:Kahn_44", "HvmZ0UbM9Tt71kWgfGCgwqy65LCU6BhJnzzFEE8"},
    {kAccount2, "account", "Password", "Battery.Pier#9", "1YSC7YAwHiPTvd81Z1LSPHldXcRrsIDMNGK4at2U"},
    {kAccount3, "account", "Password", "tariff%Nine&Seven", "2qY4G76zEvkqfMsSDoYVsgY6MTqnJ61J+DGZgsDSTSMk"},
    {kAccount0, "account", "VoiceMailPin", "40128", "J3g8d9QLeIGw6gby5pNx6CmVnP60"},
    {kAccount1, "account", "VoiceMailPin", "7712", "2y6/aMK4oYaAhRCioU2kkPzFres"},
    {kAccount2, "account", "VoiceMailPin", "998031", "jx7oVqSz/ZoPNuKjbAq62P31qFsFOg"},
    {kAccount0, "VoiceMail", "Pin", "40128", "J3g8d9QLeIGw6gby5pNx6CmVnP60"},
    {kAccount1, "VoiceMail", "Pin", "7712", "2y6/aMK4oYaAhRCioU2kkPzFres"},
    {kAccount2, "VoiceMail", "Pin", "998031", "jx7oVqSz/ZoPNuKjbAq62P31qFsFOg"},
    {kAccount0, "CallCenter", "strAgentPassword", "lantern22", "ACr6IjCJyq687I51Lbtp3x1pX8yveUsV4Q"},
    {kAccount1, "CallCenter", "strAgentPassword", "Zollamt/2231", "0Gv/AfyVfEesSjfddreGQgE4JyvlyNown/E9Fw"},
    {kAccount3, "CallCenter", "strAgentPassword", "\"manifest no. 5\"", "euBPx6IRSLpHV1RZtM4hVILKxYAp5vIuGDuNMoEUpe4"},
    {kUserIni, "WebServer", "strAdminPassword", "Quayside-71!pelican",
     "g/7ZcIhAsW79H8FZTjCy63cU+TIHnA8Uc2FH6xaPuQK9fHs"},
    {kUserIni, "WebServer", "strUserPassword", "parcel&post=2019", "uCVjt0AFDYwkwL6ze9Ghb66OnDz0q9ZbiExO3NlEGP8"},
    {kUserIni, "WebServer", "strDealerPassword", "Dealer-0815", "0AqQv71HU+bPlvOG0c56Q7H8GWaKkfSGOikg"},
    {kUserIni, "AutoProvision", "strPassword", "Ledger,Anchor;Moss5",
     "zxRP1Lbod3nq72/g5hFrZS6bb9ab1aHNc2txATX7YJ7w+m0"},
    {kUserIni, "RemotePhonebook", "strPassword", "seagull/Tuesday", "JgXLBPNmzMZDVqdaEozY5k9PwxX2gLnjOWKQDyhblA"},
    {kUserIni, "LDAP", "strPwd", "cn=Bind:4hosts", "Go1JjBjLC7i8r76dAlszA06AjgyszGM9/XhIMT3a"},
    {kUserIni, "LDAP", "strPassword", "cn=Bind:4hosts", "Go1JjBjLC7i8r76dAlszA06AjgyszGM9/XhIMT3a"},
    {kUserIni, "PhoneSetting", "strUnlockPin", "7316", "tlsZj2EZMPbvmUbsi4Uha19gOb4"},
    {kUserIni, "KeyLock", "strPin", "7316", "tlsZj2EZMPbvmUbsi4Uha19gOb4"},
    {kUserIni, "WiFi", "strPsk", "correct tram biscuit 1904",
     "U+2fxaBVSgxAORioDlmIR+qVmsUP9+ecBasC79s+BFR5kWYxN+Holm4"},
    {kUserIni, "VPN", "strPassword", "Heron_over_Thames_88", "IIimy9jWbLNeXQEPRAQEO6TsEVBm4HoHtGMblB31uKdLwPdR"},
    {kSystemIni, "Wireless", "strKey", "correct tram biscuit 1904",
     "U+2fxaBVSgxAORioDlmIR+qVmsUP9+ecBasC79s+BFR5kWYxN+Holm4"},
    {kSystemIni, "Vpn", "strPassword", "Heron_over_Thames_88", "IIimy9jWbLNeXQEPRAQEO6TsEVBm4HoHtGMblB31uKdLwPdR"},
    {kSystemIni, "Dot1x", "strPassword", "sluice+Gate+42", "rmo+oNzg06tTzHv3mvnCvR5bgiD+IdxDBhBqwIIB"},
    {kSystemIni, "Acs", "strPassword", "T0wpath;barge;lock", "3WFP7+iPFUWH5t+sz7UFuCU/Vk/C7iZhgieOeoxFrgCSYQ"},
};

/// The dealer password is not on the phone: its default is enciphered and written.
constexpr char kDealerKey[] = "strDealerPassword";
constexpr char kDealerOnce[] = "0AqQv71HU+bPlvOG0c56Q7H8GWaKkfSGOikg";
constexpr char kDealerTwice[] = "GWUSAeNhggJkmK4MyojGXlSSOPDR/pt2r2ei+WQPiPPOfXRKC5N5GiFJ0m6HGIUY8jwalg";

constexpr char kUnlockPinToken[] = "tlsZj2EZMPbvmUbsi4Uha19gOb4";
constexpr char kZerosToken[] = "I1R5FHk7KtCIBBo+R9Gx++x7TIw"; // "0000"

/// A setting that the table moves, in its new place.
struct Setting {
    const char* file;
    const char* section;
    const char* key;
    const char* value;
};

const Setting kSettings[] = {
    {kUserIni, "Features", "nAutoDialDelay", "4"},
    {kUserIni, "Features", "bCallWaitingBeep", "1"},
    {kUserIni, "Features", "eRejectCode", "603"},
    {kUserIni, "Features", "nDialNowDelay", "4"}, // the old key stays
    {kUserIni, "Time", "strPrimaryServer", "0.ntp.example.net"},
    {kUserIni, "Time", "strBackupServer", "1.ntp.example.net"},
    {kUserIni, "Time", "strNtpServer2", "1.ntp.example.net"}, // the old key stays
    {kUserIni, "Ring", "strDefaultRing", "Ring3.wav"},
    {kUserIni, "Keys", "bHoldSwap", "1"},
    {kUserIni, "Keys", "bParkPage", "0"},
    {kUserIni, "HotLine", "strNumber", "2100"},
    {kUserIni, "ScreenSaver", "nScreenSaverTime", "20"},
    {kUserIni, "ScreenSaver", "strText", "Please ring the bell, we are at the loading bay"},
    {kUserIni, "KeyLock", "nSeconds", "90"},
    {kUserIni, "Multicast", "strPagingCodec", "G722"},
    {kUserIni, "WebServer", "nHttpPort", "8080"},
    {kUserIni, "Tone", "strCountry", "United Kingdom"},
    {kUserIni, "Sync", "strLastRelease", "3.4.12.2"},
    {kUserIni, "Forward", "nNoAnswerTimeout", "25"},
    {kUserIni, "CallControl", "eCallerIdSource", "4"},
    {kSystemIni, "Network", "strHostName", "ldn-recep-g02"},
    {kSystemIni, "LLDP", "bEnable", "1"},
    {kSystemIni, "LLDP", "nInterval", "60"},
    {kSystemIni, "Wireless", "strSsid", "BO-Voice-LDN"},
    {kSystemIni, "Vpn", "strAccount", "ldn-recep-g02"},
    {kSystemIni, "Debug", "nLevel", "3"},
    {kSystemIni, "SNMP", "strReadCommunity", "bo-phones-ro"},
    {kSystemIni, "SNMP", "strCommunity", "bo-phones-ro"},
    {kAccount0, "VoiceMail", "Number", "*97"},
    {kAccount2, "Pickup", "strDirectCode", "*8"},
    {kAccount16, "Ring", "strTone", "Default"},
    // The settings that the fix-ups make explicit.
    {kUserIni, "Feature", "RingbackTimeout", "150"},
    {kAccount0, "account", "SCALineKeyNumber", "-1"},
    {kAccount1, "account", "SCALineKeyNumber", "3"},
    {kAccount2, "account", "SCALineKeyNumber", "-1"},
    {kAccount3, "account", "SCALineKeyNumber", "-1"},
    {kAccount4, "account", "SCALineKeyNumber", "-1"},
    {kAccount16, "account", "SCALineKeyNumber", "-1"},
    // The password pass handles only the first four accounts.
    {kAccount4, "account", "Password", "gate&lift=open"},
    {kAccount16, "account", "Password", "Norrsken_hall;B17"},
    {kAccount16, "VoiceMail", "Pin", "2019"},
    {kAccount3, "VoiceMail", "Pin", ""},
    {kUserIni, "PhoneSetting", "EnLock", "0"},
};

using Lines = std::vector<std::string>;

class ExamplePhone : public PhoneImage
{
public:
    ExamplePhone() { PutExamplePhone(); }

    std::string Value(const char* file, const char* section, const char* key) const
    {
        iniFile document;
        EXPECT_NE(document.LoadFromFile(HostPath(file).c_str()), 0) << file;
        return document.GetTextValue(section, key, "(absent)");
    }

    void ExpectSettings() const
    {
        for (const Setting& setting : kSettings)
            EXPECT_EQ(Value(setting.file, setting.section, setting.key), setting.value)
                << setting.file << " [" << setting.section << "] " << setting.key;
    }

    void ExpectSecrets(bool isEnciphered) const
    {
        for (const Secret& secret : kSecrets) {
            const bool isDealer = std::string(secret.key) == kDealerKey;
            EXPECT_EQ(Value(secret.file, secret.section, secret.key),
                      isEnciphered ? secret.token : (isDealer ? "(absent)" : secret.plain))
                << secret.file << " [" << secret.section << "] " << secret.key;
        }
    }

    /// How often a file contains a text.
    int Count(const std::string& path, const std::string& text) const
    {
        int count = 0;
        const std::string bytes = Get(path);
        for (std::size_t at = 0; (at = bytes.find(text, at)) != std::string::npos; at += text.size())
            ++count;
        return count;
    }

    void ExpectNewXmlFiles() const
    {
        EXPECT_EQ(Count("/config/data/contact_list.xml", "<contact "), 121);
        EXPECT_EQ(Get("/config/data/contact_group_list.xml"),
                  "<root_group>\n"
                  "    <group id_name=\"0\" display_name=\"All\" ring=\"\" read_only=\"1\" />\n"
                  "    <group id_name=\"2\" display_name=\"London\" ring=\"\" read_only=\"0\" />\n"
                  "    <group id_name=\"3\" display_name=\"Berlin &amp; Hamburg\" ring=\"\" read_only=\"0\" />\n"
                  "    <group id_name=\"4\" display_name=\"Paris and Stockholm\" ring=\"\" read_only=\"0\" />\n"
                  "    <group id_name=\"5\" display_name=\"New York\" ring=\"\" read_only=\"0\" />\n"
                  "    <group id_name=\"6\" display_name=\"Agents and carriers\" ring=\"\" read_only=\"0\" />\n"
                  "    <group id_name=\"1\" display_name=\"Black List\" ring=\"\" read_only=\"1\" />\n"
                  "</root_group>\n");
        EXPECT_EQ(Count("/config/data/DialPlan.xml", "<data rule="), 12);
        EXPECT_EQ(Count("/config/data/DialNow.xml", "<data rule="), 10);
        EXPECT_EQ(Count("/config/data/memkey.xml", "<item type="), 18);
        EXPECT_EQ(Count("/config/data/remote_phonebook_list.xml", "<item name="), 6);
        EXPECT_EQ(
            Get(kDoorPhones),
            "<DoorPhone>\n"
            "    <item id_name=\"door1\" device_model=\"0\" display_name=\"Main door\" phone_number=\"192.0.2.151\" "
            "unlock_pin=\"4711\" send_audio=\"1\" send_video=\"1\" full_screen=\"1\" />\n"
            "    <item id_name=\"door2\" device_model=\"1\" display_name=\"Warehouse gate &amp; barrier\" "
            "phone_number=\"2160\" unlock_pin=\"00*5\" send_audio=\"1\" send_video=\"1\" full_screen=\"1\" />\n"
            "    <item id_name=\"door3\" device_model=\"2\" display_name=\"Hoft\xC3\xBCr K\xC3\xB6penick\" "
            "phone_number=\"3150\" unlock_pin=\"\" send_audio=\"1\" send_video=\"1\" full_screen=\"1\" />\n"
            "    <item id_name=\"door4\" device_model=\"3\" display_name=\"Bike shed\" "
            "phone_number=\"sip:shed@198.51.100.151\" unlock_pin=\"#9\" send_audio=\"1\" send_video=\"1\" "
            "full_screen=\"1\" />\n"
            "    <item id_name=\"door5\" device_model=\"0\" display_name=\"Lift, level -1\" "
            "phone_number=\"192.0.2.152\" unlock_pin=\"\" send_audio=\"1\" send_video=\"1\" full_screen=\"1\" />\n"
            "</DoorPhone>\n");
    }

    /// After a run: each of the named files may have changed.
    template <typename Paths>
    void Allow(const Paths& paths)
    {
        for (const char* path : paths)
            Expect(path, Get(path));
    }

    void ExpectCertificatesCopied()
    {
        for (const std::string name :
             {"examplevoice-root2.pem", "example-net-services.pem", "example-org-contact-g3.pem"})
            Expect("/config/certs/phoneca/" + name, Get("/phone/factory/certs/phoneca/" + name));
    }

    Lines Traces() const
    {
        Lines traces;
        for (const std::string& report : Reports()) {
            if (report.rfind("etlTrace ", 0) == 0)
                traces.push_back(report);
        }
        return traces;
    }
};

/// The traces of the password pass over plain secrets.
Lines EncipheringTraces(const std::string& dealerFrom, const std::string& dealerTo)
{
    Lines traces;
    for (const Secret& secret : kSecrets) {
        const bool isDealer = std::string(secret.key) == kDealerKey;
        traces.push_back("etlTrace 2: Encrypt:(" + (isDealer ? dealerFrom : secret.plain) + ")->(" +
                         (isDealer ? dealerTo : secret.token) + ")");
    }
    return traces;
}

std::string Replace(std::string text, const std::string& from, const std::string& to)
{
    EXPECT_NE(text.find(from), std::string::npos) << from;
    return text.replace(text.find(from), from.size(), to);
}

} // namespace

TEST(ExamplePhone, ModeAllMigratesEverything)
{
    if (!kHasBundledPlatform)
        GTEST_SKIP() << "rests on the texts of the bundled cipher";
    ExamplePhone phone;
    phone.Run("all");
    EXPECT_EQ(phone.Traces(), EncipheringTraces("Dealer-0815", kDealerOnce));
    EXPECT_THAT(phone.Output(), testing::Not(testing::Contains(testing::HasSubstr("Can's load"))));
    phone.ExpectSettings();
    phone.ExpectSecrets(/*isEnciphered=*/true);
    phone.ExpectNewXmlFiles();
    phone.ExpectCertificatesCopied();
    phone.Allow(kIniFiles);
    phone.Allow(kNewXmlFiles);
    phone.Allow(std::vector<const char*>{kDoorPhones});
    phone.ExpectNothingElseChanged();
}

TEST(ExamplePhone, EveryByteThatNoRecordConcernsStays)
{
    if (!kHasBundledPlatform)
        GTEST_SKIP() << "rests on the texts of the bundled cipher";
    ExamplePhone before;
    ExamplePhone phone;
    phone.Run("all");
    EXPECT_EQ(phone.Get(kVersionIni), before.Get(kVersionIni));
    // Account 4 has no records: its only change is the key that the first fix-up adds after the last one of its
    // section.
    const std::string account4 = before.Get(kAccount4);
    const std::string added = "SCALineKeyNumber=-1\n";
    const std::string changed = phone.Get(kAccount4);
    ASSERT_NE(changed.find(added), std::string::npos);
    EXPECT_EQ(Replace(changed, added, ""), account4);
    // New sections of the user's settings are at the end, in the order of the table.
    EXPECT_THAT(phone.Get(kUserIni),
                testing::EndsWith("   bHearingCoil=0\n"
                                  "\n[HotLine]\nbEnable=0\nstrNumber=2100\nnDelay=8\n"
                                  "\n[ScreenSaver]\nnScreenSaverTime=20\n"
                                  "strText=Please ring the bell, we are at the loading bay\neType=1\n"
                                  "\n[KeyLock]\neMode=2\nnSeconds=90\nstrPin=" +
                                  std::string(kUnlockPinToken) + "\n"));
    // Lines that end in CR LF stay so.
    EXPECT_EQ(phone.Count(kAccount2, "\n"), phone.Count(kAccount2, "\r\n"));
}

TEST(ExamplePhone, ASecondRunEnciphersTheDealerPasswordAgainAndEmptiesTheDoorPhones)
{
    if (!kHasBundledPlatform)
        GTEST_SKIP() << "rests on the texts of the bundled cipher";
    ExamplePhone phone;
    phone.Run("all");
    const std::string userIni = phone.Get(kUserIni);
    phone.Run("all");
    EXPECT_EQ(phone.Traces(), EncipheringTraces(kDealerOnce, kDealerTwice));
    // Every other secret has a record that deciphers it before the password pass, so it ends as it was.
    phone.Expect(kUserIni, Replace(userIni, std::string("strDealerPassword=") + kDealerOnce + "\n",
                                   std::string("strDealerPassword=") + kDealerTwice + "\n"));
    // Since the file was rewritten in place, the new file is read as an old one.
    std::string emptied = "<DoorPhone>\n";
    for (int number = 0; number < 5; ++number)
        emptied += "    <item id_name=\"\" device_model=\"0\" display_name=\"\" phone_number=\"\" unlock_pin=\"\" "
                   "send_audio=\"1\" send_video=\"1\" full_screen=\"1\" />\n";
    phone.Expect(kDoorPhones, emptied + "</DoorPhone>\n");
    phone.ExpectNothingElseChanged();
}

TEST(ExamplePhone, OnceTheLocksAgreeTheTablePassEnciphersTheRestAndARunChangesNothingMore)
{
    if (!kHasBundledPlatform)
        GTEST_SKIP() << "rests on the texts of the bundled cipher";
    ExamplePhone phone;
    phone.Run("all");
    phone.Put(kUserIni, Replace(phone.Get(kUserIni), "EnLock=0\n", "EnLock=1\n"));
    phone.Put(kVersionIni, Replace(phone.Get(kVersionIni), "bEnableFromOld=1\n", "bEnableFromOld=0\n"));
    // The password pass handles only the first four accounts; the table also handles account 16.
    std::string account16 = phone.Get(kAccount16);
    account16 = Replace(account16, "\nPassword = Norrsken_hall;B17\n",
                        "\nPassword = Ka9mlrtygIVOL/hTpgKM39Wt13C/56cdMuecFo76eggB\n");
    account16 = Replace(account16, "\nVoiceMailPin=2019\n", "\nVoiceMailPin=OZFs8Q90TAyTZwHLOxLnlOBBVXY\n");
    account16 = Replace(account16, "\nPin=2019\n", "\nPin=OZFs8Q90TAyTZwHLOxLnlOBBVXY\n");
    phone.Run("all");
    EXPECT_EQ(phone.Reports(), Lines{"app_log 60/6: No need trans password file !! Current status [encrypt]"});
    phone.Expect(kAccount16, account16);
    phone.ExpectNothingElseChanged();

    phone.Run("all");
    EXPECT_EQ(phone.Reports(), Lines{"app_log 60/6: No need trans password file !! Current status [encrypt]"});
    phone.ExpectNothingElseChanged();
}

TEST(ExamplePhone, ModeDevLeavesTheSecretsPlain)
{
    ExamplePhone phone;
    phone.Run("dev");
    EXPECT_THAT(phone.Traces(), testing::IsEmpty());
    phone.ExpectSettings();
    phone.ExpectSecrets(/*isEnciphered=*/false);
    phone.ExpectNewXmlFiles();
    phone.ExpectCertificatesCopied();
    phone.Allow(kIniFiles);
    phone.Allow(kNewXmlFiles);
    phone.Allow(std::vector<const char*>{kDoorPhones});
    phone.ExpectNothingElseChanged();

    phone.Run("dev");
    phone.Allow(std::vector<const char*>{kDoorPhones});
    phone.ExpectNothingElseChanged();
}

TEST(ExamplePhone, ModePwdEnciphersWhatIsOnThePhone)
{
    if (!kHasBundledPlatform)
        GTEST_SKIP() << "rests on the texts of the bundled cipher";
    // New places, which only the table pass fills, are empty; the key lock's PIN has a default.
    const auto isFilledByTable = [](const Secret& secret) {
        const std::string place = std::string(secret.section) + "/" + secret.key;
        return place == "VoiceMail/Pin" || place == "LDAP/strPassword" || place == "Wireless/strKey" ||
               place == "Vpn/strPassword";
    };
    ExamplePhone phone;
    phone.Run("pwd");
    Lines expected;
    for (const Secret& secret : kSecrets) {
        if (isFilledByTable(secret))
            EXPECT_EQ(phone.Value(secret.file, secret.section, secret.key), "(absent)") << secret.section;
        else if (std::string(secret.section) == "KeyLock")
            expected.push_back(std::string("etlTrace 2: Encrypt:(0000)->(") + kZerosToken + ")");
        else
            expected.push_back(std::string("etlTrace 2: Encrypt:(") + secret.plain + ")->(" + secret.token + ")");
    }
    EXPECT_EQ(phone.Traces(), expected);
    EXPECT_EQ(phone.Value(kUserIni, "KeyLock", "strPin"), kZerosToken);
    EXPECT_EQ(phone.Value(kAccount0, "account", "Password"), kSecrets[0].token);
    EXPECT_EQ(phone.Value(kSystemIni, "SNMP", "strReadCommunity"), "bo-phones-ro");
    phone.Allow(kIniFiles);
    phone.ExpectNothingElseChanged();
}

TEST(ExamplePhone, WithoutDataFilesTheSettingsAreMigratedAllTheSame)
{
    ExamplePhone whole;
    whole.Run("all");
    ExamplePhone phone;
    phone.Remove("/config/data");
    phone.Run("all");
    for (const char* path : kIniFiles)
        phone.Expect(path, whole.Get(path));
    phone.ExpectCertificatesCopied();
    phone.ExpectNothingElseChanged();
}
