"""The service's unit file is one that systemd reads without a word, and stays locked down. No service manager is started."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).parents[2]
UNIT = ROOT / "packaging/CorvaneRootHelper.service"
HELPER = Path(os.environ["CORVANE_TEST_BUNDLE"]) / "Contents/Helpers/CorvaneRootHelper"
# What systemd reckons such a service to be exposed at today, in tenths; a loosened one is above it.
EXPOSURE = 64


@unittest.skipUnless(shutil.which("systemd-analyze"), "this machine has no systemd-analyze")
class ServiceUnit(unittest.TestCase):
    def setUp(self):
        self.folder = Path(tempfile.mkdtemp(prefix="corvane-unit-"))
        self.addCleanup(shutil.rmtree, self.folder)
        text = UNIT.read_text()
        # The program of this build, since none is installed.
        self.assertIn("ExecStart=/Applications/Corvane.app/Contents/Helpers/CorvaneRootHelper\n", text)
        self.unit = self.folder / UNIT.name
        self.unit.write_text(text.replace("/Applications/Corvane.app", str(HELPER.parents[2])))

    def analyze(self, *arguments):
        return subprocess.run(["systemd-analyze", *arguments], capture_output=True, text=True, check=False,
                              stdin=subprocess.DEVNULL)

    def test_systemd_reads_it_without_complaint(self):
        verified = self.analyze("verify", "--man=no", "--recursive-errors=no", self.unit)
        self.assertEqual((verified.returncode, verified.stderr.strip()), (0, ""))

    def test_a_misspelt_line_would_be_noticed(self):
        self.unit.write_text(self.unit.read_text().replace("ProtectClock=", "ProtectClok="))
        self.assertIn("ProtectClok", self.analyze("verify", "--man=no", self.unit).stderr)

    def test_it_is_no_more_exposed_than_its_work_asks_for(self):
        rated = self.analyze("security", "--offline=true", f"--threshold={EXPOSURE}", "--no-pager", self.unit)
        self.assertEqual(rated.returncode, 0, rated.stdout + rated.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=2)
