#!/usr/bin/python3
"""Progress windows as a screen reader meets them: a live helper on a private Xvfb with a window
manager, read and pressed through AT-SPI under a session bus of its own, while a test console
stands for the user's application and keeps the focus. Usage: a11y_test.py QEM_UTIL QEM_CHANNEL;
exits 0 passed, 1 failed, 77 skipped (something it needs is not installed)."""

import ctypes
import fcntl
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time

try:
    import pyatspi
    from gi.repository import Atspi, GLib
except ImportError:
    print("python3-pyatspi is not installed (scripts/install-deps installs it)")
    sys.exit(77)
MISSING = [p for p in ("dbus-run-session", "Xvfb", "openbox", "xdotool") if not shutil.which(p)]
if MISSING:
    print(f"{MISSING[0]} is not installed (scripts/install-deps installs it)")
    sys.exit(77)
if "QEM_A11Y_OWN_BUS" not in os.environ:
    os.environ["QEM_A11Y_OWN_BUS"] = "1"
    os.execvp("dbus-run-session", ["dbus-run-session", "--", sys.executable, *sys.argv])

HELPER, CHANNEL = sys.argv[1:3]
LIMIT = 30  # seconds for anything to happen; generous for a slow machine
NAME, VALUE = "object:property-change:accessible-name", "object:property-change:accessible-value"
SHOWING = "object:state-changed:showing"
LIBC = ctypes.CDLL(None)
children, events = [], []


def start(*argv, stdout=subprocess.DEVNULL):
    """A child that ends with this script, however the script ends."""
    children.append(subprocess.Popen(argv, stdout=stdout, stderr=subprocess.DEVNULL,
                                     preexec_fn=lambda: LIBC.prctl(1, signal.SIGTERM)))
    return children[-1]


def wait_for(what, condition):
    """Takes in AT-SPI events until condition() gives a true value, and gives that."""
    deadline = time.monotonic() + LIMIT
    while time.monotonic() < deadline:
        while GLib.MainContext.default().iteration(False):
            pass
        result = condition()
        if result:
            return result
        time.sleep(0.02)
    raise AssertionError(f"waited {LIMIT} s for {what}")


def output(*argv):
    return subprocess.run(argv, capture_output=True, text=True, check=False).stdout.strip()


def active():
    return output("xdotool", "getactivewindow", "getwindowname")


def send(obj_id, cmd, **keys):
    message = json.dumps({"obj_id": obj_id, "cmd": cmd, "type": "wprogress", **keys})
    subprocess.run([CHANNEL, "send", "cmd", message], check=True)


def expect_reply(btn_id):
    reply = output(CHANNEL, "receive", "rep", "--count", "1", "--timeout", str(LIMIT))
    assert reply == f'{{"obj_id":"p1","cmd":"pressed","btn_id":"{btn_id}"}}', f"replied {reply}"


def buttons(*captions):
    return [{"id": caption.lower(), "text": caption} for caption in captions]


def describe(frame):
    """The window and what it holds, in one line: roles, names, and a bar's state and value."""
    def one(node):
        text = f"{node.getRoleName()} '{node.name}'"
        if node.getRole() == pyatspi.ROLE_PROGRESS_BAR:
            busy = " busy" if node.getState().contains(pyatspi.STATE_BUSY) else ""
            value = node.queryValue()
            text += f"{busy} {value.currentValue:g} of {value.maximumValue:g}"
        return text
    return " | ".join([one(frame)] + [one(child) for child in frame])


def check(app, what, window, expected, wanted, focus="qem_util_test"):
    """Waits until the window reads as expected (None: is not on the screen) and the wanted
    events (kind, role of the source, detail) came; the focus stays where it was."""
    def showing():
        return next((w for w in app if w.name == window
                     and w.getState().contains(pyatspi.STATE_SHOWING)), None)

    def reads():  # in a list: a window without children counts as false
        frame = showing()
        if expected is None:
            return [None] if frame is None else None
        return [frame] if frame is not None and describe(frame) == expected else None
    try:
        frame = wait_for(what, reads)[0]
        for kind, role, detail in wanted:
            wait_for(f"{what}: {kind} {detail} from a {role}", lambda: any(
                e.type == kind and e.source.getRoleName() == role and e.detail1 == detail
                for e in events))
    except AssertionError:
        print(describe(showing()) if showing() else f"no window '{window}' showing")
        print("events:", [(e.type, e.source.getRoleName(), e.detail1) for e in events])
        raise
    assert active() == focus, f"{what}: the focus went to {active()}"
    events.clear()
    return frame


