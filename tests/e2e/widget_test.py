#!/usr/bin/env python3
"""widget_test.py DESKTOP KORVEX: drives the real widgets on a screen of their own, with a window manager and
a bus, by pointer and keyboard, and reads back what was stored with the command line."""
import contextlib
import datetime
import json
import os
import pathlib
import shutil
import signal
import sqlite3
import struct
import subprocess
import time
import unittest

from window import DESKTOP, KORVEX, PATIENCE, WindowCase, wait_for

WIDGET = str(pathlib.Path(DESKTOP).with_name("korvex-widget"))
# From the corner of a widget at the standard font size.
CIRCLE_X, FIRST_ROW, ROW = 33, 62, 32


class WidgetTest(WindowCase):
    with_bus = True

    def start_widget(self, *arguments):
        return self.painted_window(WIDGET, *arguments)

    def widgets(self):
        """The windows of the widgets, in the order in which they were shown."""
        found = self.xdotool("search", "--onlyvisible", "--class", "korvex-widget").split()
        return sorted(found, key=int)

    def hints(self, window, name):
        return subprocess.run(["xprop", "-id", window, name], env=self.environment, text=True,
                              capture_output=True, check=True).stdout

    def place(self, window):
        shell = self.xdotool("getwindowgeometry", "--shell", window)
        values = dict(line.split("=") for line in shell.split())
        return tuple(int(values[name]) for name in ("X", "Y", "WIDTH", "HEIGHT"))

    def press(self, window, x, y):
        self.xdotool("mousemove", "--window", window, str(x), str(y), "click", "1")

    def tick(self, window, row=0):
        self.press(window, CIRCLE_X, FIRST_ROW + row * ROW)

    def remembered(self):
        file = self.home / ".local/state/korvex/widgets.json"
        return json.loads(file.read_text())["widgets"] if file.exists() else []

    def check_stands_on_desktop(self, window):
        self.assertIn("4294967295", self.hints(window, "_NET_WM_DESKTOP"))
        state = self.hints(window, "_NET_WM_STATE")
        for wanted in ("SKIP_TASKBAR", "SKIP_PAGER"):
            self.assertIn("_NET_WM_STATE_" + wanted, state)
        self.assertTrue(self.is_below(window))

    def is_below(self, window):
        return "_NET_WM_STATE_BELOW" in self.hints(window, "_NET_WM_STATE")

    def top_window(self):
        stacked = subprocess.run(["xprop", "-root", "_NET_CLIENT_LIST_STACKING"], text=True,
                                 env=self.environment, capture_output=True, check=True).stdout
        return str(int(stacked.split()[-1], 16))

    def active(self):
        return self.xdotool("getactivewindow").strip()

    def test_it_stands_below_all_windows_on_every_desktop_and_at_login_takes_no_keyboard(self):
        self.korvex("add", "Buy milk")
        self.end(self.start_widget())
        wait_for(self.remembered, "the widget to be remembered")
        app = self.start_window()
        self.start_widget("--at-login")
        [window] = self.widgets()
        self.check_stands_on_desktop(window)
        time.sleep(0.5)
        self.assertNotEqual(self.active(), window)
        self.assertIn("Inbox – Korvex", self.title())
        self.assertIsNone(app.poll())

    def test_who_asks_for_it_can_tick_by_keys_alone(self):
        self.korvex("add", "Buy milk", "Water plants", "Call Ada")
        self.start_app_everywhere()
        for start, left in ((self.start_widget, ["Water plants", "Call Ada"]),
                            (lambda: self.start_again("--board", self.board_id("Inbox")), ["Call Ada"])):
            start()
            [window] = self.widgets()
            wait_for(lambda: self.active() == window, "the widget to have the keyboard")
            # Keys lead to what is seen.
            wait_for(lambda: self.top_window() == window, "the widget to stand over the app")
            self.keys("Home", "space")
            wait_for(lambda: self.texts() == left, "the todo to be ticked")
            time.sleep(1)  # its row leaves
            self.xdotool("search", "--name", "Inbox – Korvex", "windowactivate", "--sync")
            wait_for(lambda: self.is_below(window), "the widget to stand below again")
            self.check_stands_on_desktop(window)
            self.assertNotEqual(self.top_window(), window)
        self.korvex("board", "add", "Work")
        self.start_again("--board", self.board_id("Work"))
        wait_for(lambda: self.active() in set(self.widgets()) - {window},
                 "one more widget with the keyboard")

    def start_app_everywhere(self):
        self.start_window()
        self.xdotool("getactivewindow", "windowmove", "0", "0", "windowsize", "1100", "800")

    def test_it_is_moved_and_resized_by_keys(self):
        self.start_app_everywhere()
        self.start_widget()
        [window] = self.widgets()
        wait_for(lambda: self.active() == window, "the widget to have the keyboard")
        x, y, width, height = self.place(window)
        for item, keys in ((4, ["Left"] * 5), (5, ["Right"] * 3)):
            self.keys("Menu", *["Down"] * item, "Return")
            time.sleep(1)  # the window manager takes the keyboard
            self.assertEqual(self.top_window(), window, "it is seen where it moves")
            self.keys(*keys, "Return")
        wait_for(lambda: self.remembered()[0]["width"] > width, "the new place to be remembered")
        placed = self.place(window)
        self.assertLess(placed[0], x)
        self.assertGreater(placed[2], width)
        self.assertEqual((placed[1], placed[3]), (y, height))
        self.xdotool("search", "--name", "Inbox – Korvex", "windowactivate", "--sync")
        wait_for(lambda: self.is_below(window), "the widget to stand below again")

    def start_again(self, *arguments):
        subprocess.run([KORVEX, "widget", *arguments], env=self.environment, timeout=PATIENCE,
                       check=True)

    def test_a_tick_is_done_once_and_seen_in_the_running_window(self):
        self.korvex("add", "Buy milk", "Water plants", "Call Ada")
        self.start_window()
        self.xdotool("getactivewindow", "windowmove", "0", "0", "windowsize", "700", "700")
        self.start_widget()
        [window] = self.widgets()
        self.tick(window)
        wait_for(lambda: self.texts() == ["Water plants", "Call Ada"], "the todo to be completed")
        self.assertEqual(self.completed(), ["Buy milk"])
        # Its row has left the widget: the next todo stands there.
        time.sleep(1)
        self.tick(window)
        wait_for(lambda: self.texts() == ["Call Ada"], "the next one to be completed")
        # The window has followed: what is now its first todo is the one that is left.
        self.keys("ctrl+1")
        self.xdotool("search", "--name", "Inbox – Korvex", "windowactivate", "--sync")
        self.keys("Home", "ctrl+Return")
        wait_for(lambda: not self.texts(), "the last one to be completed in the window")
        self.assertEqual(sorted(self.completed()), ["Buy milk", "Call Ada", "Water plants"])

    def revision(self):
        """How often the store was saved."""
        lock = (self.home / "data" / "korvex" / "Primary.store.lock").read_bytes()
        return struct.unpack("=q", lock[24:32])[0]

    def test_several_who_complete_the_same_todo_at_once_do_it_once(self):
        self.start_notifications()
        self.start_widget()
        [window] = self.widgets()
        for first in ("widget", "command", "notification"):
            moment = datetime.datetime.now(datetime.timezone.utc) + datetime.timedelta(seconds=3)
            self.korvex("add", first, "--remind", moment.strftime("%Y-%m-%dT%H:%M:%SZ"))
            [entry] = self.stored()
            wait_for(lambda: self.notifications() == 1, "the reminder")
            before = self.revision()
            ways = {
                "widget": lambda: self.tick(window),
                "command": lambda: self.start([KORVEX, "complete", entry["id"]]),
                "notification": lambda: self.start(["dunstctl", "context"]),
            }
            ways.pop(first)()
            for way in ways.values():
                way()
            wait_for(lambda: not self.stored(), "the todo to be completed")
            wait_for(lambda: self.notifications() == 0, "the notification to be answered")
            time.sleep(1)
            self.assertEqual(self.stored(), [])
            self.assertEqual(self.revision(), before + 1, "it is completed with one save")

    def start(self, command):
        process = subprocess.Popen(command, env=self.environment, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL)
        self.addCleanup(process.wait, PATIENCE)

    def test_a_board_that_leaves_and_comes_back_is_shown_again(self):
        self.korvex("board", "add", "Work")
        self.korvex("add", "--board", "Work", "task")
        self.start_widget("--board", self.board_id("Work"))
        [window] = self.widgets()
        self.korvex("board", "archive", "Work")
        time.sleep(0.5)
        self.tick(window)
        time.sleep(0.5)
        self.assertEqual(self.completed(), [])
        self.korvex("board", "unarchive", "Work")
        time.sleep(0.5)
        self.tick(window)
        wait_for(lambda: self.completed() == ["task"], "the todo to be completed")
        self.korvex("board", "delete", "--yes", "Work")
        time.sleep(0.5)
        self.assertEqual(self.widgets(), [window])

    def board_id(self, name):
        boards = json.loads(self.korvex("boards"))
        return next(board["id"] for board in boards if board["name"] == name)

    def test_a_store_that_comes_later_is_shown_and_was_not_made(self):
        self.start_widget()
        [window] = self.widgets()
        time.sleep(1)
        self.assertFalse((self.home / "data" / "korvex" / "Primary.store").exists())
        self.korvex("add", "first of all")
        time.sleep(1.5)
        self.tick(window)
        wait_for(lambda: self.completed() == ["first of all"], "the todo to be completed")

    def test_a_damaged_store_is_repaired_while_a_widget_shows_it(self):
        self.korvex("add", "Buy milk", "Water plants")
        self.start_widget()
        [window] = self.widgets()
        with contextlib.closing(sqlite3.connect(self.home / "data/korvex/Primary.store")) as store, store:
            store.execute("UPDATE Entry SET content = 'Buy mild' WHERE content = 'Buy milk'")
        self.assertTrue(json.loads(self.korvex("store", "repair"))["wasDamaged"])
        # The new store is shown in the place of the old one.
        time.sleep(1)
        self.tick(window)
        wait_for(lambda: self.completed() == ["Buy mild"], "the todo to be completed")

    def test_a_second_start_hands_over_and_widgets_come_back_where_they_stood(self):
        self.korvex("board", "add", "Work")
        first = self.start_widget()
        self.start_again("--board", "Work")
        wait_for(lambda: len(self.widgets()) == 2, "a second widget")
        self.start_again("--board", "Work")
        time.sleep(0.5)
        self.assertEqual(len(self.widgets()), 2)
        # Moved by its header.
        x, y, width, height = self.place(self.widgets()[0])
        self.xdotool("mousemove", str(x + 60), str(y + 25), "mousedown", "1")
        for _ in range(8):
            self.xdotool("mousemove_relative", "--", "-40", "20")
        self.xdotool("mouseup", "1")
        wait_for(lambda: self.remembered()[0]["x"] < x - 200, "the new place to be remembered")
        places = [self.place(window) for window in self.widgets()]
        self.assertEqual(places[0][2:], (width, height))

        first.send_signal(signal.SIGKILL)
        first.wait()
        wait_for(lambda: not self.widgets(), "the widgets to be gone")
        self.start_widget("--at-login")
        wait_for(lambda: [self.place(window) for window in self.widgets()] == places,
                 "the widgets in their places")

    def test_at_login_nothing_is_shown_that_was_not_there(self):
        started = subprocess.run([WIDGET, "--at-login"], env=self.environment, timeout=PATIENCE,
                                 check=False)
        self.assertEqual(started.returncode, 0)
        self.assertEqual(self.remembered(), [])
        refused = subprocess.run([WIDGET, "--board", "Work"], env=self.environment, timeout=PATIENCE,
                                 check=False, capture_output=True, text=True)
        self.assertEqual(refused.returncode, 2)
        self.assertIn("no identifier", refused.stderr)

    def test_board_and_todo_open_in_the_app_which_starts_where_it_does_not_run(self):
        self.korvex("board", "add", "Work")
        self.korvex("add", "--board", "Work", "Call Ada", "Call Ben")
        self.start_widget("--board", self.board_id("Work"))
        [window] = self.widgets()
        # Its own environment is the app's: ended with the test by the name on its screen.
        self.addCleanup(self.quit_app)
        self.press(window, 60, 25)
        wait_for(lambda: self.title() == "Work – Korvex", "the app with the board")
        self.keys("ctrl+1")
        wait_for(lambda: self.title() == "Inbox – Korvex", "another board")
        self.xdotool("getactivewindow", "windowmove", "0", "0", "windowsize", "700", "700")
        time.sleep(0.5)
        self.press(window, 90, FIRST_ROW + ROW)
        wait_for(lambda: self.title() == "Work – Korvex", "the app with the entry's board")
        self.keys("Return")
        self.type("!")
        self.keys("Escape")
        wait_for(lambda: self.texts("Work") == ["Call Ada", "Call Ben!"], "the entry to be chosen")

    def test_a_board_that_cannot_be_opened_is_told_in_the_log(self):
        self.korvex("add", "Buy milk")
        alone = self.home / "korvex-widget"  # away from the app
        shutil.copy(WIDGET, alone)
        widget = self.painted_window(str(alone))
        [window] = self.widgets()
        self.press(window, 60, 25)
        self.assertIn("Unable to open widget board: 2", widget.stderr.readline())

    def quit_app(self):
        for found in set(self.xdotool("search", "--class", "korvex-desktop", "getwindowpid", "%@").split()):
            os.kill(int(found), signal.SIGTERM)
            wait_for(lambda: not pathlib.Path("/proc", found).exists(), "the app to end")


unittest.main()
