"""A real notification daemon, dunst, on the desktop of a test."""

import html
import json
import subprocess

from waiting import waitUntil

# Notifications stay until they are clicked on: the left button chooses, the right one closes. They
# are drawn large enough to be hit anywhere.
CONFIGURATION = """
[global]
width = 300
height = 200
origin = bottom-left
offset = 20x20
font = Sans 10
markup = full
format = "<b>%s</b>\\n%b"
history_length = 100
mouse_left_click = do_action, close_current
mouse_right_click = close_current
[urgency_normal]
timeout = 0
"""


class Dunst:
    """A running dunst; ends with the test."""

    def __init__(self, test):
        self.test_ = test
        configuration = test.base / "dunstrc"
        configuration.write_text(CONFIGURATION)
        test.startProgram("dunst", "-conf", configuration, stderr=subprocess.DEVNULL)
        waitUntil(self.isRunning_, "dunst on the bus")

    def isRunning_(self):
        answer = subprocess.run(
            ["dunstctl", "is-paused"], env=self.test_.environment, capture_output=True
        )
        return answer.returncode == 0

    def displayed(self):
        """How many notifications are on the screen."""
        return int(self.test_.run_("dunstctl", "count", "displayed"))

    def waitForDisplayed(self, count):
        waitUntil(lambda: self.displayed() == count, f"{count} notifications on the screen")

    def takeDisplayed(self):
        """Closes what is on the screen and returns "TITLE: BODY" of each, the oldest first."""
        shown = self.displayed()
        self.test_.run_("dunstctl", "close-all")
        self.waitForDisplayed(0)
        history = json.loads(self.test_.run_("dunstctl", "history"))["data"][0]
        # The newest stands first. Bodies are markup, titles are plain text.
        return [
            f"{each['summary']['data']}: {html.unescape(each['body']['data'])}"
            for each in history[:shown][::-1]
        ]

    def click(self, button=1):
        """Clicks on the notification at the top of those that are shown."""
        windows = self.test_.run_("xdotool", "search", "--onlyvisible", "--class", "Dunst").split()
        self.test_.pointer("mousemove", "--window", windows[0], 40, 20, "click", button)
