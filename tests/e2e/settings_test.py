"""Where settings come from, what of the options string reaches the installer, and whose root is honoured."""

import plistlib
import subprocess

import sample_mac


class Settings(sample_mac.SampleMacTest):
    def arguments(self):
        mark = "setting variable from argument "
        return [line.split(mark, 1)[1] for line in self.log_lines(mark)]

    def test_a_hostile_options_string_of_a_user(self):
        victim = self.root / "victim"
        hostile = f"LOGO=/tmp/$(touch${{IFS}}{victim})'`touch${{IFS}}{victim}`;touch"
        self.set_user({"InstallomatorOptions": f"{hostile} NOTIFY=silent downloadURL=http://127.0.0.1:9/evil expectedTeamID=EVIL"})
        self.ctl("discover")
        self.ctl("update", "quill")
        self.assertEqual(self.installed("Quill"), "2.4")
        self.assertFalse(victim.exists(), self.log())
        arguments = self.arguments()
        self.assertIn("NOTIFY='silent'", arguments)
        self.assertTrue(any(argument.startswith("LOGO=") for argument in arguments), arguments)
        self.assertFalse([argument for argument in arguments if argument.startswith(("downloadURL", "expectedTeamID"))])
        for key in ("downloadURL", "expectedTeamID"):
            self.assertEqual(len(self.log_lines(f"Installomator option {key} is left out: ")), 1, self.log())

    def test_any_key_of_the_managed_options_string(self):
        self.set_user({"InstallomatorOptions": "NOTIFY=silent"})
        self.set_managed({"InstallomatorOptions": "NOTIFY=all expectedTeamID=ANOTHER000"})
        self.ctl("discover")
        # The label's own team no longer counts, so the download is refused by the tool.
        self.ctl("update", "quill", expect=1)
        self.assertIn("expectedTeamID='ANOTHER000'", self.arguments())
        self.assertIn("NOTIFY='all'", self.arguments())
        self.assertEqual(self.receipts()[-1]["installomatorExitCode"], 5)
        self.assertEqual(self.log_lines("is left out"), [])

    def test_a_managed_options_string_of_no_use_lends_the_users_nothing(self):
        self.set_user({"InstallomatorOptions": "NOTIFY=silent expectedTeamID=ANOTHER000"})
        self.set_managed({"InstallomatorOptions": 7})
        self.ctl("discover")
        self.ctl("update", "quill")
        self.assertIn("NOTIFY='silent'", self.arguments())
        self.assertEqual(len(self.log_lines("Installomator option expectedTeamID is left out: ")), 1, self.log())

    def test_a_profile_is_checked_before_it_is_deployed(self):
        def profile(settings):
            payload = {"PayloadType": "org.corvane.Corvane", "PayloadVersion": 1, **settings}
            return plistlib.dumps({"PayloadType": "Configuration", "PayloadContent": [payload]})

        def findings(file, expect):
            found = self.ctl("validate", file, "--json", expect=expect)
            self.assertNotIn("s3cret", found.out)
            return [(each["severity"], each["key"]) for each in found.json["findings"]]

        file = self.root / "fleet.mobileconfig"
        file.write_bytes(profile({"RequiredLabels": ["quill"], "DeadlineDaysHard": 3}))
        self.assertEqual(findings(file, 0), [])
        file.write_bytes(profile({"RequiredLabels": ["nosuchlabel"], "GithubAPIToken": "s3cret",
                                  "GitHubAPIToken": "s3cret\nword"}))
        found = [("error", "GitHubAPIToken"), ("error", "GithubAPIToken"), ("warning", "RequiredLabels")]
        self.assertEqual(findings(file, 1), found)
        self.assertIn("Write GitHubAPIToken, if that is meant.", self.ctl("validate", file, expect=1).out)

        signed, key = self.root / "signed.mobileconfig", self.root / "key.pem"
        quiet = {"check": True, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=x", "-keyout", key, "-out",
                        key.with_suffix(".crt")], **quiet)
        subprocess.run(["openssl", "cms", "-sign", "-binary", "-nodetach", "-outform", "DER", "-in", file, "-signer",
                        key.with_suffix(".crt"), "-inkey", key, "-out", signed], **quiet)
        self.assertEqual(findings(signed, 1), found)

        for content, words in ((signed.read_bytes()[:200], "its wrapping is damaged"), (b"", "no property list"),
                               (b"<plist><array>" * 400, "no property list"), (plistlib.dumps([1]), "no dictionary"),
                               (bytes(17 << 20), "File too large")):
            file.write_bytes(content)
            refused = self.ctl("validate", file, expect=1)
            self.assertEqual((refused.out, refused.err.count("\n")), ("", 1), refused)
            self.assertIn(words, refused.err)

    def test_a_root_that_others_may_change_is_refused(self):
        self.root.chmod(0o777)
        refused = self.ctl("list", expect=1)
        self.assertIn("CORVANE_ROOT", refused.err)
        self.assertIn("may be written to by others", refused.err)
        self.assertEqual(self.ctl("list", "--json", expect=1).json["error"]["domain"], "CRVFolderOwnership")
        self.root.chmod(0o755)
        self.ctl("list")


if __name__ == "__main__":
    sample_mac.main()
