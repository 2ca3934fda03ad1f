"""Stopping the program: conversions in flight finish, and nothing is left half written."""

import signal

from harness import WatchTestCase, success
from pictures import LARGE, largePicture


class Interruption(WatchTestCase):
    def assertConversionFinishes(self, number):
        self.put(largePicture(self.base), "large.png")
        self.start()
        self.rename("large.png", "large.heic")
        self.waitForTemporaryFile()
        self.stop(number)
        self.assertEqual(self.watch.notifications(), [success("large.png", "large.heic")])
        self.assertPicture("large.heic", "heic", LARGE)

    def test_an_interrupt_lets_a_conversion_finish(self):
        self.assertConversionFinishes(signal.SIGINT)

    def test_a_request_to_end_lets_a_conversion_finish(self):
        self.assertConversionFinishes(signal.SIGTERM)

    def test_an_idle_program_ends_on_an_interrupt(self):
        self.start()
        self.stop(signal.SIGINT)
        self.assertEqual(self.watch.lines, [f"watching {self.folder}"])
