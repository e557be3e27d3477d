#!/usr/bin/python3
"""The helper's windows as a screen reader meets them: read through AT-SPI from a live helper on
a private Xvfb with a window manager, under the session bus that dbus-run-session gives.

Each step sends commands and then waits for the helper's accessible tree to read as expected:
the window by its title, the message, the bar named after the window's text with its value or
told as busy, the visible buttons from left to right and nothing hidden. Each step also waits for
the events that tell a screen reader of its changes, and a button is pressed through AT-SPI. A
test console stands for the user's application: it keeps the focus throughout.

Usage: /usr/bin/python3 a11y_test.py QEM_UTIL QEM_CHANNEL (it runs itself under a session bus
of its own). Exit status: 0 passed, 1 failed, 77 skipped (something it needs is not installed).
"""

import ctypes
import fcntl
import json
import os
import signal
import shutil
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
for program in ("dbus-run-session", "Xvfb", "openbox", "xdotool"):
    if not shutil.which(program):
        print(f"{program} is not installed (scripts/install-deps installs it)")
        sys.exit(77)

if "QEM_A11Y_OWN_BUS" not in os.environ:
    os.environ["QEM_A11Y_OWN_BUS"] = "1"
    os.execvp("dbus-run-session", ["dbus-run-session", "--", sys.executable, *sys.argv])
HELPER, CHANNEL_TOOL = sys.argv[1:3]
LIBC, PR_SET_PDEATHSIG = ctypes.CDLL(None), 1
LIMIT = 30  # seconds for anything to happen; generous for a slow machine


def wait_for(what, condition):
    """Pumps AT-SPI events until condition() gives a true value, which it returns."""
    deadline = time.monotonic() + LIMIT
    while time.monotonic() < deadline:
        while GLib.MainContext.default().iteration(False):
            pass
        result = condition()
        if result:
            return result
        time.sleep(0.02)
    raise AssertionError(f"waited {LIMIT} s for {what}")


def describe(node, depth=0):
    """One line per object: role, name, and for a bar whether busy and its value; children
    below."""
    line = f"{'  ' * depth}{node.getRoleName()} '{node.name}'"
    if node.getRole() == pyatspi.ROLE_PROGRESS_BAR:
        busy = node.getState().contains(pyatspi.STATE_BUSY)
        value = node.queryValue()
        line += f"{' busy' if busy else ''} {value.currentValue:g} of {value.maximumValue:g}"
    return [line] + [text for child in node for text in describe(child, depth + 1)]


