"""The window of another program, for tests: white, and as large as the screen.

Prints "ready" when it is shown.
"""

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk  # noqa: E402

style = Gtk.CssProvider()
style.load_from_data(b"window { background: white; }")
Gtk.StyleContext.add_provider_for_screen(
    Gdk.Screen.get_default(), style, Gtk.STYLE_PROVIDER_PRIORITY_USER
)
window = Gtk.Window()
window.set_decorated(False)
window.maximize()
window.connect("map-event", lambda *_: print("ready", flush=True))
window.show()
Gtk.main()
