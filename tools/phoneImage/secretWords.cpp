// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#include "secretWords.h"

#include <algorithm>
#include <unordered_map>

namespace
{

struct WordList {
    unsigned kind;
    std::string_view words;
};

// A word in several lists is all of it.
constexpr WordList kWordLists[] = {
    {kSecret, "credential credentials ha1 keymaterial passcode passphrase passw passwd password passwords passwort "
              "presharedkey privatekey psk psw pswd puk pw pwd pwds secret secrets"},
    {kLastSecret, "authorization community cookie cookies"},
    {kLooseSecret, "pass pin pins token tokens"},
    {kOtherMeaning, "age band board by filter on out over point ring through thru yin"},
    {kBeforeKey,
     "access aes api app auth authentication cipher client crypto des digest encrypt encryption hmac license "
     "master network preshared priv private secret secure security session shared signing srtp ssh ssl tls "
     "wep wifi wireless wlan wpa"},
    {kKey, "key keys"},
    {kBeforeCode, "access admin alarm auth authentication authorization door entry lock login security unlock"},
    {kCode, "code"},
    {kAboutSwitch,
     "allow allowed ask change check disable disabled enable enabled has hide is need needed prompt remember "
     "require required reset save show use visible"},
    {kAboutSize,
     "age attempts count days delay expire expires expiry history index interval len length lifetime limit max "
     "maximum min minimum minutes retries retry seconds size time timeout tries ttl validity version"},
    {kAboutKind, "algorithm complexity format level method mode policy state status strength type"},
    {kPart,
     "account confirm current default email ftp group guest http https imap ldap mail menu my new old phone pop pre "
     "proxy radius refresh registration root server sim sip smtp snmp str sync user voice voicemail vpn web"},
};

using Dictionary = std::unordered_map<std::string_view, unsigned>;

Dictionary MakeDictionary()
{
    Dictionary dictionary;
    for (const WordList& list : kWordLists) {
        for (std::size_t begin = 0; begin < list.words.size();) {
            const std::size_t end = std::min(list.words.find(' ', begin), list.words.size());
            dictionary[list.words.substr(begin, end - begin)] |= list.kind;
            begin = end + 1;
        }
    }
    return dictionary;
}

} // namespace

unsigned KindOfWord(std::string_view word)
{
    static const Dictionary dictionary = MakeDictionary(); // made once, read by all threads
    const auto found = dictionary.find(word);
    return found == dictionary.end() ? 0 : found->second;
}
