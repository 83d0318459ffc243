"""The application on a desktop of a test's own: a display, a session bus, a notification service, a system bus."""

import ctypes
import json
import os
import struct
import subprocess
import threading
import unittest
from datetime import datetime, timezone

import sample_mac
from sample_mac import eventually

FIRST_TICK = 300 + 60  # seconds until the schedulers' first, with what a timer may be late
STEADY_AHEAD = os.environ["CORVANE_TEST_STEADY_AHEAD_LIBRARY"]
NOTIFICATIONS = "org.freedesktop.Notifications"

# Without the machine's own services: none is started by a question.
BUS = """<busconfig><type>session</type><listen>unix:path={folder}/bus</listen><auth>EXTERNAL</auth>
<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy>
</busconfig>"""


def ago(age):
    """A moment as the preferences store it."""
    return datetime.now(timezone.utc).replace(tzinfo=None, microsecond=0) - age


class Bus:
    """A bus of the test's own, and what is asked on it by another program than the one under test. A second one of the
    same name takes the place of one that has ended."""

    def __init__(self, test, name):
        folder = test.root / f"{name}-bus"
        folder.mkdir(exist_ok=True)
        (folder / "conf").write_text(BUS.format(folder=folder))
        self.process = subprocess.Popen(["dbus-daemon", "--nofork", f"--config-file={folder}/conf", "--print-address=1"],
                                        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                                        text=True)
        test.addCleanup(test.end, self.process)
        self.process.stdout.readline()  # it listens
        self.address = f"unix:path={folder}/bus"

    def busctl(self, *arguments):
        return subprocess.run(["busctl", f"--address={self.address}", *arguments], capture_output=True, text=True,
                              timeout=sample_mac.LIMIT)

    def call(self, *arguments):
        done = self.busctl("call", *arguments)
        if done.returncode != 0:
            raise AssertionError(done)

    def has(self, name):
        return self.busctl("status", name).returncode == 0


class AnotherWindow:
    """Somebody works in another program: whatever comes to the front does not stay there."""

    def __init__(self, test, display):
        self.x = ctypes.CDLL("libX11.so.6")
        self.x.XOpenDisplay.restype = ctypes.c_void_p
        self.display = ctypes.c_void_p(self.x.XOpenDisplay(display.encode()))
        self.ended = threading.Event()
        self.thread = threading.Thread(target=self.hold)
        test.addCleanup(self.leave)
        self.thread.start()

    def hold(self):
        while not self.ended.wait(0.05):
            self.x.XSetInputFocus(self.display, ctypes.c_ulong(0), 0, ctypes.c_ulong(0))
            self.x.XSync(self.display, 0)

    def leave(self):
        self.ended.set()
        self.thread.join()
        self.x.XCloseDisplay(self.display)


