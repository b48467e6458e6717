#!/usr/bin/python3
"""Drives a program's windows through the accessibility bus, as a screen reader would.

    atspi_driver.py APP ACTION [ARGS...]

APP is the application's name on the bus (case does not matter). Actions, each
waiting up to ten seconds for what it needs to appear:
  window TITLE          a window of that title is there
  press NAME            the button or check box of that accessible name is pressed
  type NAME TEXT        the editable field of that name gets TEXT
  select LIST ITEM      the list named LIST selects its item named ITEM
  dump                  prints every node: role, name, whether it shows
Prints "ok" and exits 0, or prints why not and exits 1.
"""
import sys
import time
import warnings

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

PRESSABLE = {Atspi.Role.PUSH_BUTTON, Atspi.Role.CHECK_BOX, Atspi.Role.TOGGLE_BUTTON,
             Atspi.Role.RADIO_BUTTON}


def applications(name):
    # An earlier run of the program may linger on the bus for a moment: every
    # application of that name is looked through.
    desktop = Atspi.get_desktop(0)
    found = []
    for i in range(desktop.get_child_count()):
        app = desktop.get_child_at_index(i)
        if app is not None and (app.get_name() or "").lower() == name.lower():
            found.append(app)
    return found


def walk(node, depth=0):
    if node is None or depth > 40:
        return
    yield node
    try:
        count = node.get_child_count()
    except Exception:  # a node that went away while walking
        return
    for i in range(count):
        yield from walk(node.get_child_at_index(i), depth + 1)


def showing(node):
    states = node.get_state_set()
    return states.contains(Atspi.StateType.SHOWING)


def find(app_name, match):
    deadline = time.monotonic() + 10
    while time.monotonic() < deadline:
        for app in applications(app_name):
            for node in walk(app):
                try:
                    if match(node):
                        return node
                except Exception:
                    continue
        time.sleep(0.2)
    return None


def named(name, roles=None):
    def match(node):
        return (node.get_name() == name and showing(node)
                and (roles is None or node.get_role() in roles))
    return match


def do_press(node):
    action = node.get_action_iface()
    if action is None:
        return False
    names = [action.get_action_name(i) for i in range(action.get_n_actions())]
    for wanted in ("Press", "press", "Toggle", "toggle", "click"):
        if wanted in names:
            return action.do_action(names.index(wanted))
    return action.do_action(0) if names else False


def select(owner, child, index):
    # A list may offer the selection itself, or its item an action; else the
    # item is clicked where it is drawn.
    selection = owner.get_selection_iface()
    if selection is not None and selection.select_child(index):
        return True
    if child.get_action_iface() is not None and do_press(child):
        return True
    extents = child.get_extents(Atspi.CoordType.SCREEN)
    return Atspi.generate_mouse_event(extents.x + extents.width // 2,
                                      extents.y + extents.height // 2, "b1c")


def main():
    warnings.simplefilter("ignore", DeprecationWarning)
    Atspi.init()
    app, command, args = sys.argv[1], sys.argv[2], sys.argv[3:]
    if command == "window":
        # A top-level window is a child of the application, whatever its role.
        found = find(app, lambda n: n.get_name() == args[0] and showing(n)
                     and n.get_parent().get_role() == Atspi.Role.APPLICATION)
        ok = found is not None
    elif command == "press":
        found = find(app, named(args[0], PRESSABLE))
        ok = found is not None and do_press(found)
    elif command == "type":
        found = find(app, lambda n: n.get_name() == args[0] and showing(n)
                     and n.get_editable_text_iface() is not None)
        ok = found is not None and found.get_editable_text_iface().set_text_contents(args[1])
    elif command == "select":
        found = find(app, named(args[0], {Atspi.Role.LIST, Atspi.Role.LIST_BOX,
                                          Atspi.Role.TABLE, Atspi.Role.TREE}))
        ok = False
        if found is not None:
            for i in range(found.get_child_count()):
                child = found.get_child_at_index(i)
                if child is not None and child.get_name() == args[1]:
                    ok = select(found, child, i)
                    break
    elif command == "dump":
        for node in (n for a in applications(app) for n in walk(a)):
            print(node.get_role_name(), repr(node.get_name()), showing(node))
        return 0
    else:
        print(f"unknown action {command}")
        return 2
    print("ok" if ok else f"{command} {args}: not found or not done")
    return 0 if ok else 1


if __name__ == "__main__":
    sys.exit(main())
