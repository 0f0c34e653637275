"""Drives Corvane on an X server as a keyboard and screen-reader user would (inside a D-Bus
session): screenreader.py CORVANE HOME URL starts the program, clicks into the quick-add box, types
URL and Enter, then prints "panel|<name>|<description>" for each label of the status bar and
"row|<name>" for the download's row, and ends the program with SIGTERM, which saves its lists.
"""
import os
import signal
import subprocess
import sys
import time

import pyatspi

program, home, url = sys.argv[1:4]
corvane = subprocess.Popen([program, "--home", home],
                           env=dict(os.environ, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1"))


def application():
    for app in pyatspi.Registry.getDesktop(0):
        if app is not None and app.name == "corvane":
            return app
    return None


def nodes(node):
    yield node
    for child in node:
        if child is not None:
            yield from nodes(child)


def first(predicate, seconds=20):
    deadline = time.time() + seconds
    while time.time() < deadline:
        app = application()
        if app is not None:
            for node in nodes(app):
                try:
                    if predicate(node):
                        return node
                except Exception:  # a node that went away while it was read
                    pass
        time.sleep(0.3)
    return None


try:
    box = first(lambda n: n.getRoleName() == "combo box" and
                n.getState().contains(pyatspi.STATE_SHOWING))
    if box is None:
        sys.exit("no quick-add box")
    x, y, width, height = box.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    subprocess.run(["xdotool", "mousemove", str(x + width // 2), str(y + height // 2),
                    "click", "1"], check=True)
    subprocess.run(["xdotool", "type", "--delay", "20", url], check=True)
    subprocess.run(["xdotool", "key", "Return"], check=True)
    row = first(lambda n: n.getRoleName() == "label" and n.name == url)
    if row is not None:
        print("row|" + row.name)
    status = first(lambda n: n.getRoleName() == "status bar" and
                   any(c is not None and c.description == "Mensajes" for c in n))
    for label in (status or []):
        if label is not None and label.getRoleName() == "label":
            print("panel|%s|%s" % (label.name, label.description))
    sys.stdout.flush()
finally:
    corvane.send_signal(signal.SIGTERM)
    corvane.wait(timeout=20)
