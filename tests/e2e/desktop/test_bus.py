"""What the application does with services of the desktop on the session bus."""

import signal
import subprocess
import time

import dbus.bus
import trays
from desktop import DesktopTestCase
from PIL import ImageStat
from waiting import waitUntil

# What org.freedesktop.appearance color-scheme may be.
NO_PREFERENCE, DARK, LIGHT = 0, 1, 2


class Bus(DesktopTestCase):
    def connect(self):
        bus = dbus.bus.BusConnection(self.bus.address)
        self.addCleanup(bus.close)
        return bus

    def test_without_an_icon_tray_a_panel_gets_an_item_with_a_menu(self):
        panel = self.startService("watcher")
        self.start()
        name = panel.stdout.readline().strip()
        bus = self.connect()
        item = bus.get_object(name, "/StatusNotifierItem")
        properties = item.GetAll("org.kde.StatusNotifierItem", dbus_interface=dbus.PROPERTIES_IFACE)
        self.assertEqual(properties["Status"], "Active")
        self.assertEqual(properties["Title"], "Kestrivane")
        width, height, pixels = properties["IconPixmap"][0]
        self.assertEqual(len(pixels), width * height * 4)
        self.assertGreater(len(set(pixels[::4])), 2, "opaque and transparent pixels")

        item.Activate(0, 0, dbus_interface="org.kde.StatusNotifierItem")
        self.waitForPopover()
        item.Activate(0, 0, dbus_interface="org.kde.StatusNotifierItem")
        self.waitUntilClosed()

        menu = bus.get_object(name, properties["Menu"])
        layout = menu.GetLayout(0, -1, [], dbus_interface="com.canonical.dbusmenu")[1]
        entries = {str(entry[1]["label"]): entry[0] for entry in layout[2]}
        self.assertEqual(list(entries), ["Open Kestrivane", "Quit"])
        choose = lambda label: menu.Event(  # noqa: E731
            entries[label], "clicked", "", dbus.UInt32(0), dbus_interface="com.canonical.dbusmenu"
        )
        choose("Open Kestrivane")
        self.waitForPopover()

        # A tray with icons is preferred, as only windows take drops.
        tray = self.startTray()
        self.waitForIcon()
        waitUntil(lambda: not bus.name_has_owner(name), "the item to go")
        self.end(tray)
        self.assertEqual(panel.stdout.readline().strip(), name, "the item comes back")
        waitUntil(lambda: bus.name_has_owner(name), "the item")
        choose("Quit")
        self.waitForEnd()

    def test_a_click_counts_once_when_the_bus_tells_of_it_before_the_display_does(self):
        panel = self.startService("watcher")
        self.start()
        name = panel.stdout.readline().strip()
        bus = self.connect()
        item = bus.get_object(name, "/StatusNotifierItem", introspect=False)

        def clickOnBusyProgram():
            """A click that the program hears of by both ways at once."""
            self.application.send_signal(signal.SIGSTOP)
            self.click(10, 10)
            item.Activate(10, 10, dbus_interface="org.kde.StatusNotifierItem", ignore_reply=True)
            bus.list_names()  # now the bus has handed it over
            self.application.send_signal(signal.SIGCONT)

        for _ in range(5):
            clickOnBusyProgram()
            self.waitForPopover()
            self.still()
            self.assertIsNotNone(self.popover(), "the popover stays open")
            clickOnBusyProgram()
            self.waitUntilClosed()
            self.still()
            self.assertIsNone(self.popover(), "the popover stays closed")
            clickOnBusyProgram()
            self.waitForPopover()
            self.click(500, 700)
            self.waitUntilClosed()

    def test_an_item_is_opened_by_key_or_bus_after_a_click_elsewhere_has_closed_the_popover(self):
        panel = self.startService("watcher")
        self.start()
        item = self.connect().get_object(panel.stdout.readline().strip(), "/StatusNotifierItem")
        activate = lambda: item.Activate(0, 0, dbus_interface="org.kde.StatusNotifierItem")  # noqa: E731
        for _ in range(2):
            activate()
            self.waitForPopover()
            self.click(500, 700)
            self.waitUntilClosed()
            # Later than a panel could still tell of that click.
            time.sleep(1.2)

    def test_every_button_on_an_item_opens_and_closes_the_popover(self):
        panel = self.startService("watcher")
        self.start()
        item = self.connect().get_object(panel.stdout.readline().strip(), "/StatusNotifierItem")
        # Left, middle and right; panels that show the menu themselves do not tell of the last.
        for click in ("Activate", "SecondaryActivate", "ContextMenu"):
            item.get_dbus_method(click, "org.kde.StatusNotifierItem")(0, 0)
            self.waitForPopover()
            item.get_dbus_method(click, "org.kde.StatusNotifierItem")(0, 0)
            self.waitUntilClosed()

    def test_trays_that_go_at_once_leave_the_item_in_the_panel(self):
        panel = self.startService("watcher")
        self.start()
        panel.stdout.readline()
        bus = self.connect()

        def isInPanel():
            isInTray = self.icon() is not None
            return not isInTray and any("StatusNotifierItem-" in name for name in bus.list_names())

        for _ in range(30):
            # About as long as the application takes to find it.
            trays.replace(self.environment["DISPLAY"], lifetime=0.0003)
            waitUntil(isInPanel, "the item, and no window that waits for a tray")

    def test_a_build_without_a_feed_says_where_updates_come_from(self):
        self.startWithIcon()
        popover = self.open()
        self.click(popover.x + 287, popover.y + 484)
        self.waitForMessages("Kestrivane: Updates come from your system's package manager.")

    def startSettings(self, scheme):
        """Starts a portal with this color-scheme; returns a function that chooses another one."""
        self.startService("settings", str(scheme))
        portal = self.connect().get_object(
            "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop"
        )
        return lambda scheme: portal.Choose(scheme, dbus_interface="test.Settings")

    def test_the_popover_is_as_dark_as_the_user_wants_the_desktop(self):
        choose = self.startSettings(DARK)
        self.startWithIcon()
        popover = self.open()
        isDark = lambda: sum(ImageStat.Stat(self.picture(popover.box())).mean) < 3 * 128  # noqa: E731
        waitUntil(isDark, "a dark popover")
        for scheme in (LIGHT, DARK, NO_PREFERENCE):
            choose(scheme)
            waitUntil(lambda: isDark() == (scheme == DARK), f"the appearance of {scheme}")

    def test_the_item_of_a_panel_is_light_on_a_dark_desktop(self):
        choose = self.startSettings(DARK)
        panel = self.startService("watcher")
        self.start()
        item = self.connect().get_object(panel.stdout.readline().strip(), "/StatusNotifierItem")

        def isLight():
            _, _, pixels = item.Get(
                "org.kde.StatusNotifierItem", "IconPixmap", dbus_interface=dbus.PROPERTIES_IFACE
            )[0]
            opaque = [pixels[at + 1] for at in range(0, len(pixels), 4) if pixels[at] == 255]
            return min(opaque) > 128

        waitUntil(isLight, "a light icon")
        choose(LIGHT)
        waitUntil(lambda: not isLight(), "a dark icon")

    def test_folders_are_chosen_in_the_portals_dialogue(self):
        first, second = self.makeFolder("first folder"), self.makeFolder("второй")
        portal = self.startService("portal", first, second)
        self.startWithIcon()
        self.open()
        self.press("Tab", "Tab", "space")
        self.assertEqual(portal.stdout.readline(), "Add folders 1 1\n")
        self.waitUntilWatching(2)

    def test_a_cancelled_dialogue_changes_nothing(self):
        portal = self.startService("portal")
        self.environment["LC_ALL"] = "ru_RU.UTF-8"
        self.startWithIcon()
        self.open()
        self.press("Tab", "Tab", "space")
        self.assertEqual(portal.stdout.readline(), "Добавить папки 1 1\n")
        self.press("space")  # again: the first one is over
        self.assertEqual(portal.stdout.readline(), "Добавить папки 1 1\n")
        self.assertEqual(self.watchedDirectories(), 0)
        self.assertFalse((self.configuration / "defaults.json").exists())

    def test_without_a_portal_a_dialogue_of_our_own_chooses(self):
        self.makeFolder("chosen")
        self.startWithIcon()
        self.open()
        self.press("Tab", "Tab", "space")
        search = ["xdotool", "search", "--onlyvisible", "--class", "kestrivane-choose-folders"]

        def dialogue():
            found = subprocess.run(
                search, env=self.environment, capture_output=True, text=True
            ).stdout.split()
            return found[0] if found else None

        waitUntil(dialogue, "the dialogue")
        self.pointer("windowfocus", "--sync", dialogue())
        self.pointer("type", "--delay", 1, str(self.base / "chosen"))
        self.press("Return")
        self.waitUntilWatching(1)
