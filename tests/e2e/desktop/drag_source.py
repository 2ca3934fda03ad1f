"""A window that files can be dragged from, for tests.

    drag_source.py FILE|ADDRESS...

Prints "ready" when it can be dragged from, "dragging" when a drag has begun, "welcome" and
"unwelcome" when the window below the pointer begins and ends to accept it, and "dropped" or
"refused" when it is over.
"""

import pathlib
import sys

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk  # noqa: E402


def say(word):
    print(word, flush=True)


def main(*files):
    addresses = [file if "://" in file else pathlib.Path(file).as_uri() for file in files]
    window = Gtk.Window(type=Gtk.WindowType.POPUP)
    window.move(0, 500)
    window.set_default_size(200, 200)
    surface = Gtk.EventBox()
    window.add(surface)

    surface.drag_source_set(Gdk.ModifierType.BUTTON1_MASK, [], Gdk.DragAction.COPY)
    surface.drag_source_add_uri_targets()
    outcome = {}

    def begin(_widget, context):
        outcome["word"] = "dropped"
        # What is dragged is shown beside the pointer, so that it covers nothing of what is below it.
        Gtk.drag_set_icon_name(context, "folder", 100, -100)
        say("dragging")
        context.connect("action-changed", change)

    def change(_context, action):
        say("welcome" if action else "unwelcome")

    def provide(_widget, _context, data, _info, _time):
        data.set_uris(addresses)

    def fail(*_):
        outcome["word"] = "refused"
        return True

    surface.connect("drag-begin", begin)
    surface.connect("drag-data-get", provide)
    surface.connect("drag-failed", fail)
    surface.connect("drag-end", lambda *_: say(outcome["word"]))
    window.connect("map-event", lambda *_: say("ready"))
    surface.add_events(Gdk.EventMask.BUTTON_PRESS_MASK)
    window.show_all()
    Gtk.main()


if __name__ == "__main__":
    main(*sys.argv[1:])
