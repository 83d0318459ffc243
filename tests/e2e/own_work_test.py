"""The helper without the application: installers downloaded ahead, and passes that nobody asked for."""

import http.server
import io
import json
import tarfile
import threading
import unittest

import sample_mac


class OwnHelperTest(sample_mac.SampleMacTest):
    def patch(self, labels=(), stage=()):
        return self.ask(op="startPatching", labels=list(labels), alsoStageLabels=list(stage))["result"]

    def staged(self):
        return sorted(str(path.relative_to(self.support / "Staging"))
                      for path in (self.support / "Staging").rglob("*") if path.is_file())


class Staging(OwnHelperTest):
    def test_an_install_uses_what_was_downloaded_ahead(self):
        self.start_helper()
        self.patch(stage=["quill", "larkspurnotes"])
        archive = [name for name in self.staged() if not name.endswith(".json")]
        self.assertEqual(len(archive), 1, self.log())  # one of the two is up to date
        self.assertTrue(archive[0].startswith("quill/"))
        self.assertEqual(self.installed("Quill"), "2.3.1")
        self.assertEqual(self.receipts(), [])

        # The vendor is down by now.
        (self.root / "vendor/.fail/download").mkdir(parents=True, exist_ok=True)
        for file in (self.root / "vendor/download").glob("quill.*"):
            file.unlink()
        self.assertEqual(self.patch(["quill"])["message"], "Updated 1 of 1.", self.log())
        self.assertEqual(self.installed("Quill"), "2.4")
        self.assertIs(self.receipts()[-1]["usedStagedInstaller"], True)
        self.assertEqual(self.staged(), [])

class Fetching(OwnHelperTest):
    """The source host is the vendors' server."""

    def offer(self, script, labels=("quill",)):
        page = self.root / "vendor/repos/Installomator/Installomator/tarball/release"
        page.parent.mkdir(parents=True, exist_ok=True)
        files = {"Installomator.sh": script} | {f"fragments/labels/{label}.sh": f"{label})\n    ;;\n" for label in labels}
        with tarfile.open(page, "w:gz") as archive:
            for name, text in files.items():
                entry = tarfile.TarInfo(f"Installomator-1db6d22/{name}")
                entry.size = len(text)
                archive.addfile(entry, io.BytesIO(text.encode()))

    def start_with_host(self):
        return self.start_helper("--installomator-source", f"http://127.0.0.1:{self.port}")

    def script(self):
        return (self.support / "Installomator.sh").read_text()

    def test_a_newer_tool_is_fetched_and_a_broken_one_is_not(self):
        newer = '#!/bin/zsh\nVERSION="99.1"\nprint $VERSION\n'
        self.offer(newer, ("quill", "stamp"))
        helper = self.start_with_host()
        self.assertTrue(sample_mac.eventually(lambda: self.script() == newer), self.log())
        self.assertEqual(sorted(path.name for path in (self.support / "fragments/labels").iterdir()),
                         ["quill.sh", "stamp.sh"])
        self.end(helper)
        self.offer('#!/bin/zsh\nVERSION="99.2"\nif [[ ; then\n')
        self.start_with_host()
        self.reaches("its syntax is damaged")
        self.assertEqual(self.script(), newer)


class Chat(http.server.BaseHTTPRequestHandler):
    def do_POST(self):
        self.server.told.append(json.loads(self.rfile.read(int(self.headers["Content-Length"]))))
        self.send_response(self.server.codes.pop(0) if self.server.codes else 200)
        self.end_headers()

    def log_message(self, *_):
        pass


class Webhooks(OwnHelperTest):
    def test_a_chat_hears_of_failures_and_the_log_of_no_address(self):
        chat = http.server.HTTPServer(("127.0.0.1", 0), Chat)
        chat.told, chat.codes = [], []
        thread = threading.Thread(target=chat.serve_forever)
        thread.start()
        self.addCleanup(thread.join)
        self.addCleanup(chat.shutdown)
        self.addCleanup(chat.server_close)
        self.change_user({"WebhookFeature": "failures", "VerboseMode": True,
                          "WebhookURLSlack": f"http://127.0.0.1:{chat.server_port}/services/SECRET"})
        self.start_helper()
        self.patch(["hazelstopwatch"])
        self.patch(["rookeryserver"])
        self.assertTrue(sample_mac.eventually(lambda: chat.told), self.log())
        self.assertEqual(len(chat.told), 1)
        self.assertIn("Updated 0 of 1. Failed: rookeryserver.", chat.told[0]["text"])
        self.assertNotIn("SECRET", self.log())


@unittest.skipUnless(sample_mac.has_link(), "without a network the helper does not begin")
class Pass(OwnHelperTest):
    def test_closed_applications_are_updated_and_open_ones_left_alone(self):
        self.change_user({"BackgroundPatchClosedAppsEnabled": True, "BackgroundPatchClosedAppsScheduler": "helperDaemon"})
        self.addCleanup(self.sample, "down")
        self.sample("open", "Ostrava Maps")
        self.start_helper("--own-work-after", "0")
        state = self.support / "helper-state.json"

        def summary():
            return state.exists() and json.loads(state.read_text()).get("lastBackgroundPatchSummary")

        told = sample_mac.eventually(summary, sample_mac.LIMIT)
        self.assertTrue(told, self.log())
        self.assertIn("quill", told["labels"])
        self.assertNotIn("ostravamaps", told["labels"])
        self.assertEqual(self.installed("Quill"), "2.4")
        self.assertEqual(self.installed("Hazel Stopwatch"), "0.10")
        self.assertTrue(self.log_lines("Skipping label 'ostravamaps'"), self.log())
        self.assertTrue(self.receipts())
        self.assertTrue(all(receipt["usedStagedInstaller"] for receipt in self.receipts()
                            if receipt["status"] == "success"), self.receipts())
        apps = {app["label"]: app for app in json.loads((self.support / "helper-discovered-apps.json").read_text())}
        self.assertEqual(apps["quill"]["newVersion"], "2.4")
        # What is open lies ready for when it is closed.
        self.assertTrue(sample_mac.eventually(
            lambda: [name for name in self.staged() if name == "ostravamaps/staged.json"]), self.log())


if __name__ == "__main__":
    sample_mac.main()
