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
        if notifications:
            self.start_notifications()

    def remind_in(self, seconds, entry):
        moment = datetime.datetime.now(datetime.timezone.utc) + datetime.timedelta(seconds=seconds)
        self.korvex("remind", entry, moment.strftime("%Y-%m-%dT%H:%M:%SZ"))

    def test_from_a_key_press_to_a_notification_that_completes(self):
        self.log_in()
        self.korvex("board", "add", "Work")
        app = self.start_window()
        self.keys("ctrl+comma")  # the default is the window manager's: the first free one instead
        wait_for(lambda: "Settings" in self.title(), "the settings")
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
        wait_for(lambda: self.notifications() == 1, "the reminder, with the window closed")
        time.sleep(2)
        self.assertEqual(self.notifications(), 1, "once")
        self.mark_complete()
        wait_for(lambda: self.texts("Work") == ["Call Ann"], "the todo to be completed")
        self.assertEqual(self.completed(), ["Buy milk"])
        wait_for(lambda: self.notifications() == 0, "the notification to go")
        # The widget shows it: what stands first there is the other one.
        time.sleep(1)
        [widget] = self.xdotool("search", "--onlyvisible", "--class", "korvex-widget").split()
        self.xdotool("mousemove", "--window", widget, "33", "62", "click", "1")
        wait_for(lambda: self.texts("Work") == [], "the other one to be ticked in the widget")
        self.assertEqual(sorted(self.completed()), ["Buy milk", "Call Ann"])

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

    def test_what_came_due_while_nobody_was_logged_in_is_shown_at_the_next_login(self):
        self.log_in()
        self.korvex("add", "Ring the bell")
        [entry] = self.stored()
        self.remind_in(4, entry["id"])
        wait_for(lambda: [each["state"] for each in json.loads(self.korvex("reminders"))] ==
                 ["pending"], "the agent to have planned it")
        self.end_bus()
        time.sleep(5)
        self.log_in()
        agent = subprocess.Popen([AGENT], env=self.environment)  # as the session's start does
        self.addCleanup(self.end, agent)
        wait_for(lambda: self.notifications() == 1, "the reminder")
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
        wait_for(lambda: self.title().startswith("Upcoming"), "the page Upcoming")
        self.keys("Home", "ctrl+Return")  # the first row there
        wait_for(lambda: self.completed() == ["Nobody says it"], "it to be ticked where it is listed")


if __name__ == "__main__":
    unittest.main()
