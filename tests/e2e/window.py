"""Drives the real window on a screen of its own, with a window manager, by keyboard, and reads back what
was stored with the command line."""
import datetime
import json
import os
import pathlib
import subprocess
import sys
import time

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "support"))
from program_case import ProgramCase

DESKTOP, KORVEX = (str(pathlib.Path(argument).resolve()) for argument in sys.argv[1:3])
del sys.argv[1:3]
PATIENCE = 10  # seconds; what is waited for takes a fraction of one


def wait_for(condition, what, patience=PATIENCE):
    deadline = time.monotonic() + patience
    while time.monotonic() < deadline:
        if result := condition():
            return result
        time.sleep(0.05)
    raise AssertionError(f"waited {patience} s for {what}")


def now():
    return datetime.datetime.now(datetime.timezone.utc)


class Screen:
    """A virtual screen with a window manager."""

    def __init__(self):
        reading, writing = os.pipe()
        self.server = subprocess.Popen(
            # Else it starts anew when its last client leaves, and ends whoever comes just then.
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1100x800x24", "-nolisten", "tcp",
             "-noreset"],
            pass_fds=[writing], stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as pipe:
            self.display = f":{pipe.readline().strip()}"
        self.manager = subprocess.Popen(["openbox"], env=os.environ | {"DISPLAY": self.display},
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        # A window that is there before its manager is taken down and put up again.
        try:
            wait_for(self.is_managed, "the window manager")
        except AssertionError:
            self.close()
            raise

    def is_managed(self):
        asked = subprocess.run(["xdotool", "getactivewindow"], text=True, capture_output=True,
                               env=os.environ | {"DISPLAY": self.display}, check=False)
        return "claims not to support" not in asked.stderr

    def close(self):
        for process in (self.manager, self.server):
            process.terminate()
            process.wait()


class WindowCase(ProgramCase):
    """A home of its own for each test, and a screen for all of them."""

    with_bus = False

    @classmethod
    def setUpClass(cls):
        cls.screen = Screen()
        cls.addClassCleanup(cls.screen.close)

    def setUp(self):
        super().setUp()
        self.environment |= {"DISPLAY": self.screen.display, "QT_QPA_PLATFORM": "xcb"}
        if self.with_bus:
            self.start_bus()

    def start_bus(self, *, with_services=True):
        """With those services that are installed on this machine, or with none."""
        kind = ["--session"]
        if not with_services:
            configuration = self.home / "bus.conf"
            configuration.write_text(
                "<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>"
                "<policy context='default'><allow send_destination='*'/>"
                "<allow receive_type='*'/><allow own='*'/></policy></busconfig>")
            kind = ["--config-file", str(configuration)]
        bus = subprocess.Popen(["dbus-daemon", *kind, "--nofork", "--print-address"],
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                               env=self.environment)
        self.addCleanup(self.end, bus)
        self.bus = bus
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().strip()
        bus.stdout.close()

    def end_bus(self):
        self.end(self.bus)

    def start_notifications(self):
        """A real daemon; the menu of its notifications chooses "Mark Complete"."""
        menu = self.home / "menu"
        menu.write_text("#!/bin/sh\ngrep -m1 'Mark Complete'\n")
        menu.chmod(0o700)
        settings = self.home / "config" / "dunst" / "dunstrc"  # where one that the bus starts looks
        settings.parent.mkdir(parents=True, exist_ok=True)
        # It stands in nobody's way, and counts what is shown twice as two.
        settings.write_text(f"[global]\ndmenu = {menu}\norigin = bottom-left\n"
                            "stack_duplicates = false\n")
        daemon = subprocess.Popen(["dunst"], env=self.environment, stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL)
        self.addCleanup(self.end, daemon)
        wait_for(lambda: self.notifications() is not None, "the notification daemon")

    def notifications(self):
        """How many are shown; None without a daemon."""
        asked = subprocess.run(["dunstctl", "count", "displayed"], env=self.environment, text=True,
                               capture_output=True, check=False)
        return int(asked.stdout) if asked.returncode == 0 else None

    def mark_complete(self):
        """At the notification that is shown."""
        subprocess.run(["dunstctl", "context"], env=self.environment, check=True)

    def start_window(self, *arguments):
        """Starts the app and waits until its window is painted and has the keyboard."""
        window = self.painted_window(DESKTOP, *arguments)
        wait_for(lambda: "Korvex" in self.xdotool("getactivewindow", "getwindowname"),
                 "the window to have the keyboard")
        return window

    def xdotool(self, *arguments):
        return subprocess.run(["xdotool", *arguments], env=self.environment, text=True,
                              capture_output=True, check=False).stdout

    def keys(self, *names):
        for name in names:
            self.xdotool("key", "--clearmodifiers", name)

    def type(self, text):
        self.xdotool("type", "--delay", "10", text)

    def korvex(self, *arguments):
        return subprocess.run([KORVEX, "--json", *arguments], env=self.environment, text=True,
                              capture_output=True, check=True).stdout

    def title(self):
        """The title of the window that has the keyboard."""
        return self.xdotool("getactivewindow", "getwindowname").strip()

    def completed(self):
        """The texts of the completed todos."""
        return [entry["content"] for day in json.loads(self.korvex("completed"))
                for entry in day["entries"]]

    def stored(self, *arguments):
        return json.loads(self.korvex("list", *arguments))

    def texts(self, *arguments):
        return [entry["content"] for entry in self.stored(*arguments)]

    def type_schedule(self, due):
        """Into Quick Entry: this day and time, and a reminder an hour before."""
        self.keys("ctrl+d")
        time.sleep(0.3)
        self.keys("Tab", "Tab", "Tab", "space")  # to the due day, which is today
        if due.date() != now().date():
            self.keys("Up")
        self.keys("Tab", "Tab", "space")  # to its time
        self.type(f"{due:%H:%M}")
        self.keys("Tab", "space")  # to the presets of the reminder
        time.sleep(0.3)
        self.keys("Down", "Return")
        time.sleep(0.3)

    def check_schedules(self, board, due):
        """All of this board are due then, with a reminder an hour before, of which the agent knows."""
        times = {(entry["dueDate"], entry["reminderDate"]) for entry in self.stored(board)}
        reminder = due - datetime.timedelta(hours=1)
        self.assertEqual(times, {tuple(f"{each:%Y-%m-%dT%H:%M}:00.000Z" for each in (due, reminder))})
        wait_for(lambda: [each["state"] for each in json.loads(self.korvex("reminders"))] ==
                 ["pending"] * len(self.stored(board)), "the agent to have planned them")
