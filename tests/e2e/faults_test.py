"""What breaks is told, loses nothing, and leaves a state that the next command works with."""

import shutil
import signal

import sample_mac


class Faults(sample_mac.SampleMacTest):
    def test_a_helper_killed_in_a_run(self):
        self.ctl("discover")
        self.ctl("update", "hazelstopwatch")
        self.order("delay", "quill", "20\n")
        run = self.ctl_start("update", "quill", "--json")
        self.addCleanup(self.end, run)
        self.assertTrue(sample_mac.eventually(lambda: self.run_record().get("childPid")))
        self.assertEqual(self.run_record()["currentLabel"], "quill")
        installer = self.run_record()["childPid"]
        self.kill_helper()
        outcome = self.outcome(run)
        self.assertEqual(outcome.code, 1, outcome)
        self.assertFalse(outcome.json["success"])
        self.assertTrue(outcome.json["message"].startswith("Failed to start patching: "), outcome)
        # Receipts are whole: the finished run's stands, and nothing is claimed for the one that was cut off.
        self.assertEqual([(r["label"], r["status"]) for r in self.receipts()], [("hazelstopwatch", "success")])
        self.assertEqual(self.installed("Quill"), "2.3.1")

        # At once, while the dead helper's heartbeat is still fresh.
        (self.control / "delay/quill").unlink()
        self.ctl("update", "quill")
        self.assertEqual(self.installed("Quill"), "2.4")
        self.assertEqual(len(self.log_lines("The helper ended during a run of 1 label(s), 0 of them done, while quill "
                                            "was being installed.")), 1)
        self.assertTrue(sample_mac.eventually(lambda: str(self.root) not in self.command_line(installer)))

    def test_nobody_waits_for_a_run_any_more(self):
        self.ctl("discover")
        self.order("delay", "quill", "1\n")
        run = self.ctl_start("update", "quill")
        self.addCleanup(self.end, run)
        self.assertTrue(sample_mac.eventually(lambda: self.run_record().get("childPid")))
        run.send_signal(signal.SIGINT)
        outcome = self.outcome(run)
        self.assertEqual(outcome.code, -signal.SIGINT)
        self.assertIn("no longer waiting; the helper finishes what it was asked to do.", outcome.err)
        self.assertTrue(sample_mac.eventually(lambda: self.receipts()))
        self.assertEqual(self.installed("Quill"), "2.4")

    def test_a_helper_out_of_reach(self):
        bundle = self.root / "alone/Corvane.app"
        (bundle / "Contents/MacOS").mkdir(parents=True)
        for file in ("Info.plist", "MacOS/corvanectl"):
            shutil.copy2(sample_mac.BUNDLE / "Contents" / file, bundle / "Contents" / file)
        alone = {"bundle": bundle}
        # Without a helper the applications are scanned directly, and the person is told why nothing more is known.
        discovered = self.ctl("discover", "--json", expect=4, **alone)
        self.assertEqual(self.states(discovered)["quill"], "unchecked")
        self.assertIn("plist not in app bundle", discovered.json["error"]["text"])
        told = self.ctl("discover", expect=4, **alone)
        self.assertIn("plist not in app bundle", told.err)
        self.assertTrue(told.out.startswith("LABEL"), told)
        self.assertIn("applications were not checked yet; `corvanectl check` does.",
                      self.ctl("update", expect=1, **alone).err)
        error = self.ctl("check", "--json", expect=4, **alone).json["error"]
        self.assertEqual(error["domain"], "CRVHelperStart")
        self.assertIn("plist not in app bundle", error["text"])
        # The helper comes back; an update is known; it goes away again.
        self.ctl("discover")
        self.kill_helper()
        self.ctl("update", "quill", expect=4, **alone)
        self.assertEqual(self.installed("Quill"), "2.3.1")

    def test_a_label_that_is_gone_and_one_that_never_was(self):
        # The first check of all, with a label mistyped, leaves no Mac of which all is said to be up to date.
        self.assertIn("No application is known under qill.", self.ctl("check", "qill", expect=1).err)
        self.assertEqual(self.states(self.ctl("list", "--json"))["quill"], "needsUpdate")
        self.assertIn("updates available", self.ctl("status").out)
        (self.support / "fragments/labels/quill.sh").unlink()
        gone = self.ctl("check", "quill", "hazelstopwatch", "--json", expect=1)
        self.assertTrue(gone.json["error"]["text"].startswith("No answer for quill: "), gone)
        self.assertEqual(list(self.states(gone)), ["hazelstopwatch"])
        self.change_user({"IgnoredLabels": ["ostrava*"]})
        self.assertIn("Ignored by the current settings: ostravamaps.", self.ctl("check", "ostravamaps", expect=1).err)

    def test_damaged_preferences_are_set_aside(self):
        damaged = b"bplist00\xff\xff\xff torn"
        user = self.home / "Library/Preferences" / sample_mac.DOMAIN
        managed = self.root / "Library/Managed Preferences" / sample_mac.DOMAIN
        user.write_bytes(damaged)
        managed.write_text("<plist><dict><key>VerboseMode</key>")
        self.ctl("settings")
        self.assertEqual(user.read_bytes(), damaged)
        self.ctl("discover")
        for file in (user, managed):
            # Each program that reads it says so once: the reader above, the writer, the helper.
            self.assertIn(len(self.log_lines(f"{file} is damaged")), (2, 3), self.log())
        aside = list(user.parent.glob(sample_mac.DOMAIN + ".damaged-*"))
        self.assertEqual([file.read_bytes() for file in aside], [damaged])
        self.assertEqual(self.states(self.ctl("list", "--json"))["quill"], "needsUpdate")
        self.assertTrue(managed.read_text().startswith("<plist><dict>"))

    def test_the_tool_is_missing_or_cannot_be_run(self):
        self.ctl("discover")
        script = self.support / "Installomator.sh"
        script.chmod(0o644)
        refused = self.ctl("update", "quill", "--json", expect=1).json
        self.assertEqual(refused["message"],
                         f"Failed to start patching: Installomator at {script} cannot be executed")
        script.unlink()
        refused = self.ctl("update", "quill", "--json", expect=1).json
        self.assertEqual(refused["message"], "Failed to start patching: Installomator not found — update detection "
                                             "and patching will not work.")
        self.assertEqual(self.receipts(), [])
        self.assertIn("not found", self.ctl("status").out)
        discovered = self.ctl("discover", "--json", expect=1)
        self.assertEqual(discovered.json["error"]["text"],
                         "Installomator not found — update detection and patching will not work.")
        self.assertIn("quill", self.states(discovered))
        self.assertNotIn("message", discovered.json)

    def test_no_catalogue(self):
        shutil.rmtree(self.support / "fragments/labels")
        self.assertIn("The label catalog of Installomator was not found on this Mac, so no apps can be recognized. If "
                      "this message stays, contact your administrator.", self.ctl("discover", expect=1).err)
        (self.support / "Installomator.sh").unlink()
        self.assertIn("Installomator was not found on this Mac, so no apps can be recognized or updated. If this "
                      "message stays, contact your administrator.", self.ctl("discover", expect=1).err)


if __name__ == "__main__":
    sample_mac.main()
