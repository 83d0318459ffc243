"""The application on a sample that a scene was written on: what the scene says comes by itself."""

import subprocess
import unittest
from datetime import datetime, timedelta, timezone
from pathlib import Path

import sample_mac

SCRIPT = Path(__file__).parents[2] / "sample/sample.sh"


@unittest.skipUnless(sample_mac.HAS_WINDOWS, "built without windows")
class Scenes(sample_mac.OffscreenTest):
    def setUp(self):
        super().setUp()
        # What the script notes when it makes a sample itself.
        with (self.root / ".corvane-sample").open("a") as notes:
            notes.write(f"build {sample_mac.PROGRAMS}\n")

    def scene(self, name, expect=0):
        written = subprocess.run([SCRIPT, "scene", name, self.root], capture_output=True, text=True,
                                 timeout=sample_mac.LIMIT, env=self.environment())
        self.assertEqual(written.returncode, expect, written)
        return written

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
