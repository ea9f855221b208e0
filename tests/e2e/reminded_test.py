#!/usr/bin/env python3
"""reminded_test.py DESKTOP KORVEX: from a press of the shortcut to a todo that a notification completes, by
keyboard alone, with all programs, a real notification daemon and sessions that end and begin."""
import datetime
import json
import pathlib
import re
import shlex
import subprocess
import time
import unittest

from window import DESKTOP, PATIENCE, WindowCase, now, wait_for

PROGRAMS = pathlib.Path(DESKTOP).parent
WIDGET = str(PROGRAMS / "korvex-widget")
HOUR = datetime.timedelta(hours=1)


class RemindedTest(WindowCase):
    def setUp(self):
        super().setUp()
        # As it is installed, but the programs lie where they were built.
        for source, installed in (("dbus-1/services", "data/dbus-1/services"),
                                  ("autostart", "config/autostart")):
            folder = self.home / installed
            folder.mkdir(parents=True)
            for file in (PROGRAMS.parent / "data" / source).iterdir():
                (folder / file.name).write_text(
                    re.sub("^Exec=.*/", f'Exec="{PROGRAMS}/', file.read_text(), flags=re.MULTILINE))

    def log_in(self, *, notifications=True):
        self.start_bus(with_services=notifications)
        if notifications:
            self.start_notifications()
        # What a desktop does then with these files.
        self.started = [
            subprocess.Popen(shlex.split(re.search("^Exec=(.*)$", file.read_text(), re.M)[1]),
                             env=self.environment)
            for file in (self.home / "config" / "autostart").iterdir()]
        for program in self.started:
            self.addCleanup(self.end, program)

    def log_out(self):
        self.end_bus()
        self.assertEqual([program.wait(PATIENCE) for program in self.started], [0])

    def go_to(self, page, *keys):
        """By the sidebar; the keys lead there from the search field."""
        self.keys("ctrl+f", *keys, "Return")
        wait_for(lambda: self.title().startswith(page), f"the page {page}")

    def choose_shortcut(self):
        """The default is the window manager's: the first free one instead."""
        self.keys("ctrl+comma")
        wait_for(lambda: "Settings" in self.title(), "the settings")
        self.keys("Down", "Down", "Tab", "Tab", "Return")
        time.sleep(0.3)
        self.keys("alt+F4")
        wait_for(lambda: "Settings" not in self.title(), "the settings to go")

    def press_until_panel(self, keys):
        """The shortcut is registered a moment after it was chosen."""
        deadline = time.monotonic() + PATIENCE
        while time.monotonic() < deadline:
            self.keys(keys)
            for _ in range(40):
                if self.title().startswith("Quick Entry"):
                    return
                time.sleep(0.05)
        self.fail("Quick Entry did not open")

    def capture(self, due=None):
        """From a fresh account to two todos on a second board, and everything closed. The moment is by
        default the first full minute that leaves time enough for all that comes before it."""
        begin = time.monotonic()
        app = self.start_window()
        self.keys("ctrl+shift+n")
        time.sleep(0.3)
        self.type("Work")
        self.keys("Return")
        self.choose_shortcut()
        self.press_until_panel("ctrl+alt+space")
        self.type("Buy milk")
        self.keys("shift+Return")
        self.type("Call Ann")
        self.keys("ctrl+k")
        time.sleep(0.3)
        self.type("Work")
        self.keys("Return")
        time.sleep(0.3)
        if not due:
            spent = datetime.timedelta(seconds=time.monotonic() - begin)
            due = now() + HOUR + 3 * spent
            due = due.replace(second=0, microsecond=0) + datetime.timedelta(minutes=1)
        self.type_schedule(due)
        self.keys("Return")
        wait_for(lambda: self.texts("Work") == ["Buy milk", "Call Ann"], "both to be captured")
        wait_for(lambda: self.title().startswith("Work"), "the window to have the keyboard again")
        self.keys("ctrl+q")
        self.assertEqual(app.wait(PATIENCE), 0)
        self.check_schedules("Work", due)
        return due

    def test_a_key_press_and_a_log_out_lead_to_a_reminder_with_notifications_and_without(self):
        self.log_in()
        due = self.capture()
        board = next(each["id"] for each in json.loads(self.korvex("boards"))
                     if each["name"] == "Work")
        self.end(self.painted_window(WIDGET, "--board", board))
        self.log_out()
        has_notifications = self.home, self.environment
        self.setUp()  # somebody else, who waits for the same moment
        self.log_in(notifications=False)
        self.capture(due)
        self.korvex("add", "Long ago", "--due", "2020-01-01")
        self.log_out()
        has_none = self.home, self.environment

        self.home, self.environment = has_notifications
        self.log_in()
        widget = self.painted_window(WIDGET, "--at-login")
        left = (due - HOUR - now()).total_seconds()
        self.assertGreater(left, 0, "too late to be reminded in time")
        time.sleep(left)
        self.is_reminded_once_and_sees_what_is_ticked(board)
        self.end(widget)
        self.log_out()
        self.home, self.environment = has_none
        self.log_in(notifications=False)
        self.finds_listed_what_nobody_shows()
        self.log_out()

    def is_reminded_once_and_sees_what_is_ticked(self, board):
        wait_for(lambda: self.notifications() == 2, "a reminder of each, with the window closed")
        time.sleep(2)
        self.assertEqual(self.notifications(), 2, "once each")
        self.mark_complete()
        wait_for(lambda: len(self.texts("Work")) == 1, "the todo to be completed")
        [ticked], [other] = self.completed(), self.texts("Work")
        self.assertEqual({ticked, other}, {"Buy milk", "Call Ann"})
        wait_for(lambda: self.notifications() == 1, "the notification to go")
        # The widget shows it: what stands first there is the other one.
        time.sleep(1)
        self.korvex("widget", "--board", board)
        [widget] = self.xdotool("search", "--onlyvisible", "--class", "korvex-widget").split()
        wait_for(lambda: self.xdotool("getactivewindow").strip() == widget, "it to have the keyboard")
        self.keys("Home", "space")
        wait_for(lambda: self.texts("Work") == [], "the other one to be ticked in the widget")
        wait_for(lambda: self.notifications() == 0, "its notification to go as well")
        # The window shows both as completed, the last one first.
        app = self.start_window()
        self.go_to("Completed", "Tab", "Down")
        self.keys("Home", "Down", "ctrl+Return")
        wait_for(lambda: self.texts("Work") == [ticked], "the first one to be restored")
        self.keys("ctrl+q")
        self.assertEqual(app.wait(PATIENCE), 0)

    def finds_listed_what_nobody_shows(self):
        app = self.start_window()
        wait_for(lambda: json.loads(self.korvex("agent", "status")).get("authorization") ==
                 "Unavailable", "the agent to say so")
        self.go_to("Upcoming", "Tab")
        self.keys("Home", "ctrl+Return")  # they stand above what is overdue
        wait_for(lambda: len(self.completed()) == 1, "it to be ticked where it is listed")
        [ticked], [other] = self.completed(), self.texts("Work")
        self.assertEqual({ticked, other}, {"Buy milk", "Call Ann"})
        # It came due while nobody was logged in; a daemon that comes late shows it.
        self.start_notifications()
        wait_for(lambda: self.notifications() == 1, "the reminder")
        self.mark_complete()
        wait_for(lambda: self.texts("Work") == [], "the other one to be completed")
        self.keys("ctrl+q")
        self.assertEqual(app.wait(PATIENCE), 0)


if __name__ == "__main__":
    unittest.main()
