"""The application updates itself: first it only tells of it, then it does it, and the next start is the new one."""

import json
import plistlib
import shutil
import subprocess
import tarfile
from datetime import timedelta
from pathlib import Path

import desktop
import sample_mac
from desktop import FIRST_TICK, ago

LABEL = '''corvane4)
    name="Corvane"
    type="dmg"
    versionKey="CFBundleVersion"
    downloadURL="http://127.0.0.1:{port}/download/corvane4.dmg"
    appNewVersion=$(curl -fsL "http://127.0.0.1:{port}/corvane4/version.txt")
    expectedTeamID="C0RVANETM0"
    blockingProcesses=( NONE )
    ;;
'''
BUILD = "24001"
PASS_INTERVAL = 4 * 3600 + 60


class SelfUpdate(desktop.DesktopTest):
    def setUp(self):
        super().setUp()
        labels = self.support / "fragments/labels"
        self.keep_labels()
        (labels / "corvane4.sh").write_text(LABEL.format(port=self.port))
        vendor = self.root / "vendor"
        (vendor / "corvane4").mkdir()
        (vendor / "corvane4/version.txt").write_text(BUILD + "\n")
        (vendor / "releases.json").write_text(json.dumps([{"tag_name": "v4.3", "name": "Corvane 4.3 (24002)"},
                                                          {"tag_name": "v4.2", "name": f"Corvane 4.2 ({BUILD})"}]))
        self.bundle = self.root / "Applications/Corvane.app"
        shutil.copytree(sample_mac.BUNDLE, self.bundle, symlinks=True)
        for file in filter(Path.is_file, self.bundle.rglob("*")):
            if file.read_bytes()[:4] == b"\x7fELF":  # the vendor keeps small downloads
                subprocess.run(["strip", "--strip-debug", file], check=True)
        self.offer_new_bundle(vendor / "download/corvane4.dmg")

    def offer_new_bundle(self, archive):
        new = self.root / "new/Corvane.app"
        shutil.copytree(self.bundle, new, symlinks=True)
        info = plistlib.loads((new / "Contents/Info.plist").read_bytes())
        (new / "Contents/Info.plist").write_bytes(
            plistlib.dumps(info | {"CFBundleShortVersionString": "4.2", "CFBundleVersion": BUILD}))
        with (new / "Contents/Helpers/CorvaneRootHelper").open("ab") as helper:
            helper.write(b"new")
        (new / "Contents/_CodeSignature").mkdir()
        (new / "Contents/_CodeSignature/CodeDirectory").write_text("\nC0RVANETM0\n")
        with tarfile.open(archive, "w:gz", compresslevel=1) as download:
            download.add(new, new.name)
        shutil.rmtree(new.parent)

    def test_it_tells_of_its_update_and_later_installs_it_in_silence(self):
        self.set_managed({"SelfUpdateReleaseListURL": f"http://127.0.0.1:{self.port}/releases.json"})
        self.change_user({"SelfUpdateEnabled": True, "SelfUpdateFrequency": "daily"})
        process = self.start(program=self.bundle / "Contents/MacOS/Corvane")
        self.reaches("SelfUpdateScheduler: Started — frequency=daily, label=corvane4, firstFire=300s.")
        self.reaches("StatusViewModel: Discovery successful via XPC, found 0 apps")
        self.later(FIRST_TICK)
        self.reaches(f"SelfUpdateScheduler: Self-update available (0.1.0 -> {BUILD}). Surfacing to dashboard.")
        self.assertTrue(sample_mac.eventually(self.toasts), self.log())
        self.assertEqual(self.toasts(), [("Corvane update available", f"Version 4.2 ({BUILD}) is available (you have "
                                                                      "0.1.0). Open Corvane to install.")])
        self.assertEqual(self.receipts(), [])

        self.change_user({"BackgroundPatchClosedAppsEnabled": True,
                          "LastSelfUpdateCheckDate": ago(timedelta(days=2))})
        self.reaches("SelfUpdateScheduler: Started — frequency=daily, label=corvane4, firstFire=300s.", count=2)
        self.later(FIRST_TICK)
        self.reaches("SelfUpdateScheduler: Background-patch enabled — installing self-update silently 0.1.0 -> "
                     f"{BUILD}.")
        self.reaches("PatchRunner: The run ended: Updated 1 of 1.")
        self.assertEqual([(r["label"], r["status"], r["version"]) for r in self.receipts()],
                         [("corvane4", "success", BUILD)])
        self.assertIn("SelfUpdateStartedAt", self.user())
        self.assertEqual(len(self.toasts()), 1)
        self.assertIsNone(process.poll(), "what runs goes on running")

        # With its next look at the helper it puts the new one in the place of the old.
        self.reaches("StatusViewModel: Check for Updates summary - total apps: 1, apps with updates: 0 []")
        old = self.helper_pid()
        self.later(PASS_INTERVAL)
        self.reaches("StatusViewModel: Helper binary cdhash changed since last registration — auto-resetting to refresh "
                     "launchd binding")
        self.assertTrue(sample_mac.eventually(lambda: self.helper_pid() not in (None, old), sample_mac.LIMIT), self.log())
        self.assertEqual(sample_mac.executable_of(old), "")

        self.end(process)
        self.start(program=self.bundle / "Contents/MacOS/Corvane")
        self.reaches(f"Corvane: Launched v4.2 ({BUILD});")
        self.reaches("SelfUpdateScheduler: Started — frequency=daily", count=3)
        self.change_user({"LastSelfUpdateCheckDate": ago(timedelta(days=2))})
        self.reaches("SelfUpdateScheduler: Started — frequency=daily, label=corvane4, firstFire=300s.", count=3)
        self.later(FIRST_TICK)
        self.reaches(f"SelfUpdateScheduler: Running version {BUILD} already satisfies available {BUILD}; no "
                     "self-update needed.")
        self.assertEqual(len(self.receipts()), 1)


if __name__ == "__main__":
    desktop.main()