class Session:
    def __init__(self, root):
        self.root = root
        for name in ("home", "config", "tmp"):
            os.makedirs(os.path.join(root, name))
        os.environ.update(HOME=f"{root}/home", XDG_CONFIG_HOME=f"{root}/config",
                          TMPDIR=f"{root}/tmp", QT_QPA_PLATFORM="xcb",
                          QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
        self.children = []
        xvfb = self.start(["Xvfb", "-displayfd", "1", "-nolisten", "tcp", "-screen", "0",
                           "1024x768x24"], stdout=subprocess.PIPE)
        os.environ["DISPLAY"] = ":" + xvfb.stdout.readline().decode().strip()
        self.start(["openbox"])
        # The registry first, so that the helper finds the accessibility bus when it starts.
        self.desktop = pyatspi.Registry.getDesktop(0)
        self.events = []
        pyatspi.Registry.registerEventListener(self.events.append,
                                               "object:property-change:accessible-name",
                                               "object:property-change:accessible-value",
                                               "object:state-changed:showing",
                                               "object:children-changed")
        self.console = self.start([HELPER, "--test=true"])
        wait_for("the console to be the active window", lambda: self.active() == "qem_util_test")
        self.alive = os.open(f"{root}/tmp/alive", os.O_RDWR | os.O_CREAT, 0o600)
        fcntl.flock(self.alive, fcntl.LOCK_EX)
        self.helper = self.start([HELPER, "--stay-alive-key=alive", "--channel=cmd",
                                  "--reply-channel=rep", "--launch-key=up"])
        self.app = wait_for("the helper on the accessibility bus", self.find_app)
        self.app.set_cache_mask(Atspi.Cache.NONE)  # every read asks the helper afresh

    def start(self, argv, stdout=subprocess.DEVNULL):
        # A child ends with this script, however it ends.
        child = subprocess.Popen(argv, stdout=stdout, stderr=subprocess.DEVNULL,
                                 preexec_fn=lambda: LIBC.prctl(PR_SET_PDEATHSIG, signal.SIGTERM))
        self.children.append(child)
        return child

    def stop(self):
        for child in reversed(self.children):
            child.terminate()
            child.wait(LIMIT)

    def find_app(self):
        return next((app for app in self.desktop
                     if app is not None and app.get_process_id() == self.helper.pid), None)

    def active(self):
        result = subprocess.run(["xdotool", "getactivewindow", "getwindowname"],
                                capture_output=True, text=True, check=False)
        return result.stdout.strip()

    def send(self, command):
        subprocess.run([CHANNEL_TOOL, "send", "cmd", command], check=True)

    def reply(self):
        return subprocess.run([CHANNEL_TOOL, "receive", "rep", "--count", "1", "--timeout",
                               str(LIMIT)], capture_output=True, text=True, check=True).stdout

    def frame(self, name):
        return next((w for w in self.app if w.name == name
                     and w.getState().contains(pyatspi.STATE_SHOWING)), None)

    def step(self, what, commands, window, expected, events=()):
        """Sends the commands; waits for the window to read as expected and for the events."""
        del self.events[:]
        for command in commands:
            self.send(command)
        frame = None

        def reads_as_expected():
            nonlocal frame
            frame = self.frame(window)
            return frame is not None and describe(frame) == expected

        try:
            wait_for(what, reads_as_expected)
            for kind, role in events:
                wait_for(f"{what}: {kind} from a {role}", lambda: any(
                    e.type == kind and e.source.getRoleName() == role for e in self.events))
        except AssertionError:
            print("\n".join(describe(frame) if frame else [f"no window '{window}'"]))
            print("events:", [(e.type, e.source.getRoleName(), e.detail1) for e in self.events])
            raise
        # Updates never take the focus from the user's application.
        assert not frame.getState().contains(pyatspi.STATE_ACTIVE), f"{what}: window active"
        assert self.active() == "qem_util_test", f"{what}: the focus went to {self.active()}"
        return frame


def create(obj_id, **keys):
    return command(obj_id, "create", type="wprogress", **keys)


def command(obj_id, cmd, **keys):
    return json.dumps({"obj_id": obj_id, "cmd": cmd, **keys})


def buttons(*captions):
    return [{"id": caption.lower(), "text": caption} for caption in captions]


def run(s):
    name, value, showing = ("object:property-change:accessible-name",
                            "object:property-change:accessible-value",
                            "object:state-changed:showing")
    copying = ["frame 'Backup'", "  label 'Copying'", "  progress bar 'Copying' 250 of 1000",
               "  push button 'Pause'", "  push button 'Stop'"]
    s.step("a window with a message, a bar and two buttons",
           [create("p1", style=3, title="Backup", message="Copying", progress=0.25,
                   btn_spec=buttons("Stop", "Pause"))],
           "Backup", copying, [(showing, "frame")])
    s.step("the bar turns busy", [command("p1", "set", progress=-1)], "Backup",
           copying[:2] + ["  progress bar 'Copying' busy 0 of 0"] + copying[3:], [(value, "progress bar")])
    s.step("a new title, message and value",
           [command("p1", "set", title="Backup 2", message="Verifying", progress=0.5)],
           "Backup 2", ["frame 'Backup 2'", "  label 'Verifying'",
                        "  progress bar 'Verifying' 500 of 1000"] + copying[3:],
           [(name, "frame"), (name, "label"), (name, "progress bar"), (value, "progress bar")])
    question = s.step("a question pushed on top",
                      [command("p1", "push", style=1, title="File exists",
                               message="Replace it?", btn_spec=buttons("Yes", "No", "Skip"))],
                      "File exists", ["frame 'File exists'", "  label 'Replace it?'",
                                      "  push button 'Skip'", "  push button 'No'",
                                      "  push button 'Yes'"],
                      [(name, "frame"), (name, "label"), (showing, "push button")])
    no = question.getChildAtIndex(2)
    action = no.queryAction()
    action.doAction(next(i for i in range(action.nActions) if action.getName(i) == "Press"))
    assert s.reply() == '{"obj_id":"p1","cmd":"pressed","btn_id":"no"}\n'
    s.step("the press took the question away", [], "Backup 2",
           ["frame 'Backup 2'", "  label 'Verifying'", "  progress bar 'Verifying' 500 of 1000"]
           + copying[3:])
    s.step("a busy window without a message or buttons",
           [create("p2", style=2, message="Working", progress=-1)], "Working",
           ["frame 'Working'", "  progress bar 'Working' busy 0 of 0"], [(showing, "frame")])
    s.send(command("p2", "set", style=6))
    wait_for("the hidden window to be told gone", lambda: any(
        e.type == showing and e.detail1 == 0 and e.source.getRoleName() == "frame"
        for e in s.events) and s.frame("Working") is None)


def main():
    started = time.monotonic()
    root = tempfile.mkdtemp(prefix="qem_a11y_")
    s = None
    try:
        s = Session(root)
        run(s)
    except AssertionError as failure:
        print(f"FAILED: {failure}")
        return 1
    finally:
        if s:
            s.stop()
        shutil.rmtree(root, ignore_errors=True)
    print(f"passed in {time.monotonic() - started:.1f} s")
    return 0


if __name__ == "__main__":
    sys.exit(main())
