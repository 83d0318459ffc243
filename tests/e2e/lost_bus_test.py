"""The session bus ends under the application: it lives on, says what it cannot show, and speaks again on the next."""

from datetime import timedelta
from pathlib import Path

import desktop
import sample_mac
from desktop import FIRST_TICK, Bus, ago

TOAST = ("Corvane update available", "Version 2.4 is available (you have 0.1.0). Open Corvane to install.")
FOR_GOOD = 0
START = "DeferralWatcher: Started"
LOOK = "SelfUpdateScheduler: Started — frequency=weekly, label=quill, firstFire=300s."
NEWS = "SelfUpdateScheduler: Self-update available (0.1.0 -> 2.4). Surfacing to dashboard."


class LostBus(desktop.DesktopTest):
    def setUp(self):
        super().setUp()
        self.keep_labels("quill")
        self.ctl("discover")

    def look_for_its_update(self, policy):
        """Each time it has something to say; any label can stand for its own."""
        starts, looks, news = (len(self.log_lines(text)) for text in (START, LOOK, NEWS))
        self.set_managed({"NotificationPolicy": {"selfUpdateAvailable": policy}})
        self.reaches(START, count=starts + 1)
        self.change_user({"SelfUpdateEnabled": True, "SelfUpdateLabel": "quill",
                          "LastSelfUpdateCheckDate": ago(timedelta(days=60 + looks))})
        self.reaches(LOOK, count=looks + 1)
        self.later(FIRST_TICK)
        self.reaches(NEWS, count=news + 1)

    def notifier(self):
        for process in Path("/proc").iterdir():
            if process.name.isdigit() and sample_mac.executable_of(process.name).endswith("/Corvane Notification"):
                try:
                    if str(self.root).encode() in (process / "environ").read_bytes():
                        return process.name
                except OSError:
                    pass  # it has just ended
        return None

    def shown(self):
        """(title, body, how long it stays)"""
        return [(data[3], data[4], data[7]) for data in self.calls("Notify")]

    def expect_both_roads_to_speak(self):
        self.look_for_its_update("banner")
        self.assertTrue(sample_mac.eventually(self.shown), self.log())
        self.assertEqual(self.shown(), [(*TOAST, -1)])
        self.look_for_its_update("persistent")
        self.assertTrue(sample_mac.eventually(lambda: len(self.shown()) == 2), self.log())
        self.assertEqual(self.shown()[1], (*TOAST, FOR_GOOD))

    def test_it_lives_on_and_speaks_again_on_the_next_bus(self):
        process = self.start()
        self.reaches(START)
        self.expect_both_roads_to_speak()
        self.assertTrue(self.notifier(), "it stays with what it shows")

        self.session.process.kill()
        self.reaches("Corvane: The session bus is gone; links cannot reach this instance any more.")
        self.assertTrue(sample_mac.eventually(lambda: self.notifier() is None), "nothing is shown any more")
        self.look_for_its_update("banner")
        self.reaches("SelfUpdateScheduler: Failed to deliver self-update notification: There is no desktop session to "
                     "show notifications in.")
        # Elsewhere it is not tried; what is to stay has its own program, which finds no session either.
        self.look_for_its_update("persistent")
        self.reaches("CorvaneNotification: ", count=2)
        self.assertIsNone(process.poll())

        self.session = Bus(self, "session")
        self.start_notification_service(self.session)
        self.expect_both_roads_to_speak()


if __name__ == "__main__":
    desktop.main()
