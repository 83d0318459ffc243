"""The diagnostic bundle of a whole sample Mac, by both programs: what is in the zip, what is not, and where it lies."""

import os
import plistlib
import re
import signal
import stat
import subprocess
import zipfile
from pathlib import Path

import sample_mac

SECRETS = {"WebhookURLSlack": "https://hooks.example/slack-secret", "WebhookURLTeams": "https://hooks.example/teams-secret"}


class Diagnostics(sample_mac.SampleMacTest):
    def setUp(self):
        super().setUp()
        self.temporary = self.root / "temporary"
        self.temporary.mkdir()

    def environment(self):
        return super().environment() | {"TMPDIR": str(self.temporary)}

    def corvane(self, *arguments, expect=0, language="C"):
        outcome = self.outcome(subprocess.Popen(
            [sample_mac.PROGRAM, "--generate-diagnostic-bundle", *arguments], stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, env=self.environment() | {"LANG": language},
            cwd=self.root))
        self.assertEqual(outcome.code, expect, outcome)
        self.assertEqual(list(self.temporary.iterdir()), [], "the staging folder stays behind")
        return outcome

    def opened(self, path):
        """The files of the zip by their paths below its one folder."""
        path = Path(path)
        self.assertEqual(stat.S_IMODE(path.stat().st_mode), 0o600)
        with zipfile.ZipFile(path) as zipped:
            self.assertIsNone(zipped.testzip())
            tops = {name.split("/")[0] for name in zipped.namelist()}
            self.assertEqual(len(tops), 1, tops)
            top = tops.pop()
            self.assertRegex(top, r"^Corvane-Diagnostic-\d{4}-\d\d-\d\d-\d{6}$")
            return {name.removeprefix(top + "/"): zipped.read(name) for name in zipped.namelist()}

    def test_a_mac_after_an_update(self):
        self.set_user(SECRETS | {"GitHubAPIToken": "kept", "VerboseMode": True})
        self.set_managed(SECRETS)
        self.ctl("discover")
        self.ctl("update", "quill")
        reports = self.root / "Library/Logs/DiagnosticReports"
        reports.mkdir(parents=True)
        (reports / "CorvaneRootHelper-2026.ips").write_text("report")
        (reports / "Finder-2026.ips").write_text("of another")
        events = self.support / "DeferralEvents"
        events.mkdir(exist_ok=True)
        (events / "robin.jsonl").write_text("{}\n")
        (events / "link.jsonl").symlink_to("/etc/passwd")

        outcome = self.corvane("--output", "bundles", "--verbose")
        zipped = outcome.out.removesuffix("\n")
        self.assertEqual(Path(zipped).parent, self.root / "bundles")
        self.assertRegex(outcome.err, r"^Corvane: Generating diagnostic bundle …\n"
                                      r"Corvane: Diagnostic bundle saved \(\d+ KB\)\n"
                                      r"Corvane: Attach this file to your GitHub issue or support request\.\n$")
        files = self.opened(zipped)
        summary = files["metadata.txt"].decode()
        for line in ("# Corvane diagnostic bundle", "Operational: yes", "Installomator.sh: present",
                     "Version 26.1", f"GUI log path: {self.root}/Library/Logs/Corvane/crv.log"):
            self.assertIn(line + "\n", summary)
        groups = subprocess.run(["/usr/bin/id", "-Gn"], capture_output=True, text=True, check=True).stdout.split()
        self.assertIn(f"Groups: {', '.join(groups)}\n", summary)
        self.assertTrue(re.search(r"Heartbeat: \S+Z \(\d+s ago\)\n", summary), summary)
        for name in ("prefs/user.plist", "prefs/managed.plist"):
            values = plistlib.loads(files[name])
            self.assertEqual({key: values[key] for key in SECRETS}, dict.fromkeys(SECRETS, "<redacted>"))
            self.assertNotIn("DiscoveredAppsData", values)
        self.assertEqual(plistlib.loads(files["prefs/user.plist"])["GitHubAPIToken"], "kept")
        self.assertFalse([name for name, content in files.items() if b"-secret" in content])
        self.assertIn(b"quill", files["receipts.jsonl"])
        self.assertIn(b"quill", files["logs/crv.log"])
        self.assertEqual(files["crash-reports/CorvaneRootHelper-2026.ips"], b"report")
        self.assertNotIn("crash-reports/Finder-2026.ips", files)
        self.assertIn("deferral-events/robin.jsonl", files)
        self.assertNotIn("deferral-events/link.jsonl", files)

        same = self.ctl("bundle", "--output", str(self.root / "by ctl.ZIP"), "--json")
        self.assertEqual(same.json["path"], str(self.root / "by ctl.ZIP"))
        self.assertEqual(same.json["size"], os.path.getsize(self.root / "by ctl.ZIP"))
        self.assertEqual(set(self.opened(same.json["path"])), set(files))

    def test_a_broken_installation(self):
        for folder in ("Library/Application Support/Corvane", "Library/Logs/Corvane", "Users/robin/Library"):
            subprocess.run(["rm", "-rf", self.root / folder], check=True)
        (self.root / "Library/Managed Preferences" / sample_mac.DOMAIN).write_text("no property list")
        outcome = self.corvane("--output", "~/x.zip")
        self.assertEqual((outcome.out, outcome.err), (f"{self.home}/x.zip\n", ""))
        files = self.opened(self.home / "x.zip")
        self.assertLessEqual({"metadata.txt", "prefs/"}, set(files))
        self.assertIn(b"Installomator.sh: missing\n", files["metadata.txt"])

    def test_a_run_that_is_interrupted_leaves_nothing(self):
        with open(self.root / "Library/Logs/Corvane/crv.log", "wb") as log:
            log.truncate(256 << 20)  # takes its time, and no room here
        output = ["--output", self.root / "x.zip"]
        copying, zipping = 1, 2  # what the staging folder holds then
        for program, entries, told in (([sample_mac.PROGRAM, "--generate-diagnostic-bundle"], copying, signal.SIGINT),
                                       ([sample_mac.PROGRAM.with_name("corvanectl"), "bundle"], zipping, signal.SIGINT),
                                       ([sample_mac.PROGRAM.with_name("corvanectl"), "bundle"], zipping, signal.SIGTERM)):
            with self.subTest(program=program[0].name, entries=entries, told=told):
                process = subprocess.Popen([*program, *output], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                           stderr=subprocess.PIPE, text=True, env=self.environment(),
                                           start_new_session=True)
                self.addCleanup(self.end, process)
                sample_mac.eventually(lambda: len(list(self.temporary.glob("CorvaneDiagnostic-*/*"))) >= entries)
                os.killpg(process.pid, told)  # as a terminal does
                outcome = self.outcome(process)
                self.assertEqual((outcome.code, outcome.out), (-told, ""), outcome)
                self.assertEqual(list(self.temporary.iterdir()), [])
                self.assertFalse((self.root / "x.zip").exists())
                self.assertIn("The diagnostic bundle was given up.", outcome.err)

    def test_outputs_that_cannot_be(self):
        (self.root / "file").write_text("kept")
        (self.root / "dangling").symlink_to(self.root / "nowhere")
        for output in ("file", "file/x.zip", "dangling", "/proc/none"):
            path = Path(output if output.startswith("/") else self.root / output)
            told = f"Could not write the diagnostic bundle to {path}."
            self.assertEqual(self.corvane("--output", output, expect=1).err,
                             f"Corvane: Unable to write diagnostic bundle to {path}: {told}\n")
            self.assertEqual(self.ctl("bundle", "--output", path, "--json", expect=1).json["error"]["text"], told)
        self.assertEqual((self.root / "file").read_text(), "kept")
        self.assertEqual(self.corvane("--output", "--verbose", expect=1).err,
                         "Corvane: Missing path after --output. "
                         "Example: --generate-diagnostic-bundle --output /var/tmp\n")
        # Also where the system lacks that locale's data.
        self.assertEqual(self.corvane("--output", expect=1, language="de_DE.UTF-8").err,
                         "Corvane: Nach --output fehlt ein Pfad. "
                         "Beispiel: --generate-diagnostic-bundle --output /var/tmp\n")


if __name__ == "__main__":
    sample_mac.main()
