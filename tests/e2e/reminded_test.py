#!/usr/bin/env python3
"""reminded_test.py DESKTOP KORVEX: one person's way from a key press to a todo that a notification
completes, with all programs, a real notification daemon and sessions that end and begin."""
import datetime
import json
import pathlib
import subprocess
import time
import unittest

from window import DESKTOP, PATIENCE, WindowCase, wait_for

AGENT = str(pathlib.Path(DESKTOP).with_name("korvex-agent"))
WIDGET = str(pathlib.Path(DESKTOP).with_name("korvex-widget"))


class RemindedTest(WindowCase):
    def log_in(self, *, notifications=True):
        self.start_bus(with_services=notifications)
        if not notifications:
            return
        # The menu is a program that chooses the line that it is told.
        menu = self.home / "menu"
        menu.write_text("#!/bin/sh\ngrep -m1 'Mark Complete'\n")
        menu.chmod(0o700)
        settings = self.home / "dunstrc"
        settings.write_text(f"[global]\ndmenu = {menu}\n")
        daemon = subprocess.Popen(["dunst", "-conf", settings], env=self.environment,
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(self.end, daemon)
        wait_for(lambda: self.shown() is not None, "the notification daemon")

    def shown(self):
        """How many notifications are shown; None without a daemon."""
        asked = subprocess.run(["dunstctl", "count", "displayed"], env=self.environment, text=True,
                               capture_output=True, check=False)
        return int(asked.stdout) if asked.returncode == 0 else None

    def mark_complete(self):
        subprocess.run(["dunstctl", "context"], env=self.environment, check=True)

    def remind_in(self, seconds, entry):
        moment = datetime.datetime.now(datetime.timezone.utc) + datetime.timedelta(seconds=seconds)
        self.korvex("remind", entry, moment.strftime("%Y-%m-%dT%H:%M:%SZ"))

    def is_agent_there(self):
        asked = subprocess.run(
            ["gdbus", "call", "--session", "--dest", "org.freedesktop.DBus", "--object-path",
             "/org/freedesktop/DBus", "--method", "org.freedesktop.DBus.NameHasOwner",
             "dev.korvex.Agent"], env=self.environment, text=True, capture_output=True, check=False)
        return "true" in asked.stdout

    def completed(self):
        return [entry["content"] for day in json.loads(self.korvex("completed"))
                for entry in day["entries"]]

    def test_from_a_key_press_to_a_notification_that_completes(self):
        self.log_in()
        self.korvex("board", "add", "Work")
        app = self.start_window()
        self.keys("ctrl+comma")  # the default is the window manager's: the first free one instead
        wait_for(lambda: "Settings" in self.active(), "the settings")
        self.keys("Down", "Down", "Tab", "Tab", "Return")
        self.press_until_panel("ctrl+alt+space")
        self.type("Buy milk")
        self.keys("shift+Return")
        self.type("Call Ann")
        self.keys("ctrl+k")
        time.sleep(0.3)
        self.type("Work")
        self.keys("Return")
        time.sleep(0.3)
        self.keys("Return")
        wait_for(lambda: self.texts("Work") == ["Buy milk", "Call Ann"], "both to be captured")
        board = next(each["id"] for each in json.loads(self.korvex("boards"))
                     if each["name"] == "Work")
        self.painted_window(WIDGET, "--board", board)
        self.remind_in(3, self.stored("Work")[0]["id"])
        self.xdotool("search", "--onlyvisible", "--name", "Inbox – Korvex", "windowactivate",
                     "--sync")
        self.keys("ctrl+q")
        self.assertEqual(app.wait(PATIENCE), 0)
        wait_for(lambda: self.shown() == 1, "the reminder, with the window closed")
        time.sleep(2)
        self.assertEqual(self.shown(), 1, "once")
        self.mark_complete()
        wait_for(lambda: self.texts("Work") == ["Call Ann"], "the todo to be completed")
        self.assertEqual(self.completed(), ["Buy milk"])
        wait_for(lambda: self.shown() == 0, "the notification to go")
        # The widget and the window show it: what is ticked first there is the other one.
        time.sleep(1)
        [widget] = self.xdotool("search", "--onlyvisible", "--class", "korvex-widget").split()
        self.xdotool("mousemove", "--window", widget, "33", "62", "click", "1")
        wait_for(lambda: self.texts("Work") == [], "the other one to be ticked in the widget")
        self.assertEqual(sorted(self.completed()), ["Buy milk", "Call Ann"])

    def active(self):
        return self.xdotool("getactivewindow", "getwindowname").strip()

    def press_until_panel(self, keys):
        """The shortcut is registered a moment after it was chosen."""
        deadline = time.monotonic() + PATIENCE
        while time.monotonic() < deadline:
            self.keys(keys)
            for _ in range(40):
                if self.active().startswith("Quick Entry"):
                    return
                time.sleep(0.05)
        self.fail("Quick Entry did not open")

    def test_what_came_due_while_nobody_was_logged_in_is_shown_at_the_next_login(self):
        self.log_in()
        self.korvex("add", "Ring the bell")
        [entry] = self.stored()
        self.remind_in(4, entry["id"])
        wait_for(self.is_agent_there, "the command line to start the agent")
        wait_for(lambda: [each["state"] for each in json.loads(self.korvex("reminders"))] ==
                 ["pending"], "the agent to have planned it")
        self.end_bus()
        time.sleep(5)
        self.log_in()
        agent = subprocess.Popen([AGENT], env=self.environment)  # as the session's start does
        self.addCleanup(self.end, agent)
        wait_for(lambda: self.shown() == 1, "the reminder")
        self.mark_complete()
        wait_for(lambda: self.completed() == ["Ring the bell"], "the todo to be completed")
        self.end_bus()
        self.assertEqual(agent.wait(PATIENCE), 0)

    def test_without_anybody_who_shows_it_the_window_lists_it(self):
        self.log_in(notifications=False)
        self.korvex("add", "Nobody says it")
        [entry] = self.stored()
        self.start_window()
        self.remind_in(2, entry["id"])

        def status():
            return json.loads(self.korvex("agent", "status"))

        wait_for(lambda: status().get("authorization") == "Unavailable", "the agent to say so")
        self.assertIn("notifications", json.dumps(status()))
        time.sleep(3)
        self.xdotool("getactivewindow", "mousemove", "--window", "%1", "74", "64", "click", "1")
        wait_for(lambda: self.active().startswith("Upcoming"), "the page Upcoming")
        self.keys("Home", "ctrl+Return")  # the first row there
        wait_for(lambda: self.completed() == ["Nobody says it"], "it to be ticked where it is listed")


if __name__ == "__main__":
    unittest.main()
