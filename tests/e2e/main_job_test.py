"""Applications are found, checked and patched through the helper, as an administrator does it from a shell."""

import sample_mac


class MainJob(sample_mac.SampleMacTest):
    def test_found_checked_patched_and_recorded(self):
        discovered = self.ctl("discover", "--json")
        states = self.states(discovered)
        self.assertEqual(states["quill"], "needsUpdate")
        self.assertEqual(states["larkspurnotes"], "upToDate")
        self.assertEqual(states["brindlechat"], "teamIDMismatch")

        listed = self.ctl("list", "--filter", "needsUpdate", "--json").json["apps"]
        self.assertIn("quill", [app["label"] for app in listed])
        self.assertNotIn("larkspurnotes", [app["label"] for app in listed])
        quill = next(app for app in listed if app["label"] == "quill")
        self.assertEqual((quill["currentVersion"], quill["newVersion"]), ("2.3.1", "2.4"))

        # The vendor offers a newer version: a check of one label sees it.
        version = self.root / "vendor/hazelstopwatch/version.txt"
        version.write_text(version.read_text().replace("0.10", "0.11"))
        checked = self.ctl("check", "hazelstopwatch", "--json").json["apps"]
        self.assertEqual([(app["label"], app["newVersion"]) for app in checked], [("hazelstopwatch", "0.11")])

        updated = self.ctl("update", "quill", "--json").json
        self.assertEqual((updated["success"], updated["installedCount"]), (True, 1))
        self.assertEqual(updated["message"], "Updated 1 of 1.")
        self.assertEqual([(app["label"], app["state"]) for app in updated["apps"]], [("quill", "upToDate")])
        self.assertEqual(self.installed("Quill"), "2.4")

        history = self.ctl("history", "quill", "--json").json["receipts"]
        self.assertEqual([(r["label"], r["status"], r["version"]) for r in history], [("quill", "success", "2.4")])
        self.assertEqual(self.ctl("history", "larkspurnotes").out, "No patch runs recorded.\n")
        # The next program knows what this one left.
        self.assertEqual(self.states(self.ctl("list", "--json"))["quill"], "upToDate")

        again = self.ctl("update", "quill")
        self.assertTrue(again.out.startswith("quill is up to date.\n\nLABEL"), again)
        self.assertEqual(len(self.receipts()), 1)

    def test_one_of_several_fails_and_the_others_are_updated(self):
        self.ctl("discover")
        self.order("fail", "ostravamaps", "9\n")
        several = self.ctl("update", "quill", "ostravamaps", "hazelstopwatch", "--json", expect=1).json
        self.assertFalse(several["success"])
        self.assertEqual(several["message"], "Updated 2 of 3. Failed: ostravamaps.")
        self.assertEqual(self.installed("Quill"), "2.4")
        self.assertEqual(self.installed("Hazel Stopwatch"), "0.10")
        states = {app["label"]: app["state"] for app in several["apps"]}
        self.assertEqual(states, {"quill": "upToDate", "ostravamaps": "lastUpdateFailed", "hazelstopwatch": "upToDate"})
        failed = [r for r in self.receipts() if r["label"] == "ostravamaps"]
        self.assertEqual([(r["status"], r["installomatorExitCode"]) for r in failed], [("failure", 9)])

        # A tool that claims success and changes nothing is not believed.
        self.order("fail", "ostravamaps", "0\n")
        self.ctl("update", "ostravamaps", expect=1)
        self.assertEqual(self.receipts()[-1]["installomatorExitCode"], -1)
        self.assertEqual(self.receipts()[-1]["status"], "failure")

    def test_what_is_asked_wrongly_and_what_nobody_knows(self):
        unknown = self.ctl("update", "nosuchlabel", expect=1)
        self.assertEqual(unknown.out, "")
        self.assertIn("No application is known under nosuchlabel.", unknown.err)
        # A script whose variable is empty means one application, never all.
        self.assertIn("takes no empty label", self.ctl("update", "", expect=2).err)
        self.assertEqual(self.ctl("--json", "list").json, {"apps": []})
        self.assertIsNone(self.helper_pid())
        # A check lets the helper judge, which knows the whole catalogue.
        self.assertIn("No application is known under nosuchlabel.", self.ctl("check", "nosuchlabel", expect=1).err)

    def test_help_and_version_touch_nothing(self):
        before = self.tree()
        for arguments in (["--help"], ["--version"], ["help", "update"], ["update", "--help"], []):
            self.assertTrue(self.ctl(*arguments).out)
        self.assertEqual(self.tree() ^ before, set())

    def test_a_narrow_terminal(self):
        self.ctl("discover")
        piped = self.ctl("list").out
        _, shown = self.ctl_on_terminal("list")
        self.assertEqual(shown(), piped)
        piped = piped.splitlines()
        narrow = max(map(len, piped)) - 2
        process, shown = self.ctl_on_terminal("list", columns=narrow)
        lines = shown().splitlines()
        self.assertEqual(process.returncode, 0)
        self.assertEqual(max(map(len, lines)), narrow, lines)
        self.assertTrue(any("…" in line for line in lines), lines)
        # The line that replaces itself must not wrap.
        _, shown = self.ctl_on_terminal("check", "quill", columns=30)
        progress = [part.split("\n")[0] for part in shown().split("\r\x1b[K")]
        self.assertIn("Checking for updates for 1 a…", progress)
        self.assertLess(max(len(part) for part in progress[:-1]), 30, progress)

    def tree(self):
        return {(str(path), path.lstat().st_mtime_ns)
                for folder in ("Users", "Library") for path in (self.root / folder).rglob("*")}


if __name__ == "__main__":
    sample_mac.main()
