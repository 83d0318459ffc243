"""The helper is killed at chosen moments of its own pass: nothing is torn, and the next helper makes up for it once."""

import json
import signal
import unittest
from pathlib import Path

import sample_mac
from sample_mac import eventually

NEW = {"Hazel Stopwatch": "0.10", "Ostrava Maps": "11.3", "Quill": "2.4"}
LABELS = ("hazelstopwatch", "ostravamaps", "quill")  # in the order of the pass
LONG = "30\n"


@unittest.skipUnless(sample_mac.has_link(), "without a network the helper does not begin")
class KilledPass(sample_mac.SampleMacTest):
    def setUp(self):
        super().setUp()
        self.keep_labels(*LABELS)
        self.change_user({"BackgroundPatchClosedAppsEnabled": True, "BackgroundPatchClosedAppsScheduler": "helperDaemon"})

    def test_while_it_asks_for_versions(self):
        page = self.root / "vendor/.delay/quill"
        page.parent.mkdir(exist_ok=True)
        page.write_text("30000\n")
        self.kill_when(lambda helper: Path(f"/proc/{helper}/task/{helper}/children").read_text())
        page.unlink()
        self.assertEqual(self.made_up_for(), set(LABELS))

    def test_while_it_downloads_ahead(self):
        self.order("delay", "ostravamaps", LONG)
        self.kill_when(lambda _: (self.support / "Staging/ostravamaps.partial").exists() and
                       "childStamp" in self.read("helper-staging.json"))
        self.assertTrue((self.support / "Staging/hazelstopwatch/staged.json").exists())
        self.assertEqual(self.made_up_for(), set(LABELS))
        self.assertEqual(len(self.log_lines("Staging: hazelstopwatch: downloading")), 1, "what lay ready is used")
        self.assertTrue(self.log_lines("while ostravamaps was being staged"), self.log())

    def test_in_the_first_install(self):
        self.change_user({"WorkflowStageUpdates": False})
        self.order("delay", "hazelstopwatch", LONG)
        self.kill_when(lambda _: self.run_record().get("childPid"))
        self.assertEqual(self.receipts(), [])
        self.assertEqual(self.made_up_for(), set(LABELS))
        self.assertEqual(len(self.log_lines("The helper ended during a run of 3 label(s), 0 of them done, while "
                                            "hazelstopwatch was being installed.")), 1, self.log())

    def test_between_two_installs(self):
        self.change_user({"WorkflowStageUpdates": False})
        self.order("delay", "ostravamaps", LONG)
        self.kill_when(lambda _: self.receipts() and self.run_record().get("currentLabel") == "ostravamaps")
        self.assertEqual([receipt["label"] for receipt in self.receipts()], ["hazelstopwatch"])
        self.assertEqual(self.made_up_for(), {"ostravamaps", "quill"})

    def test_right_behind_the_last_install(self):
        self.kill_when(lambda _: len(self.receipts()) == 3)
        # Whether it had come to tell of the pass or not: nothing is left to install.
        self.assertEqual(self.made_up_for(), set())

    def read(self, name):
        file = self.support / name
        return file.read_text() if file.exists() else ""

    def state(self):
        return json.loads(self.read("helper-state.json") or "{}")

    def passes(self):
        return self.log_lines("BackgroundPatch: Patching ")

    def kill_when(self, moment):
        helper = self.start_helper("--own-work-after", "0")
        self.assertTrue(eventually(lambda: moment(helper.pid), sample_mac.LIMIT), self.log())
        helper.send_signal(signal.SIGKILL)
        helper.wait()
        for name in ("helper-state.json", "helper-run.json", "helper-staging.json", "helper-discovered-apps.json"):
            json.loads(self.read(name) or "{}")
        for receipt in self.receipts():
            self.assertEqual(receipt["status"], "success")

    def made_up_for(self):
        """Lets the next helper work undisturbed; gives the labels that it installed."""
        tools = [record.get("childPid") for record in map(json.loads, (self.read("helper-run.json") or "{}",
                                                                      self.read("helper-staging.json") or "{}"))]
        for order in (self.control / "delay").iterdir():
            order.unlink()
        before, done = len(self.passes()), len(self.receipts())
        helper = self.start_helper("--own-work-after", "0")
        self.assertTrue(eventually(lambda: self.state().get("lastPassConcludedAt"), sample_mac.LIMIT), self.log())
        self.assertNotIn("currentRun", self.state())
        self.assertEqual({bundle: self.installed(bundle) for bundle in NEW}, NEW)
        labels = [receipt["label"] for receipt in self.receipts()]
        self.assertEqual(sorted(labels), sorted(LABELS), "each label once")
        for pid in filter(None, tools):
            self.assertNotIn(str(self.root), self.command_line(pid), "the tool of the dead helper has ended")
        self.assertEqual(list((self.support / "Staging").glob("*.partial")), [])

        # The one after it has nothing to make up for, and answers.
        runs = len(self.passes())
        self.assertLessEqual(runs - before, 1)
        self.end(helper)
        self.start_helper("--own-work-after", "0")
        self.assertIn("result", self.ask(op="status"))
        started = self.log_lines("BackgroundPatch: Started — interval=14400s, firstFire=")
        self.assertGreater(int(started[-1].partition("firstFire=")[2].partition("s,")[0]), 14000)
        self.assertEqual(len(self.passes()), runs)
        return set(labels[done:])


if __name__ == "__main__":
    sample_mac.main()
