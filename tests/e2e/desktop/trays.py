"""The X11 tray as another program sees and replaces it. `name` is the display's."""

import time

from Xlib import X
from Xlib.display import Display
from Xlib.protocol.event import ClientMessage

SELECTION = "_NET_SYSTEM_TRAY_S0"


def isThere(name):
    display = Display(name)
    try:
        return display.get_selection_owner(display.get_atom(SELECTION)) != X.NONE
    finally:
        display.close()


def replace(name, lifetime=0):
    """Becomes the tray for some seconds, in the place of the one that is, and ends."""
    display = Display(name)
    root = display.screen().root
    window = root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
    selection = display.get_atom(SELECTION)
    window.set_selection_owner(selection, X.CurrentTime)
    # A new tray says that it is there.
    data = (32, [X.CurrentTime, selection, window.id, 0, 0])
    announcement = ClientMessage(window=root, client_type=display.get_atom("MANAGER"), data=data)
    root.send_event(announcement, event_mask=X.StructureNotifyMask)
    display.flush()
    end = time.monotonic() + lifetime
    while time.monotonic() < end:
        pass  # a sleep is too coarse
    display.close()