def run(root):
    os.environ.update(HOME=root, XDG_CONFIG_HOME=root, TMPDIR=root, QT_QPA_PLATFORM="xcb",
                      QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
    xvfb = start("Xvfb", "-displayfd", "1", "-nolisten", "tcp", stdout=subprocess.PIPE)
    os.environ["DISPLAY"] = ":" + xvfb.stdout.readline().decode().strip()
    start("openbox")
    # The accessibility bus first, so that the helper finds it when it starts.
    desktop = pyatspi.Registry.getDesktop(0)
    pyatspi.Registry.registerEventListener(events.append, NAME, VALUE, SHOWING)
    start(HELPER, "--test=true")
    # The user's application has the focus to begin with: a window mapped before the window
    # manager was up is given it here.
    wait_for("the console to have the focus", lambda: output(
        "xdotool", "search", "--name", "^qem_util_test$", "windowactivate", "--sync",
        "getactivewindow", "getwindowname") == "qem_util_test")
    alive = os.open(f"{root}/alive", os.O_RDWR | os.O_CREAT, 0o600)
    fcntl.flock(alive, fcntl.LOCK_EX)
    helper = start(HELPER, "--stay-alive-key=alive", "--channel=cmd", "--reply-channel=rep",
                   "--launch-key=up")
    app = wait_for("the helper on the accessibility bus", lambda: [
        a for a in desktop if a is not None and a.get_process_id() == helper.pid])[0]
    app.set_cache_mask(Atspi.Cache.NONE)  # every read asks the helper afresh

    buttons_below = " | push button 'Pause' | push button 'Stop'"
    send("p1", "create", style=3, title="Backup", message="Copying", progress=0.25,
         btn_spec=buttons("Stop", "Pause"))
    check(app, "a window with a message, a bar and two buttons", "Backup",
          "frame 'Backup' | label 'Copying' | progress bar 'Copying' 250 of 1000" + buttons_below,
          [(SHOWING, "frame", 1)])
    send("p1", "set", progress=-1)
    check(app, "the bar turned busy", "Backup",
          "frame 'Backup' | label 'Copying' | progress bar 'Copying' busy 0 of 0" + buttons_below,
          [(VALUE, "progress bar", 0)])
    send("p1", "set", title="Backup 2", message="Verifying", progress=0.5)
    below = "frame 'Backup 2' | label 'Verifying' | progress bar 'Verifying' 500 of 1000"
    check(app, "a new title, message and value", "Backup 2", below + buttons_below,
          [(NAME, "frame", 0), (NAME, "label", 0), (NAME, "progress bar", 0),
           (VALUE, "progress bar", 0)])
    send("p1", "push", style=1, title="File exists", message="Replace it?",
         btn_spec=buttons("Yes", "No", "Skip"))
    question = check(app, "a question pushed on top", "File exists",
                     "frame 'File exists' | label 'Replace it?' | push button 'Skip' | "
                     "push button 'No' | push button 'Yes'",
                     [(NAME, "frame", 0), (NAME, "label", 0), (SHOWING, "push button", 1)])
    action = question.getChildAtIndex(2).queryAction()
    action.doAction(next(i for i in range(action.nActions) if action.getName(i) == "Press"))
    expect_reply("no")
    check(app, "the press took the question away", "Backup 2", below + buttons_below, [])
    send("p2", "create", style=2, message="Working", progress=-1)
    check(app, "a busy window without a message or buttons", "Working",
          "frame 'Working' | progress bar 'Working' busy 0 of 0", [(SHOWING, "frame", 1)])
    send("p2", "set", style=6)
    check(app, "the busy window hidden", "Working", None, [(SHOWING, "frame", 0)])
    # The user turns to the window: focus on the leftmost button, Tab and Shift+Tab go round the
    # buttons from left to right, Space presses the one in focus and Esc the leftmost.
    subprocess.run(["xdotool", "search", "--name", "^Backup 2$", "windowactivate", "--sync"],
                   check=True)
    window = check(app, "the user turned to the window", "Backup 2", below + buttons_below, [],
                   focus="Backup 2")
    for key, seen in [("", "Pause"), ("Tab", "Stop"), ("Tab", "Pause"), ("shift+Tab", "Stop"),
                      ("space", "stop"), ("Escape", "pause")]:
        if key:
            subprocess.run(["xdotool", "key", key], check=True)
        if seen.islower():
            expect_reply(seen)
        else:
            wait_for(f"{seen} in focus after {key}", lambda: [b for b in window if b.name == seen
                     and b.getState().contains(pyatspi.STATE_FOCUSED)])


def main():
    started = time.monotonic()
    root = tempfile.mkdtemp(prefix="qem_a11y_")
    try:
        run(root)
    except AssertionError as failure:
        print(f"FAILED: {failure}")
        return 1
    finally:
        for child in reversed(children):
            child.terminate()
            child.wait(LIMIT)
        shutil.rmtree(root, ignore_errors=True)
    print(f"passed in {time.monotonic() - started:.1f} s")
    return 0


if __name__ == "__main__":
    sys.exit(main())
