"""The application on a sample that a scene was written on: what the scene says comes by itself."""

import subprocess
import unittest
from datetime import datetime, timedelta, timezone
from pathlib import Path

import sample_mac

PROGRAM = sample_mac.BUNDLE / "Contents/MacOS/Corvane"
WINDOWS = list((sample_mac.BUNDLE / "Contents").glob("PlugIns/libcorvane_windows.so"))
SCRIPT = Path(__file__).parents[2] / "sample/sample.sh"


class Scenes(sample_mac.SampleMacTest):
    def setUp(self):
        super().setUp()
        # What the script notes when it makes a sample itself.
        with (self.root / ".corvane-sample").open("a") as notes:
            notes.write(f"build {sample_mac.PROGRAMS}\n")

    def environment(self):
        return super().environment() | {"QT_QPA_PLATFORM": "offscreen", "QT_QUICK_BACKEND": "software",
                                        "DBUS_SESSION_BUS_ADDRESS": "disabled:", "XDG_RUNTIME_DIR": str(self.home)}

    def scene(self, name, expect=0):
        written = subprocess.run([SCRIPT, "scene", name, self.root], capture_output=True, text=True,
                                 timeout=sample_mac.LIMIT, env=self.environment())
        self.assertEqual(written.returncode, expect, written)
        return written

    def start(self):
        process = subprocess.Popen([PROGRAM], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, env=self.environment())
        self.addCleanup(self.end, process)
        return process

    def reaches(self, text):
        self.assertTrue(sample_mac.eventually(lambda: self.log_lines(text), limit=60), f"no \"{text}\" in\n{self.log()}")

    def managed(self, values):
        file = self.root / "Library/Managed Preferences" / sample_mac.DOMAIN
        return sample_mac.plistlib.loads(file.read_bytes()) | values

    @unittest.skipUnless(WINDOWS, "built without windows")
    def test_a_deferral_runs_out_into_the_prompt(self):
        self.ctl("discover")
        self.scene("prompt")
        # The prompt answers for itself soon, which only one that stands does.
        self.set_managed(self.managed({"DialogTimeoutDeferral": 1}))
        self.start()
        self.reaches("DeferralWatcher: Deadline trigger fired (status=normal, NextAutoLaunch=")
        self.reaches("StatusViewModel: Update All — checking deferral status")
        self.reaches("StatusViewModel: Deferral dialog timeout elapsed — applying the configured defer action.")
        self.assertTrue(sample_mac.eventually(lambda: self.user().get("HardDeferralCount") == 2), self.user())
        self.assertEqual(self.log_lines("prompt's window could not be made"), [])

    @unittest.skipUnless(WINDOWS, "built without windows")
    def test_the_deadline_requires_the_updates(self):
        self.ctl("discover")
        self.scene("hard")
        process = self.start()
        self.reaches("DeferralWatcher: Deadline trigger fired (status=hardDeadlineReached, trigger=count, "
                     "NextAutoLaunch=")
        self.reaches("DeferralWatcher: Deadline status hardDeadlineReached — presenting the standalone prompt")
        self.reaches("StatusViewModel: Hard deadline reached outside business hours — presenting required-update "
                     "prompt with no further deferral and a 120-second enforcement countdown")
        armed = self.user()["NextAutoLaunch"]
        left = armed.replace(tzinfo=timezone.utc) - datetime.now(timezone.utc)
        self.assertTrue(timedelta(seconds=50) < left <= timedelta(seconds=120), left)

        # The scene belongs to the application while that runs.
        refused = self.scene("prompt", expect=1)
        self.assertIn("is at work on this sample", refused.stderr)
        self.assertEqual(self.user()["NextAutoLaunch"], armed)
        self.end(process)
        self.scene("prompt")


if __name__ == "__main__":
    sample_mac.main()
