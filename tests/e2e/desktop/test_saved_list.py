"""What other programs do to the saved list while the application runs."""

import os
import shutil
import threading

from desktop import DesktopTestCase
from pictures import smallPicture
from waiting import PATIENCE, output, waitUntil


class SavedList(DesktopTestCase):
    def setUp(self):
        super().setUp()
        self.a, self.b = str(self.makeFolder("a")), str(self.makeFolder("b"))

    def command(self, *arguments):
        """Runs the headless companion to its end; what it printed, by lines."""
        companion = self.program.with_name("kestrivane-watch")
        return self.run_(companion, *arguments).splitlines()

    def saved(self):
        return self.command("--list")

    def renamePicture(self, folder, name):
        shutil.copyfile(smallPicture(self.base), f"{folder}/{name}.png")
        os.rename(f"{folder}/{name}.png", f"{folder}/{name}.jpg")

    def assertConverts(self, folder, name="photo"):
        """And that nothing else was converted since this was last asked."""
        self.renamePicture(folder, name)
        self.waitForMessages(f"File converted: Success: {name}.png -> {name}.jpg")
        kind = output("file", "--brief", "--mime-type", f"{folder}/{name}.jpg")
        self.assertEqual(kind, "image/jpeg")

    def quit(self):
        self.application.terminate()
        self.waitForEnd()

    def test_the_running_application_follows_the_command(self):
        self.startWithIcon(self.a)
        self.waitUntilWatching(1)
        self.command("--add", self.b)
        self.waitUntilWatching(2)
        self.assertConverts(self.b)
        self.command("--remove", self.a)
        self.waitUntilWatching(1)
        self.renamePicture(self.a, "left")
        self.assertConverts(self.b, "other")
        self.assertEqual(self.saved(), [self.b])
        self.quit()
        self.assertEqual(self.saved(), [self.b])

    def test_the_popover_follows_the_command(self):
        self.command("--add", self.a)
        self.startWithIcon()
        self.waitUntilWatching(1)
        popover = self.open()
        before = self.settledLook(popover)
        self.command("--add", self.b)
        waitUntil(lambda: self.settledLook(popover) != before, "the folder to be shown")
        self.waitUntilWatching(2)
        before = self.settledLook(popover)
        self.command("--remove", self.a)
        waitUntil(lambda: self.settledLook(popover) != before, "the folder to go")
        self.waitUntilWatching(1)
        self.click(popover.x + 317, popover.y + 147)  # the first card's button, now that of b
        self.waitUntilWatching(0)
        waitUntil(lambda: self.saved() == [], "the list to be saved")

    def settledLook(self, popover):
        """The popover once nothing moves in it any more."""
        looks = [b""]

        def isSettled():
            looks.append(self.picture(popover.box()).tobytes())
            return looks[-1] == looks[-2]

        waitUntil(isSettled, "the popover to come to rest")
        return looks[-1]

    def test_neither_loses_what_the_other_adds_and_removes_at_the_same_time(self):
        self.startWithIcon()
        ours = [str(self.makeFolder(f"ours {number}")) for number in range(12)]
        theirs = [str(self.makeFolder(f"theirs {number}")) for number in range(12)]

        def command():
            for folder in theirs:
                self.command("--add", folder)
            for folder in theirs[::2]:
                self.command("--remove", folder)

        adding = threading.Thread(target=command)
        adding.start()
        for folder in ours:
            # A second start hands its folders to the application, which adds and saves them.
            self.assertEqual(self.startProgram(self.program, folder).wait(PATIENCE), 0)
        adding.join()
        expected = ours + theirs[1::2]
        waitUntil(lambda: sorted(self.saved()) == sorted(expected), "the list of both")
        self.waitUntilWatching(len(expected))
        self.assertConverts(ours[-1])
        self.assertConverts(theirs[-1])

    def test_it_says_why_it_cannot_work_on_the_list(self):
        self.configuration.parent.write_text("a file in the place of the folder")
        self.start()
        self.assertEqual(self.application.wait(PATIENCE), 1)
        waitUntil(self.messages, "a notification")
        self.assertIn("defaults.json", self.messages()[0])

    def test_names_of_no_folder_are_passed_over(self):
        self.startWithIcon("", f"{self.base}/nowhere/../a", f"{self.base}/nowhere", self.a)
        self.waitUntilWatching(1)
        self.assertConverts(self.a)

    def test_a_list_that_is_lost_is_no_reason_to_stop_watching(self):
        self.startWithIcon(self.a)
        self.waitUntilWatching(1)
        list_ = self.configuration / "defaults.json"
        list_.write_text("damaged")
        waitUntil(lambda: list(self.configuration.glob("*.damaged-*")), "the file to be set aside")
        self.assertConverts(self.a)
        self.assertEqual(self.startProgram(self.program, self.b).wait(PATIENCE), 0)
        waitUntil(lambda: self.saved() == [self.a, self.b], "the list to be written again")
        self.waitUntilWatching(2)
