"""The machine itself lacks something: room on its disk, the shell, the person at a prompt."""

import os
import subprocess
import unittest

import sample_mac

WITHOUT_ZSH = ("unshare", "-m", "sh", "-c",
               'for zsh in /bin/zsh /usr/bin/zsh; do mount --bind /dev/null "$zsh"; done; exec "$@"', "sh")


def may_mount():
    """Root in a container may be barred from it."""
    return os.geteuid() == 0 and subprocess.run(["unshare", "-m", "true"], check=False).returncode == 0


@unittest.skipUnless(may_mount(), "only root can give a Mac a disk of its own")
class FullDisk(sample_mac.SampleMacTest):
    def prepare_root(self):
        subprocess.run(["mount", "-t", "tmpfs", "-o", "size=48m", "tmpfs", self.root], check=True)
        self.addCleanup(subprocess.run, ["umount", "-l", self.root], check=True)

    def fill(self):
        filler = self.root / "filler"
        with filler.open("wb", buffering=0) as file:
            for size in (1 << 20, 4096, 1):
                try:
                    while file.write(b"x" * size) == size:
                        pass
                except OSError:
                    pass
        return filler

    def test_a_full_disk_costs_the_run_and_nothing_else(self):
        self.ctl("discover")
        self.ctl("update", "hazelstopwatch")
        preferences = self.home / "Library/Preferences" / sample_mac.DOMAIN
        kept = preferences.read_bytes()
        receipts = self.receipts()
        filler = self.fill()

        refused = self.ctl("update", "quill", "--json", expect=1).json
        self.assertRegex(refused["message"], "^Failed to start patching: The helper cannot write its state: .*"
                                             "helper-run.json: No space left on device$")
        self.assertEqual(self.installed("Quill"), "2.3.1")
        self.assertEqual(self.states(self.ctl("list", "--json"))["quill"], "needsUpdate")
        self.assertEqual(len(self.ctl("history", "--json").json["receipts"]), 1)
        self.assertIsNotNone(self.helper_pid(), "the helper lives on")
        # Nothing on disk is torn: each file holds what it held.
        self.assertEqual(preferences.read_bytes(), kept)
        self.assertEqual(self.receipts(), receipts)

        filler.unlink()
        self.ctl("update", "quill")
        self.assertEqual(self.installed("Quill"), "2.4")
        self.assertEqual(self.receipts()[-1]["label"], "quill")
        self.assertEqual(len(self.log_lines("No space left on device")), 3, self.log())

    def test_output_that_cannot_be_written_is_no_success(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            process = subprocess.run([sample_mac.BUNDLE / "Contents/MacOS/corvanectl", "settings"], stdout=full,
                                     stderr=subprocess.PIPE, text=True, env=self.environment(), check=False)
        self.assertEqual((process.returncode, process.stderr),
                         (1, "corvanectl: the output could not be written: No space left on device\n"))


class ClosedDescriptors(sample_mac.SampleMacTest):
    def test_programs_started_without_a_standard_descriptor(self):
        self.ctl("discover")
        contents = sample_mac.BUNDLE / "Contents"
        for closed in ("<&-", ">&-", "2>&-", "<&- >&- 2>&-"):
            for program, code in (("MacOS/corvanectl status", 0), ("MacOS/corvanectl check quill", 0),
                                  ("MacOS/corvanectl lst", 2), ("MacOS/Corvane", 1),
                                  ("Helpers/CorvaneRootHelper --nonsense", 2)):
                ended = subprocess.run(["sh", "-c", f"exec '{contents}'/{program} {closed}"], stdin=subprocess.DEVNULL,
                                       capture_output=True, text=True, env=self.environment(), check=False)
                self.assertEqual(ended.returncode, code, f"{program} {closed}: {ended}")
        # The helper itself is started without any of them.
        self.kill_helper()
        subprocess.run(["sh", "-c", f"exec '{contents}'/MacOS/corvanectl check quill <&- >&- 2>&-"],
                       env=self.environment(), check=True)
        self.assertEqual(self.states(self.ctl("list", "--json"))["quill"], "needsUpdate")


class Shell(sample_mac.SampleMacTest):
    @unittest.skipUnless(may_mount(), "only root can hide the shell")
    def test_no_zsh(self):
        apps = {app["label"]: app for app in self.ctl("discover", "--json", wrapped_by=WITHOUT_ZSH).json["apps"]}
        self.assertEqual((apps["quill"]["state"], apps["quill"]["updateCheckFailureReason"]),
                         ("checkFailed", "This machine has no zsh"))
        self.assertEqual(len(self.log_lines("quill (This machine has no zsh)")), 1)
        refused = self.ctl("update", "quill", "--json", expect=1, wrapped_by=WITHOUT_ZSH).json
        self.assertEqual(refused["error"]["text"],
                         "Not updated: quill could not be checked: This machine has no zsh.")
        self.kill_helper()
        self.assertEqual(self.states(self.ctl("discover", "--json"))["quill"], "needsUpdate")


class InstallersPrompt(sample_mac.SampleMacTest):
    def test_the_person_is_told_and_the_run_goes_on_when_the_prompt_is_answered(self):
        self.ctl("discover")
        self.change_user({"InstallomatorOptions": "BLOCKING_PROCESS_ACTION=prompt_user"})
        self.addCleanup(self.sample, "down")
        self.sample("open", "Quill")
        run, shown = self.ctl_on_terminal("update", "quill")
        self.reaches("Waiting for you to quit Quill. Installomator's prompt is on screen.")
        self.sample("answer", "quit")
        self.assertIn("Waiting for you to quit Quill…", shown())
        self.assertEqual(run.returncode, 0, self.log())
        self.assertEqual(self.installed("Quill"), "2.4")


if __name__ == "__main__":
    sample_mac.main()
