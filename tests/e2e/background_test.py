"""What the application does while nobody watches: each test lets the time pass that the work waits for."""

import json
import os
import plistlib
import pwd
import signal
import unittest
from datetime import timedelta, timezone

import desktop
import sample_mac
from desktop import FIRST_TICK, ago

IDLE_POLL, BUSY_POLL = 60 + 15, 5 + 1  # of the observers of the helper's state, with what they may be late
LOGIN_LOOK = 10  # how long after a start the pass after a login is tried
OLD = timedelta(hours=5)  # more than the interval between two passes


class Unwatched(desktop.DesktopTest):
    LABELS = ("quill", "hazelstopwatch", "larkspurnotes")

    def setUp(self):
        super().setUp()
        self.keep_labels(*self.LABELS)
        # Quill is open, Hazel Stopwatch closed, and for both the vendor has nothing new yet.
        self.new = {"quill": self.offer("quill", "2.3.1"), "hazelstopwatch": self.offer("hazelstopwatch", "0.9")}
        self.sample("open", "Quill")
        self.addCleanup(self.sample, "close", "Quill")

    def start_with_nothing_new(self, settings):
        self.ctl("discover")
        self.kill_helper()
        self.change_user({"BackgroundPatchClosedAppsEnabled": True, "LastUpdateCheckDate": ago(OLD)} | settings)
        process = self.start()
        self.reaches("DeferralWatcher: Started")
        return process

    def vendors_bring_out_what_is_new(self):
        for label, version in self.new.items():
            self.offer(label, version)

    def test_an_update_is_staged_installed_where_closed_and_told_of_where_open(self):
        self.set_managed({"DialogTimeoutDeferral": 1})
        self.start_with_nothing_new({})
        self.assertEqual(self.log_lines("Update data is stale"), [])
        self.vendors_bring_out_what_is_new()
        self.later(FIRST_TICK)
        self.reaches("StatusViewModel: Deferral dialog timeout elapsed — applying the configured defer action.")

        said = [line.partition("] ")[2] for line in self.log().splitlines()]
        order = ["BackgroundPatchScheduler: Update data is stale; running Check for Updates this tick.",
                 "StatusViewModel: Staging 2 update(s) before closed-app patching and the deferral.",
                 "StatusViewModel: Patching closed apps before the open-apps notification.",
                 "BackgroundPatchScheduler: Patching 1 closed app(s): hazelstopwatch",
                 "StatusViewModel: 1 open app(s) need updates — presenting the deferral dialog.",
                 "StatusViewModel: Update All — checking deferral status"]
        self.assertEqual([line for line in said if line in order], order)
        self.assertEqual([(r["label"], r["status"], r["usedStagedInstaller"]) for r in self.receipts()],
                         [("hazelstopwatch", "success", True)])
        self.assertEqual((self.installed("Hazel Stopwatch"), self.installed("Quill")), ("0.10", "2.3.1"))

        # Nothing was said of the closed one; the open one once, and again when nobody answered the prompt.
        toast = ("Corvane: 1 open app needs updating", "Quit the app or open Corvane to update now.")
        self.assertTrue(sample_mac.eventually(lambda: len(self.toasts()) == 2), self.toasts())
        self.assertEqual(self.toasts(), [toast, toast])
        first = self.calls("Notify")[0]
        self.assertEqual(first[0], "Corvane")
        self.assertEqual(first[5][:2], ["default", "Open Corvane"])
        self.assertNotIn("suppress-sound", first[6])
        self.assertEqual(len(self.calls("CloseNotification")), 1, "the first does not stand beside the second")

        # A click brings the prompt, although the deferral has an hour to go.
        self.assertEqual(self.user()["HardDeferralCount"], 1)
        self.click_toast()
        self.reaches("StatusViewModel: Received notification deep-link — invoking updateAll() to surface the deferral "
                     "prompt.")
        self.reaches("StatusViewModel: Update All — checking deferral status", count=2)
        self.assertTrue(sample_mac.eventually(lambda: self.user()["HardDeferralCount"] == 2), self.log())
        self.assertEqual(self.log_lines("prompt's window could not be made"), [])

    def test_the_pass_after_a_login_runs_once_a_session(self):
        login = ago(timedelta(minutes=1))
        self.log_in(login)
        process = self.start_with_nothing_new({"BackgroundPatchAtLogin": True})
        self.reaches("BackgroundPatchScheduler: Logged in at ")
        self.vendors_bring_out_what_is_new()
        self.later(LOGIN_LOOK)
        self.reaches("BackgroundPatchScheduler: Running the at-login check for updates and closed-app pass.")
        self.reaches("PatchRunner: The run ended: Updated 1 of 1.")
        self.assertEqual([(r["label"], r["status"]) for r in self.receipts()], [("hazelstopwatch", "success")])
        self.assertTrue(sample_mac.eventually(self.toasts), self.log())
        self.assertEqual([title for title, _ in self.toasts()], ["Corvane: 1 open app needs updating"])
        self.assertEqual(self.user()["BackgroundPatchAtLoginHandledSession"], login)

        self.end(process)
        self.start()
        self.reaches("DeferralWatcher: Started", count=2)
        self.later(LOGIN_LOOK)
        self.assertEqual(len(self.log_lines("Logged in at ")), 1)
        # A session of its own comes; the one before would have taken its place.
        again = login + timedelta(seconds=30)
        self.log_in(again, session="c2")
        self.change_user({"VerboseMode": True})
        self.reaches("BackgroundPatchScheduler: Logged in at ", count=2)
        self.assertIn(f"Logged in at {again.isoformat()}+00:00", self.log_lines("Logged in at ")[1])

    def log_in(self, when, session="c1"):
        """The login manager tells of it."""
        manager, mock = "org.freedesktop.login1", "org.freedesktop.DBus.Mock"
        place = "/org/freedesktop/login1"
        if not self.system.has(manager):
            self.start_mock("logind", manager)
        self.system.call(manager, place, mock, "AddSession", "ssusb", session, "seat0", str(os.getuid()),
                         pwd.getpwuid(os.getuid()).pw_name, "true")
        since = int(when.replace(tzinfo=timezone.utc).timestamp()) * 1_000_000
        self.system.call(manager, f"{place}/session/{session}", mock, "UpdateProperties", "sa{sv}",
                         f"{manager}.Session", "1", "Timestamp", "t", str(since))
        self.system.call(manager, place, mock, "EmitSignal", "sssav", f"{manager}.Manager", "SessionNew", "so", "2",
                         "s", session, "o", f"{place}/session/{session}")

    def test_settings_on_disk_are_taken_without_a_restart(self):
        self.start_with_nothing_new({"BackgroundPatchClosedAppsEnabled": False})
        self.reaches("BackgroundPatchScheduler: Disabled in configuration; not scheduling.")
        self.reaches("SelfUpdateScheduler: Self-update disabled in configuration; not scheduling.")
        self.later(FIRST_TICK)

        # Of an hour between two passes half is over.
        self.change_user({"BackgroundPatchClosedAppsEnabled": True, "BackgroundPatchClosedAppsIntervalHours": 1,
                          "LastBackgroundPatchDate": ago(timedelta(minutes=30)), "SelfUpdateEnabled": True,
                          "SelfUpdateFrequency": "daily"})
        self.reaches("SelfUpdateScheduler: Started — frequency=daily, label=corvane4, firstFire=300s.")
        first = int(self.log_lines("BackgroundPatchScheduler: Started — interval=1h, firstFire=")[0]
                    .partition("firstFire=")[2].partition("s,")[0])
        self.assertTrue(1700 < first <= 1800, first)
        self.later(FIRST_TICK)
        self.reaches("SelfUpdateScheduler: Installomator did not return label 'corvane4'; nothing to do.")
        self.assertEqual(self.log_lines("Update data is stale"), [])
        self.later(first)
        self.reaches("BackgroundPatchScheduler: Update data is stale; running Check for Updates this tick.")
        self.reaches("Check for Updates summary", count=2)

        # The organisation's word counts over the user's, from when it comes and until it goes.
        before = plistlib.loads((self.root / "Library/Managed Preferences" / sample_mac.DOMAIN).read_bytes())
        self.set_managed({"BackgroundPatchClosedAppsScheduler": "helperDaemon", "SelfUpdateEnabled": False})
        self.reaches("BackgroundPatchScheduler: Scheduler mode is helperDaemon; skipping in-app timer.")
        self.reaches("HelperBackgroundPatchObserver: Polling helper state at 60s intervals")
        self.reaches("SelfUpdateScheduler: Self-update disabled in configuration; not scheduling.", count=2)
        self.set_managed(before)
        self.reaches("SelfUpdateScheduler: Started — frequency=daily", count=2)
        self.reaches("BackgroundPatchScheduler: Started — interval=1h", count=2)

    @unittest.skipUnless(sample_mac.has_link(), "without a network the helper does not begin")
    def test_a_pass_of_the_helper_is_followed_from_its_start_to_its_end(self):
        process = self.start_with_nothing_new({"BackgroundPatchClosedAppsScheduler": "helperDaemon",
                                               "BackgroundPatchClosedAppsNotifyOnCompletion": True,
                                               "LastFullInventoryCheckDate": ago(timedelta(days=2))})
        self.vendors_bring_out_what_is_new()
        self.order("delay", "hazelstopwatch", "6\n")
        self.kill_helper()
        process.send_signal(signal.SIGPIPE)  # what reaches who is just then writing to it
        self.start_helper("--own-work-after", "0")
        run = sample_mac.eventually(lambda: self.helper_state().get("currentRun"), sample_mac.LIMIT)
        self.assertTrue(run, self.log())
        self.later(IDLE_POLL)
        self.reaches(f"HelperBackgroundPatchObserver: Posted .corvaneHelperPassStarted for runID {run['runID']} "
                     "(totalLabels=1, currentLabel=hazelstopwatch).")
        self.reaches("HelperBackgroundPatchObserver: Adjusting poll cadence to 5s (in-flight: true).")
        self.reaches("HelperScheduledDiscoveryObserver: Posted .corvaneScheduledDiscoveryCompleted for runID "
                     f"{self.helper_state()['lastScheduledDiscoverySummary']['runID']} (apps: 3, pending: 2).")
        (self.control / "delay/hazelstopwatch").unlink()
        self.assertTrue(sample_mac.eventually(lambda: self.helper_state().get("lastBackgroundPatchSummary")), self.log())
        self.later(BUSY_POLL)
        self.reaches(f"HelperBackgroundPatchObserver: Posted .corvaneHelperPassCompleted for runID {run['runID']} "
                     "(labels: 1, failures: 0).")
        self.reaches("StatusViewModel: Check for Updates summary - total apps: 1, apps with updates: 0 []")
        self.assertTrue(sample_mac.eventually(lambda: len(self.toasts()) == 3), self.toasts())
        self.assertEqual(self.toasts(), [
            ("Corvane is updating closed apps", "Updating Hazel Stopwatch in the background…"),
            ("Corvane updated apps", "Updated 1 app in the background."),
            ("Corvane: 1 open app needs updating", "Quit the app or open Corvane to update now.")])
        self.assertEqual(self.states(self.ctl("list", "--json"))["hazelstopwatch"], "upToDate")
        self.assertEqual(self.user()["LastObservedHelperPatchRunID"], run["runID"])
        self.assertEqual(self.log_lines("BackgroundPatchScheduler: Patching"), [], "the helper alone installs")

    def helper_state(self):
        try:
            return json.loads((self.support / "helper-state.json").read_text())
        except OSError:
            return {}


if __name__ == "__main__":
    desktop.main()
