"""Becomes the tray for windows in the place of the one that is, or comes, and goes: for tests."""

import pathlib
import sys

from Xlib import X
from Xlib.display import Display
from Xlib.protocol.event import ClientMessage

sys.path.append(str(pathlib.Path(__file__).resolve().parent.parent))
from waiting import waitUntil  # noqa: E402

display = Display()
root = display.screen().root
window = root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
selection = display.get_atom("_NET_SYSTEM_TRAY_S0")
waitUntil(lambda: display.get_selection_owner(selection) != X.NONE, "a tray for windows")
window.set_selection_owner(selection, X.CurrentTime)
# A new tray says that it is there.
data = (32, [X.CurrentTime, selection, window.id, 0, 0])
announcement = ClientMessage(window=root, client_type=display.get_atom("MANAGER"), data=data)
root.send_event(announcement, event_mask=X.StructureNotifyMask)
display.sync()
