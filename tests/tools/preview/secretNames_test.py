#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The kestrune authors
# SPDX-License-Identifier: MIT

"""Which names say that a value is a secret."""

import previewTool

SECRET = """Password strPassword password PASSWORD strPwd sPwd2 AdminPasswd passphrase VpnPassPhrase passcode strPswd MailPass
UnlockPIN unlock_pin strPin VoiceMailPin PinCode nPIN simPuk wifi_psk strPSK UserSecret secret clientSecret AuthToken
token strPw AdminPW user_pw privKey strRefreshToken ApiKey api_key strWEPKey_2 PrivateKey shared-key srtpKey credential
bPassword""".split()

OPEN = """strName Label UserName nPort strPing bMapping strPinyin KeyAlive nKeyLockSeconds strKeyTone Passive Passage
strCompassion nPasses Host Mode strTone eType strPanel strKind""".split()


class SecretNames(previewTool.PreviewTest):
    def hidden(self, names):
        """The names of those keys whose new value is hidden."""
        old, new = ("[A]\n" + "".join(f"{name}=val-{when}-{number:03d}\n" for number, name in enumerate(names))
                    for when in ("old", "new"))
        program = self.folder / "program"
        program.write_text(f"#!/bin/sh\ncat >/config/x.ini <<'END'\n{new}END\n")
        program.chmod(0o755)
        changes = self.show("--program", program, self.phone({"/config/x.ini": old}), "all").file("/config/x.ini")["changes"]
        self.assertEqual([change["name"] for change in changes], names)
        return [change["name"] for change in changes if "val-" not in change["after"]]

    def test_names_of_secrets(self):
        self.assertEqual(self.hidden(SECRET), SECRET)

    def test_names_of_anything_else(self):
        self.assertEqual(self.hidden(OPEN), [])

    def test_elements_and_attributes(self):
        old, new = (f'<a><UnlockPIN>{when}-1</UnlockPIN><b pin="{when}-2" name="x{when}"/><c><password><d>{when}-3</d></password>'
                    f'</c><e name="strPassword" value="{when}-4" note="n{when}"/><f key="Token">{when}-5</f></a>'
                    for when in ("old", "new"))
        program = self.folder / "program"
        program.write_text(f"#!/bin/sh\ncat >/config/x.xml <<'END'\n{new}\nEND\n")
        program.chmod(0o755)
        changes = self.show("--program", program, self.phone({"/config/x.xml": old}), "all").file("/config/x.xml")["changes"]
        self.assertEqual({change["group"] + " " + change["name"]: "secret" in change for change in changes}, {
            "a/UnlockPIN[1] (text)": True, "a/b[1] pin": True, "a/b[1] name": False, "a/c[1]/password[1]/d[1] (text)": True,
            "a/e[1] value": True, "a/e[1] note": False, "a/f[1] (text)": True})


if __name__ == "__main__":
    previewTool.main()
