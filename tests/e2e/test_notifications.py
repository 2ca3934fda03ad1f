"""The desktop's notification service, present, absent, slow and dying, on a bus of the test's own."""

import signal

from harness import WatchTestCase, success
from pictures import smallPicture
from session_bus import Service, SessionBus
from waiting import PATIENCE, waitUntil


class Notifications(WatchTestCase):
    def setUp(self):
        super().setUp()
        self.bus = SessionBus(self.base)
        self.addCleanup(self.bus.kill)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = self.bus.address
        for number in range(1, 4):
            self.put(smallPicture(self.base), f"{number}.png")

    def startService(self, seconds=0, capabilities=("body", "body-markup")):
        service = Service(self.environment, seconds, capabilities)
        self.addCleanup(service.kill)
        return service

    def convert(self, number):
        self.rename(f"{number}.png", f"{number}.jpg")
        self.watch.waitForLine(success(f"{number}.png", f"{number}.jpg"))

    def shown(self, number):
        return {
            "application": "Kestrivane",
            "title": "File converted",
            "body": f"Success: {number}.png -&gt; {number}.jpg",
        }

    def test_a_conversion_is_shown_on_the_desktop(self):
        service = self.startService()
        self.start()
        self.convert(1)
        waitUntil(lambda: service.notifications, "a notification on the desktop")
        self.assertEqual(service.notifications, [self.shown(1)])

    def test_a_name_is_not_taken_for_markup(self):
        service = self.startService()
        self.put(smallPicture(self.base), "<b>&.png")
        self.start()
        self.rename("<b>&.png", "<b>&.jpg")
        waitUntil(lambda: service.notifications, "a notification on the desktop")
        self.assertEqual(
            service.notifications[0]["body"],
            "Success: &lt;b&gt;&amp;.png -&gt; &lt;b&gt;&amp;.jpg",
        )

    def test_a_service_without_markup_gets_plain_text(self):
        service = self.startService(capabilities=["body"])
        self.start()
        self.convert(1)
        waitUntil(lambda: service.notifications, "a notification on the desktop")
        self.assertEqual(service.notifications[0]["body"], "Success: 1.png -> 1.jpg")

    def test_an_absent_service_hinders_nothing(self):
        self.start()
        for number in (1, 2, 3):
            self.convert(number)

    def test_a_bus_that_is_not_there_hinders_nothing(self):
        self.bus.kill()
        self.start()
        for number in (1, 2, 3):
            self.convert(number)

    def test_a_slow_service_hinders_nothing(self):
        service = self.startService(seconds=10 * PATIENCE)
        self.start()
        for number in (1, 2, 3):
            self.convert(number)
        waitUntil(lambda: service.notifications, "a notification on the desktop")
        self.stop()

    def test_a_service_that_hangs_hinders_nothing(self):
        service = self.startService()
        service.process.send_signal(signal.SIGSTOP)
        self.start()
        for number in (1, 2, 3):
            self.convert(number)
        self.stop()

    def test_a_service_that_dies_hinders_nothing_and_is_used_again_when_it_is_back(self):
        service = self.startService()
        self.start()
        self.convert(1)
        waitUntil(lambda: service.notifications, "a notification on the desktop")
        service.kill()
        self.convert(2)
        returned = self.startService()
        self.convert(3)
        waitUntil(
            lambda: self.shown(3) in returned.notifications, "a notification on the new service"
        )

    def test_a_bus_that_dies_hinders_nothing(self):
        self.startService()
        self.start()
        self.convert(1)
        self.bus.kill()
        self.convert(2)
        self.convert(3)
        self.stop()
