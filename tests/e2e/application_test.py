"""The application as a person starts it: once, a second time, and without a display."""

import unittest

import sample_mac


class Application(sample_mac.OffscreenTest):
    def test_without_a_window(self):
        usage = self.outcome(self.start("--help"))
        self.assertEqual(usage.code, 0)
        self.assertTrue(usage.out.startswith("Corvane\n\n  --generate-diagnostic-bundle"), usage)
        self.assertEqual(self.outcome(self.start("-h", "--anything")).out, usage.out)
        nowhere = {name: value for name, value in self.environment().items() if name != "QT_QPA_PLATFORM"}
        for environment in (nowhere, nowhere | {"DISPLAY": ":4711"}):
            refused = self.outcome(self.start(environment=environment))
            self.assertEqual((refused.code, refused.err), (1, "Corvane: no display takes a window; corvanectl does "
                                                              "the same work in a terminal.\n"))
        self.assertEqual(self.log(), "", "nothing was begun")

    def test_a_login_while_an_administrator_works(self):
        self.ctl("discover")
        self.order("delay", "quill", "20\n")
        run = self.ctl_start("update", "quill")
        self.addCleanup(self.end, run)
        self.assertTrue(sample_mac.eventually(lambda: self.run_record().get("childPid")))
        application = self.start()
        self.reaches("A corvanectl is at work")
        self.assertIsNone(application.poll(), "the launch waits")
        self.assertFalse(self.log_lines("Launched v"))
        self.end(run)
        self.reaches("Launched v")

    @unittest.skipUnless(sample_mac.HAS_WINDOWS, "built without windows")
    def test_an_open_application_is_asked_about_and_nothing_else(self):
        self.sample("open", "Quill")
        self.addCleanup(self.sample, "close", "Quill")
        self.start()
        self.reaches("presenting the deferral dialog")
        self.reaches("checking deferral status")
        said = [line.rpartition("StatusViewModel: ")[2] for line in self.log().splitlines()]
        order = [line for line in said if line.startswith(("Staging ", "1 open", "Rechecking", "Update All"))]
        self.assertRegex("\n".join(order), r"^Staging (\d+) update\(s\) before closed-app patching and the deferral\.\n"
                                           r"1 open app\(s\) need updates — presenting the deferral dialog\.\n"
                                           r"Rechecking \1 pending label\(s\) before the deferral prompt\.\n"
                                           r"Update All — checking deferral status$")
        self.assertEqual(self.user()["LastNotifiedPendingUpdatesCount"], 1)

    @unittest.skipUnless(sample_mac.HAS_WINDOWS, "built without windows")
    def test_one_runs_and_owns_the_state(self):
        first = self.start()
        self.reaches("Check for Updates summary")
        self.assertRegex(self.log_lines("Launched v")[0],
                         r"Corvane: Launched v0\.1\.0 \(\S+\); helperStatus=\w+; silentLaunch=false; "
                         r"backgroundLaunch=false; showDashboard=true; uid=\d+$")

        second = self.outcome(self.start())
        self.assertEqual((second.code, second.out, second.err), (0, "", ""))
        refused = self.ctl("update", "quill", "--json", expect=3)
        self.assertIn("owns the state", refused.json["error"]["text"])
        self.assertEqual(self.states(self.ctl("list", "--json"))["larkspurnotes"], "upToDate")

        # Another program's change of the preferences is taken like a save in its own settings.
        self.change_user({"VerboseMode": True, "IgnoredLabels": ["quill"]})
        self.reaches("[VERBOSE] StatusViewModel: Dock badge set to")

        # However it ends, the claim ends with it.
        first.kill()
        self.outcome(first)
        self.ctl("update", "ostravamaps")
        self.assertEqual(self.installed("Ostrava Maps"), "11.3")


if __name__ == "__main__":
    sample_mac.main()