@unittest.skipUnless(sample_mac.HAS_WINDOWS, "built without windows")
class DesktopTest(sample_mac.SampleMacTest):
    def setUp(self):
        super().setUp()
        self.runtime = self.root / "runtime"
        self.runtime.mkdir(mode=0o700)
        self.ahead = self.root / "steady-ahead"
        self.ahead.write_bytes(struct.pack("=q", 0))
        self.display = self.start_display()
        AnotherWindow(self, self.display)
        self.session = Bus(self, "session")
        self.system = Bus(self, "system")
        self.start_notification_service(self.session)
        # Whatever the machine of the tests is connected to.
        self.start_mock("networkmanager", "org.freedesktop.NetworkManager")

    def environment(self):
        return super().environment() | {
            "DISPLAY": self.display, "QT_QUICK_BACKEND": "software", "XDG_RUNTIME_DIR": str(self.runtime),
            "DBUS_SESSION_BUS_ADDRESS": self.session.address, "DBUS_SYSTEM_BUS_ADDRESS": self.system.address}

    # The desktop.

    def start_display(self):
        ours, theirs = os.pipe()
        server = subprocess.Popen(["Xvfb", "-displayfd", str(theirs), "-screen", "0", "1280x800x24", "-nolisten", "tcp"],
                                  stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                  pass_fds=[theirs])
        self.addCleanup(self.end, server)
        os.close(theirs)
        with os.fdopen(ours) as told:
            return f":{told.readline().strip()}"

    def start_notification_service(self, bus):
        """A real one, and beside it a record of what it is told."""
        self.record = self.root / "notifications.jsonl"
        with self.record.open("w") as record:
            listener = subprocess.Popen(["busctl", f"--address={bus.address}", "--json=short", "monitor", NOTIFICATIONS],
                                        stdin=subprocess.DEVNULL, stdout=record, stderr=subprocess.DEVNULL)
        self.addCleanup(self.end, listener)
        conf = self.root / "dunstrc"
        conf.write_text("[global]\n    sort = false\n    idle_threshold = 0\n    history_length = 0\n"
                        "[urgency_normal]\n    timeout = 0\n[urgency_low]\n    timeout = 0\n")
        service = subprocess.Popen(["dunst", "-conf", conf], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL,
                                   env={"PATH": "/usr/bin:/bin", "HOME": str(self.home), "DISPLAY": self.display,
                                        "DBUS_SESSION_BUS_ADDRESS": bus.address})
        self.addCleanup(self.end, service)
        self.assertTrue(eventually(lambda: bus.has(NOTIFICATIONS)), "no notification service")
        # What it is asked is recorded from here on.
        self.assertTrue(eventually(lambda: (bus.busctl("call", NOTIFICATIONS, "/org/freedesktop/Notifications",
                                                       NOTIFICATIONS, "GetServerInformation"), self.calls())[1]))
        return service

    def calls(self, member=None):
        """What the notification service was asked, oldest first, each with its arguments."""
        messages = [json.loads(line) for line in self.record.read_text().splitlines() if line.endswith("}")]
        return [message["payload"]["data"] if message.get("payload") else [] for message in messages
                if message["type"] == "method_call" and message.get("interface") == NOTIFICATIONS
                and member in (None, message["member"])]

    def toasts(self):
        """(title, body) of what was shown."""
        return [(data[3], data[4]) for data in self.calls("Notify")]

    def click_toast(self):
        """As a click of its default action on the notification that stands on top."""
        self.session.call(NOTIFICATIONS, "/org/freedesktop/Notifications", "org.dunstproject.cmd0", "NotificationAction",
                          "u", "0")

    def start_mock(self, template, name):
        """A stand-in for a service of the system, ready to be asked."""
        mock = subprocess.Popen(["/usr/bin/python3", "-m", "dbusmock", "--system", "--template", template],
                                stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                env={"PATH": "/usr/bin:/bin", "DBUS_SYSTEM_BUS_ADDRESS": self.system.address})
        self.addCleanup(self.end, mock)
        self.assertTrue(eventually(lambda: self.system.has(name)), f"no stand-in for {name}")

    # The application.

    def start(self, *arguments, program=sample_mac.PROGRAM):
        process = subprocess.Popen([program, *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL,
                                   env=self.environment() | {"LD_PRELOAD": STEADY_AHEAD,
                                                             "CORVANE_TEST_STEADY_AHEAD": str(self.ahead),
                                                             "ASAN_OPTIONS": "verify_asan_link_order=0"})
        self.addCleanup(self.end, process)
        return process

    def later(self, seconds):
        """So much steady time passes for the application alone; a file beside its settings wakes it to notice."""
        past = struct.unpack("=q", self.ahead.read_bytes())[0]
        with self.ahead.open("r+b") as file:
            file.write(struct.pack("=q", past + seconds))
        (self.home / "Library/Preferences/somebody.elses.plist").write_text(str(past))

    def offer(self, label, version):
        """What the vendor says the latest version is; gives what was said before."""
        page = self.root / "vendor" / label / "version.txt"
        before = page.read_text()
        page.write_text(version)
        return before


main = sample_mac.main
