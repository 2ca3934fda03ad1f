"""The offer of a newer version, from a feed on loopback."""

import functools
import http.server
import threading

import dbus.bus
from desktop import DesktopTestCase
from waiting import waitUntil

DAEMON = "/usr/lib/notification-daemon/notification-daemon"

# Buttons are found by their colour.
BUTTON = (255, 0, 255)
STYLE = "button { background: rgb(%d, %d, %d); border: none; box-shadow: none; }" % BUTTON

ARCHIVE = b"archive"
# Of the archive, by the key that the application was built with: see CMakeLists.txt in the folder above.
SIGNATURE = (
    "VsiyBrSHh8+LnmdmqPomPXhDqH6DcHMQW8e8YIKcJape9f+HadXSUx6xVF9skp8hUW7tpr79tdbLnuwrnULLDg=="
)

FEED = """<rss xmlns:u="http://www.andymatuschak.org/xml-namespaces/sparkle"><channel><item>
<u:version>2.0</u:version>
<enclosure u:os="linux" url="{address}/kestrivane-2.0.tar.gz" length="7" u:edSignature="{signature}"/>
</item></channel></rss>"""

# Stands in for the desktop's opener, and notes what it is to open.
OPENER = """#!/bin/sh
printf '%s\\n' "$@" >> "$HOME/opened"
"""


class Feed(http.server.BaseHTTPRequestHandler):
    """Answers requests, and notes them in `requests`."""

    def __init__(self, requests, *arguments):
        self.requests_ = requests
        super().__init__(*arguments)

    def do_GET(self):
        self.requests_.append(self.path)
        address = "http://%s:%d" % self.server.server_address
        feed = FEED.format(address=address, signature=SIGNATURE).encode()
        body = {"/feed": feed, "/kestrivane-2.0.tar.gz": ARCHIVE}.get(self.path)
        if body is None:
            return self.send_error(404)
        self.send_response(200)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, *_):
        pass


class FeedTestCase(DesktopTestCase):
    """Runs the feed, and an application that looks there."""

    def setUp(self):
        super().setUp()
        self.requests = []
        server = http.server.ThreadingHTTPServer(
            ("127.0.0.1", 0), functools.partial(Feed, self.requests)
        )
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.environment["KESTRIVANE_FEED"] = "http://127.0.0.1:%d/feed" % server.server_port

        opener = self.makeFolder("bin") / "xdg-open"
        opener.write_text(OPENER)
        opener.chmod(0o755)
        self.environment["PATH"] = f"{opener.parent}:{self.environment['PATH']}"
        self.downloads = self.makeFolder("Downloads")

        self.program = self.program.with_name("kestrivane-with-feed")
        self.environment["RESOURCE_NAME"] = "kestrivane"  # of its windows

    def opened(self):
        file = self.base / "opened"
        return file.read_text().splitlines() if file.exists() else []

    def check(self):
        """Clicks on the button that looks for newer versions."""
        popover = self.open()
        self.click(popover.x + 287, popover.y + 484)


class WithNotifications(FeedTestCase):
    """With a notification daemon that draws buttons."""

    def startNotifications(self):
        style = self.base / ".config" / "gtk-3.0"
        style.mkdir(parents=True)
        (style / "gtk.css").write_text(STYLE)
        self.startProgram(DAEMON)
        bus = dbus.bus.BusConnection(self.bus.address)
        self.addCleanup(bus.close)
        waitUntil(lambda: bus.name_has_owner("org.freedesktop.Notifications"), "the daemon")

    def buttons(self):
        """The middles of the rows of buttons on the screen, from above."""
        picture = self.picture()
        width = picture.width
        mask = picture.getdata()
        places = [(i % width, i // width) for i, pixel in enumerate(mask) if pixel == BUTTON]
        rows = []
        for x, y in places:
            if not rows or y > rows[-1][-1][1] + 1:
                rows.append([])
            rows[-1].append((x, y))
        return [row[len(row) // 2] for row in rows]

    def waitForOffer(self):
        """Waits for one notification, and returns where its closing and its other button are."""
        waitUntil(lambda: len(self.buttons()) == 2, "a notification with two buttons")
        self.still()  # it may still be moving to its place
        return self.buttons()

    def test_a_newer_version_is_fetched_and_opened_only_if_the_user_says_so(self):
        self.startWithIcon()
        self.check()
        later, _ = self.waitForOffer()
        self.click(*later)
        waitUntil(lambda: not self.buttons(), "the notification to close")
        # It may have lain over the popover.
        self.click(200, 700)
        self.waitUntilClosed()
        self.assertEqual(self.requests, ["/feed"], "nothing but the feed was fetched")

        self.check()
        _, download = self.waitForOffer()
        self.assertEqual(self.requests, ["/feed", "/feed"])
        self.assertEqual(list(self.downloads.iterdir()), [])
        self.click(*download)
        archive = self.downloads / "kestrivane-2.0.tar.gz"
        waitUntil(archive.exists, "the download")
        self.assertEqual(archive.read_bytes(), ARCHIVE)
        self.assertEqual(self.requests, ["/feed", "/feed", "/kestrivane-2.0.tar.gz"])
        self.assertEqual(self.opened(), [], "it is not opened unasked")

        def isOpened():
            buttons = self.buttons()
            if len(buttons) == 2:
                self.click(*buttons[1])
            return self.opened()

        waitUntil(isOpened, "the opener")
        self.assertEqual(self.opened(), [archive.as_uri()])
        self.assertEqual(list(self.downloads.iterdir()), [archive])


class WithDialogues(FeedTestCase):
    def dialogue(self):
        shown = self.windows("kestrivane-ask")
        return shown[0] if shown else None

    def answer(self, *keys):
        """Presses keys in the dialogue, which comes and goes."""
        waitUntil(self.dialogue, "the dialogue")
        self.pointer("windowfocus", "--sync", self.dialogue().identifier)
        self.press(*keys)

    def checkAnswers(self):
        self.startWithIcon()
        self.check()
        self.answer("Return")
        waitUntil(lambda: self.dialogue() is None, "the dialogue to close")
        self.assertEqual(self.requests, ["/feed"], "nothing but the feed was fetched")

        self.click(200, 700)
        self.waitUntilClosed()
        self.check()
        self.answer("Tab", "space")
        archive = self.downloads / "kestrivane-2.0.tar.gz"
        waitUntil(archive.exists, "the download")
        waitUntil(lambda: self.requests[2:] == ["/kestrivane-2.0.tar.gz"], "one download")
        self.assertEqual(archive.read_bytes(), ARCHIVE)
        self.assertEqual(self.opened(), [], "it is not opened unasked")


class WithoutNotifications(WithDialogues):
    def startNotifications(self):
        pass

    def test_a_dialogue_offers_a_newer_version(self):
        self.checkAnswers()

    def test_a_dialogue_says_that_the_feed_cannot_be_read(self):
        self.environment["KESTRIVANE_FEED"] += "-elsewhere"
        self.startWithIcon()
        self.check()
        self.answer("Return")
        waitUntil(lambda: self.dialogue() is None, "the dialogue to close")
        self.assertEqual(self.requests, ["/feed-elsewhere"])


class WithNotificationsWithoutButtons(WithDialogues):
    def test_a_dialogue_offers_a_newer_version(self):
        self.checkAnswers()
        self.assertEqual(self.messages(), [])
