// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "phoneImage/secretNames.h"

#include <gmock/gmock.h>
#include <sstream>
#include <string>

namespace
{

constexpr char kSecretNames[] =
    "Password strPassword password PASSWORD strPwd sPwd2 AdminPasswd passphrase VpnPassPhrase passcode strPswd "
    "MailPass "
    "UnlockPIN unlock_pin strPin VoiceMailPin PinCode nPIN simPuk wifi_psk strPSK UserSecret secret clientSecret "
    "AuthToken "
    "token strPw AdminPW user_pw privKey strRefreshToken ApiKey api_key strWEPKey_2 PrivateKey shared-key srtpKey "
    "credential "
    "bPassword Cryptosecret_2 adminpassword sippassword userpin adminpwd wifipsk xmppclientsecret jwttoken PINcode "
    "nPINcode strPINcode PASSWORD2 Pass.Word pre_shared_key tr069Password oldPass NewPassword1 SecurityKey SessionKey "
    "NetworkKey "
    "presharedkey psw passw AccessCode UnlockCode unlockcode community strReadCommunity HA1 strHA1 Authorization "
    "ProxyAuthorization Cookie httpCookie strMasterKey EncryptionKey keyMaterial strKeyMaterial LdapCredentials "
    "SmtpPasswort";

constexpr char kOtherNames[] =
    "strName Label UserName nPort strPing bMapping strPinyin PinYin KeyAlive nKeyLockSeconds strKeyTone Passive "
    "Passage "
    "strCompassion strCompass nPasses Host Mode strTone eType strPanel strKind strProxyBypass bBypassRing bypass "
    "strSecretaryNumber strSecretaryName secretary bPassThrough strPassThrough passthrough VideoPassThru nPassBand "
    "Spin "
    "nSpinSpeed strOverpass PinOut pinboard HotKey LineKey1 SoftKeyLabel DssKeyNumber AreaCode strCountryCode "
    "FeatureCode "
    "SHA1 CookieDomain CommunityUrl AuthorizationName tokenring Opinion Snapshot Pinnacle strUnspecified "
    "Authentication "
    "Keyboard MonkeyKey Encode strPwrLed";

struct NameAndValue {
    const char* name;
    const char* value;
};

constexpr NameAndValue kAboutSecrets[] = {
    {"nPinLength", "12"},       {"nPasswordMinLength", "8"},  {"PasswordMaxLen", "64"}, {"eWpaKeyMode", "WPA2-PSK"},
    {"strPasswordType", "md5"}, {"TokenTimeout", "3600s"},    {"nPinRetries", "10"},    {"bMenuPassword", "1"},
    {"EnablePin", "1"},         {"PasswordEnabled", "true"},  {"PinRequired", "Off"},   {"nTokenCount", "250"},
    {"PasswordExpires", "90d"}, {"PasswordPolicy", "strong"}, {"UsePassword", "yes"},   {"SessionKeyLifetime", "-1"},
    {"WepKeyIndex", "2"},       {"PasswordHistory", "24"},
};

constexpr NameAndValue kSecretsByValue[] = {
    {"nPinLength", "plover"},     {"bMenuPassword", "4711"},
    {"EnablePin", "4711"},        {"ResetPin", "4711"},
    {"MinPin", "4711"},           {"strPasswordType", "plover nest and heron"},
    {"PasswordPolicy", "a$bcde"}, {"TokenTimeout", "12345678901"},
    {"TypeOfPassword", "plover"}, {"SizePassword", "123456"},
};

std::string NamesThat(const char* names, bool (*are)(NameSays))
{
    std::istringstream stream(names);
    std::string chosen;
    for (std::string name; stream >> name;) {
        if (are(WhatNameSays(name)))
            chosen += name + " ";
    }
    return chosen;
}

TEST(SecretNames, NameSecrets)
{
    EXPECT_EQ(NamesThat(kSecretNames, [](NameSays says) { return !IsSecretValue(says, "val-001"); }), "");
}

TEST(SecretNames, OtherNamesDoNot)
{
    EXPECT_EQ(NamesThat(kOtherNames, [](NameSays says) { return says != NameSays::Nothing; }), "");
}

TEST(SecretNames, WhatIsAboutASecretIsNone)
{
    for (const NameAndValue& row : kAboutSecrets)
        EXPECT_FALSE(IsSecretValue(WhatNameSays(row.name), row.value)) << row.name << "=" << row.value;
}

TEST(SecretNames, AValueThatIsNoSizeOrSwitchIsASecret)
{
    for (const NameAndValue& row : kSecretsByValue)
        EXPECT_TRUE(IsSecretValue(WhatNameSays(row.name), row.value)) << row.name << "=" << row.value;
}

TEST(SecretNames, ALongNameTakesLinearTime)
{
    std::string name;
    for (int i = 0; i < 1 << 20; ++i)
        name += "pin";
    EXPECT_EQ(WhatNameSays(name), NameSays::Nothing); // a run that no phone has
    EXPECT_EQ(WhatNameSays(name + "_password"), NameSays::Secret);
}

} // namespace
