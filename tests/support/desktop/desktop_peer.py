#!/usr/bin/python3
"""A GTK application for the desktop tests: one window with a text field.

It reports on stdout, one JSON object a line:
  {"event": "ready", "pid": ..}       the window became active with the field focused
  {"event": "active", "active": ..}   the window became active or stopped being so
  {"event": "text", "text": ..}       the field's text changed
  {"event": "key", "name": .., "ctrl": .., "shift": ..}   a key went down in the window
  {"event": "clipboard", "targets": [..], "text": .., "png": ..}   answer to "read-clipboard"
  {"event": "grab", "ok": ..}         answer to "grab-keyboard"
and takes commands on stdin, one a line: "read-clipboard", "grab-keyboard",
"ungrab-keyboard", "quit". On exit it reports the field's text once more.
"""
import argparse
import base64
import json
import os
import subprocess
import sys

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, GLib, Gtk  # noqa: E402


def say(**fields):
    sys.stdout.write(json.dumps(fields) + "\n")
    sys.stdout.flush()


class Peer:
    def __init__(self, args):
        self.ready = False
        self.window = Gtk.Window(title=args.title)
        self.window.set_default_size(480, 200)
        self.window.connect("destroy", self.quit)
        self.window.connect("key-press-event", self.on_key)
        if args.textview:
            self.view = Gtk.TextView()
            # Margins as an editor has them, so that text can be read off the screen.
            self.view.set_left_margin(12)
            self.view.set_top_margin(8)
            self.buffer = self.view.get_buffer()
            self.buffer.set_text(args.text)
            self.buffer.connect("changed", self.on_changed)
            self.field = self.view
        else:
            self.field = Gtk.Entry()
            self.field.set_text(args.text)
            self.field.set_visibility(not args.password)
            self.field.connect("changed", self.on_changed)
        self.window.add(self.field)
        self.window.connect("notify::is-active", self.check_ready)
        self.window.connect("notify::is-active",
                            lambda *_: say(event="active", active=self.window.is_active()))
        self.field.connect("focus-in-event", self.check_ready)
        self.window.show_all()
        if args.sandboxed:
            # As in a Flatpak: the window names a process id that is not the
            # one that publishes the accessible tree.
            xid = self.window.get_window().get_xid()
            subprocess.run(["xprop", "-id", str(xid), "-f", "_NET_WM_PID", "32c", "-set",
                            "_NET_WM_PID", "2"], check=True)
        self.field.grab_focus()
        GLib.io_add_watch(sys.stdin.fileno(), GLib.IO_IN | GLib.IO_HUP, self.on_command)

    def text(self):
        if isinstance(self.field, Gtk.TextView):
            start, end = self.buffer.get_bounds()
            return self.buffer.get_text(start, end, True)
        return self.field.get_text()

    def check_ready(self, *_):
        ready = self.window.is_active() and self.field.has_focus()
        if ready and not self.ready:
            say(event="ready", pid=os.getpid())
        self.ready = ready
        return False

    def on_changed(self, *_):
        say(event="text", text=self.text())

    def on_key(self, _widget, event):
        mods = event.state
        say(event="key", name=Gdk.keyval_name(Gdk.keyval_to_lower(event.keyval)),
            ctrl=bool(mods & Gdk.ModifierType.CONTROL_MASK),
            shift=bool(mods & Gdk.ModifierType.SHIFT_MASK))
        return False

    def read_clipboard(self):
        clipboard = Gtk.Clipboard.get(Gdk.SELECTION_CLIPBOARD)
        ok, atoms = clipboard.wait_for_targets()
        targets = sorted(atom.name() for atom in atoms) if ok else []
        png = None
        if "image/png" in targets:
            data = clipboard.wait_for_contents(Gdk.Atom.intern("image/png", False))
            if data is not None:
                png = base64.b64encode(data.get_data()).decode()
        say(event="clipboard", targets=targets, text=clipboard.wait_for_text(), png=png)

    def on_command(self, source, condition):
        line = sys.stdin.readline() if condition & GLib.IO_IN else ""
        command = line.strip()
        if not line or command == "quit":
            self.quit()
            return False
        if command == "read-clipboard":
            self.read_clipboard()
        elif command == "grab-keyboard":
            self.grab_keyboard(attempts=40)
        elif command == "ungrab-keyboard":
            Gdk.Display.get_default().get_default_seat().ungrab()
            Gdk.Display.get_default().flush()
            say(event="grab", ok=False)
        return True

    def grab_keyboard(self, attempts):
        """Grabs as pinentry does: a grab held elsewhere for a moment is tried again."""
        seat = Gdk.Display.get_default().get_default_seat()
        status = seat.grab(self.window.get_window(), Gdk.SeatCapabilities.KEYBOARD, False,
                           None, None, None, None)
        if status != Gdk.GrabStatus.SUCCESS and attempts > 1:
            GLib.timeout_add(50, lambda: self.grab_keyboard(attempts - 1) and False)
            return False
        say(event="grab", ok=status == Gdk.GrabStatus.SUCCESS, status=status.value_nick)
        return False

    def quit(self, *_):
        say(event="exit", text=self.text())
        Gtk.main_quit()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--title", default="Tevra desktop peer")
    parser.add_argument("--wm-class", default="TevraPeer", help="the WM_CLASS class")
    parser.add_argument("--text", default="", help="what the field holds at the start")
    parser.add_argument("--password", action="store_true", help="a password field")
    parser.add_argument("--textview", action="store_true", help="a multi-line text view")
    parser.add_argument("--sandboxed", action="store_true",
                        help="a window whose _NET_WM_PID is not this process")
    args = parser.parse_args()
    GLib.set_prgname(args.wm_class.lower())
    Gdk.set_program_class(args.wm_class)
    Peer(args)
    Gtk.main()


if __name__ == "__main__":
    main()
