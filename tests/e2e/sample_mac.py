"""A sample Mac of a test's own: real programs, real vendors' server, real helper; all of it ends with the test."""

import fcntl
import json
import os
import plistlib
import pty
import shutil
import signal
import socket
import subprocess
import struct
import tempfile
import termios
import threading
import time
import typing
import unittest
from pathlib import Path

BUNDLE = Path(os.environ["CORVANE_TEST_BUNDLE"])
PROGRAMS = Path(os.environ["CORVANE_TEST_PROGRAMS"])

# Few labels keep a run short; those that hang or are slow are tried elsewhere.
LABELS = ("quill", "ostravamaps", "larkspurnotes", "hazelstopwatch", "rookeryserver", "brindlechat", "uebersee")
PROGRAM = BUNDLE / "Contents/MacOS/Corvane"
HAS_WINDOWS = any((BUNDLE / "Contents").glob("PlugIns/libcorvane_windows.so"))
DOMAIN = "org.corvane.Corvane.plist"
LIMIT = 60  # seconds a command may take before the test gives it up


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def eventually(holds, limit=20.0):
    """Looks every few milliseconds; what is waited for is another process."""
    end = time.monotonic() + limit
    while time.monotonic() < end:
        value = holds()
        if value:
            return value
        time.sleep(0.01)
    return holds()


def has_link():
    interfaces = Path("/sys/class/net")
    return any((each / "operstate").read_text().strip() == "up" for each in interfaces.iterdir())


def executable_of(pid):
    """Also of a program that an update has put another in the place of."""
    try:
        return os.readlink(f"/proc/{pid}/exe").removesuffix(" (deleted)")
    except OSError:
        return ""


class Outcome(typing.NamedTuple):
    code: int
    out: str
    err: str

    @property
    def json(self):
        return json.loads(self.out)


class SampleMacTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.root = Path(tempfile.mkdtemp(prefix="corvane-e2e-")).resolve()
        self.addCleanup(shutil.rmtree, self.root, ignore_errors=True)
        self.prepare_root()
        # Labels are read by an unprivileged user when the helper is root, so the folder is open to reading.
        self.root.chmod(0o755)
        port = self.port = free_port()
        subprocess.run([PROGRAMS / "corvane_sample", "create", self.root, "--port", str(port)], check=True)
        self.home = self.root / "Users/robin"
        self.support = self.root / "Library/Application Support/Corvane"
        self.control = self.support / "sample"
        for fragment in (self.support / "fragments/labels").iterdir():
            if not fragment.stem.startswith(LABELS):
                fragment.unlink()
        self.set_user({})
        self.vendors = subprocess.Popen(
            [PROGRAMS / "sample_vendors", self.root, str(port)], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(self.end, self.vendors)
        self.addCleanup(self.end_installer)
        self.addCleanup(self.kill_helper)
        eventually(lambda: self.answers(port))

    def prepare_root(self):
        """For tests whose Mac lies on a disk of its own."""

    @staticmethod
    def end(process):
        if process.poll() is None:
            process.kill()
        process.communicate()

    @staticmethod
    def answers(port):
        with socket.socket() as probe:
            return probe.connect_ex(("127.0.0.1", port)) == 0

    # The programs.

    def environment(self):
        sanitizers = {name: os.environ[name] for name in ("LSAN_OPTIONS", "TSAN_OPTIONS") if name in os.environ}
        return {"PATH": "/usr/bin:/bin", "HOME": str(self.home), "CORVANE_ROOT": str(self.root), "TZ": "UTC",
                "LANG": "C.UTF-8", "no_proxy": "127.0.0.1", **sanitizers}

    def ctl_start(self, *arguments, bundle=BUNDLE, environment=None, wrapped_by=()):
        return subprocess.Popen([*wrapped_by, bundle / "Contents/MacOS/corvanectl", *arguments],
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                env=environment or self.environment())

    def outcome(self, process):
        try:
            out, err = process.communicate(timeout=LIMIT)
        except subprocess.TimeoutExpired:
            process.kill()
            process.communicate()
            self.fail(f"{process.args} took longer than {LIMIT} s")
        return Outcome(process.returncode, out, err)

    def ctl(self, *arguments, expect=0, **options):
        outcome = self.outcome(self.ctl_start(*arguments, **options))
        self.assertEqual(outcome.code, expect, f"{arguments}: {outcome}\n{self.log()}")
        return outcome

    def ctl_on_terminal(self, *arguments, columns=0):
        """The process, and a call that waits for its end and gives what the terminal showed."""
        ours, theirs = pty.openpty()
        fcntl.ioctl(theirs, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
        process = subprocess.Popen([BUNDLE / "Contents/MacOS/corvanectl", *arguments], stdin=theirs, stdout=theirs,
                                   stderr=theirs, env=self.environment())
        self.addCleanup(self.end, process)
        os.close(theirs)
        shown = []

        def read():
            with os.fdopen(ours, "rb", buffering=0) as terminal:
                try:
                    while chunk := terminal.read(65536):
                        shown.append(chunk)
                except OSError:  # how a terminal tells that its other end is closed
                    pass

        reader = threading.Thread(target=read)
        reader.start()

        def all_shown():
            process.wait(LIMIT)
            reader.join()
            return b"".join(shown).decode().replace("\r\n", "\n")

        return process, all_shown

    def sample(self, verb, *arguments):
        """The script of those who play with a sample."""
        subprocess.run([Path(__file__).parents[2] / "sample/sample.sh", verb, self.root, *arguments], check=True)

    def helper_pid(self):
        try:
            record = json.loads((self.home / "Library/Application Support/Corvane/helper-child.json").read_text())
        except (OSError, ValueError):
            return None
        pid = record["pid"]
        return pid if executable_of(pid).endswith("/CorvaneRootHelper") else None

    def start_helper(self, *arguments):
        """One that the application did not start; it ends with the test."""
        (self.support / "helper-heartbeat").unlink(missing_ok=True)
        process = subprocess.Popen(
            [BUNDLE / "Contents/Helpers/CorvaneRootHelper", "--root", self.root, "--user-home", self.home,
             *arguments], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env=self.environment())
        self.addCleanup(self.end, process)
        self.assertTrue(eventually(lambda: (self.support / "helper-heartbeat").exists()), self.log())
        return process

    def ask(self, **request):
        body = json.dumps({"version": 1, "id": "t", **request}).encode()
        with socket.socket(socket.AF_UNIX) as connection:
            connection.settimeout(LIMIT)
            connection.connect(str(self.root / "var/run/corvane/helper.sock"))
            connection.sendall(struct.pack(">I", len(body)) + body)
            stream = connection.makefile("rb")
            size = struct.unpack(">I", stream.read(4))[0]
            return json.loads(stream.read(size))

    def kill_helper(self, how=signal.SIGKILL):
        pid = self.helper_pid()
        if pid is None:
            return
        os.kill(pid, how)
        self.assertTrue(eventually(lambda: executable_of(pid) == ""), "the helper does not end")

    def run_record(self):
        try:
            return json.loads((self.support / "helper-run.json").read_text())
        except (OSError, ValueError):
            return {}

    def end_installer(self):
        """The installer leads a process group of its own and outlives a killed helper."""
        pid = self.run_record().get("childPid")
        if pid and str(self.root) in self.command_line(pid):
            os.killpg(pid, signal.SIGKILL)

    @staticmethod
    def command_line(pid):
        try:
            return Path(f"/proc/{pid}/cmdline").read_text()
        except OSError:
            return ""

    # The Mac.

    def log(self):
        texts = []
        for file in (self.root / "Library/Logs/Corvane/crv.log", self.home / "Library/Logs/Corvane/crv.log"):
            if file.exists():
                texts.append(file.read_text())
        return "".join(texts)

    def log_lines(self, text):
        return [line for line in self.log().splitlines() if text in line]

    def reaches(self, text, count=1):
        self.assertTrue(eventually(lambda: len(self.log_lines(text)) >= count, limit=LIMIT),
                        f"no \"{text}\" in\n{self.log()}")

    @staticmethod
    def put_preferences(file, values, form):
        """As a preference daemon does: the file is replaced, never seen half written."""
        file.with_suffix(".new").write_bytes(plistlib.dumps(values, fmt=form))
        file.with_suffix(".new").replace(file)

    def set_user(self, values):
        self.put_preferences(self.home / "Library/Preferences" / DOMAIN, values, plistlib.FMT_BINARY)

    def user(self):
        return plistlib.loads((self.home / "Library/Preferences" / DOMAIN).read_bytes())

    def change_user(self, values):
        self.set_user(self.user() | values)

    def set_managed(self, values):
        self.put_preferences(self.root / "Library/Managed Preferences" / DOMAIN, values, plistlib.FMT_XML)

    def installed(self, bundle):
        info = self.root / "Applications" / f"{bundle}.app/Contents/Info.plist"
        return plistlib.loads(info.read_bytes())["CFBundleShortVersionString"]

    def keep_labels(self, *labels):
        for fragment in (self.support / "fragments/labels").iterdir():
            if fragment.stem not in labels:
                fragment.unlink()

    def order(self, kind, label, text):
        (self.control / kind / label).write_text(text)

    def receipts(self):
        file = self.support / "receipts.jsonl"
        return [json.loads(line) for line in file.read_text().splitlines()] if file.exists() else []

    def states(self, outcome):
        return {app["label"]: app["state"] for app in outcome.json["apps"]}


class OffscreenTest(SampleMacTest):
    """The application without a desktop: its windows are drawn, and nobody sees them."""

    def environment(self):
        return super().environment() | {"QT_QPA_PLATFORM": "offscreen", "QT_QUICK_BACKEND": "software",
                                        "DBUS_SESSION_BUS_ADDRESS": "disabled:", "XDG_RUNTIME_DIR": str(self.home)}

    def start(self, *arguments, environment=None):
        process = subprocess.Popen([PROGRAM, *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True, env=environment or self.environment())
        self.addCleanup(self.end, process)
        return process


def main():
    unittest.main(verbosity=2)
