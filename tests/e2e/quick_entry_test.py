#!/usr/bin/env python3
"""quick_entry_test.py DESKTOP KORVEX: asks for Quick Entry in every way but the shortcut, types into it
through the X server, and reads back what was stored with the command line."""
import json
import signal
import subprocess
import time
import unittest

from window import DESKTOP, KORVEX, PATIENCE, WindowCase, wait_for

DRAFT_KEPT = 1.0  # seconds after a change, at the latest
NAME = "Quick Entry"


class CaptureCase(WindowCase):
    def setUp(self):
        super().setUp()
        self.korvex("board", "add", "Work")

    def capture(self, *arguments):
        """korvex quick-entry, without waiting for its end."""
        program = subprocess.Popen([KORVEX, "quick-entry", *arguments], env=self.environment,
                                   stderr=subprocess.DEVNULL)
        self.addCleanup(self.end, program)
        return program

    def wait_for_panel(self):
        wait_for(lambda: self.title().startswith(NAME), "the panel to have the keyboard")
        time.sleep(0.1)  # the window manager says so a moment before it is so

    def windows(self):
        """The names of all windows in sight."""
        names = []
        for window in self.xdotool("search", "--onlyvisible", "--class", "korvex").split():
            names.append(self.xdotool("getwindowname", window).strip())
        return [name for name in names if name]

    def wait_until_away(self):
        wait_for(lambda: not any(name.startswith(NAME) for name in self.windows()),
                 "the panel to go")


class QuickEntryTest(CaptureCase):
    def test_alone_it_captures_into_the_board_and_ends(self):
        program = self.capture("--board", "Work")
        self.wait_for_panel()
        self.assertEqual([name.partition(" – ")[0] for name in self.windows()], [NAME])
        self.type("Buy milk")
        self.keys("shift+Return", "shift+Return")
        self.type(" Renew passport ")
        self.keys("Return")
        self.assertEqual(program.wait(PATIENCE), 0)
        self.assertEqual(self.texts("Work"), ["Buy milk", "Renew passport"])

        again = self.capture("--type", "text")  # on the board that was used last
        self.wait_for_panel()
        self.type("Two lines")
        self.keys("shift+Return")
        self.type("of one text")
        self.keys("Return")
        self.assertEqual(again.wait(PATIENCE), 0)
        self.assertEqual(self.texts("Work")[-1], "Two lines\nof one text")

    def test_what_was_typed_outlives_escape_and_a_kill(self):
        program = self.capture()
        self.wait_for_panel()
        self.type("Water ")
        self.keys("Escape")
        self.assertEqual(program.wait(PATIENCE), 0)
        program = self.capture()
        self.wait_for_panel()
        self.type("the ")
        time.sleep(2 * DRAFT_KEPT)
        program.send_signal(signal.SIGKILL)
        program.wait()
        self.wait_until_away()
        self.assertEqual(self.texts(), [])
        program = self.capture()
        self.wait_for_panel()
        self.type("plants")
        time.sleep(DRAFT_KEPT / 2)  # until the letters have come, and before they are kept
        program.terminate()  # as the end of a session does
        self.assertEqual(program.wait(PATIENCE), 0)
        program = self.capture()
        self.wait_for_panel()
        self.keys("Return")
        self.assertEqual(program.wait(PATIENCE), 0)
        self.assertEqual(self.texts(), ["Water the plants"])
        program = self.capture()
        self.wait_for_panel()
        self.keys("Return")  # nothing is left, and nothing is stored
        self.keys("Escape")
        self.assertEqual(program.wait(PATIENCE), 0)
        self.assertEqual(self.texts(), ["Water the plants"])

    def test_ctrl_escape_discards_after_asking(self):
        program = self.capture()
        self.wait_for_panel()
        self.type("not this")
        self.keys("ctrl+Escape", "Return")  # the answer that does nothing has the keyboard
        self.type(" one")
        self.keys("ctrl+Escape", "Tab", "Return")
        self.assertEqual(program.wait(PATIENCE), 0)
        program = self.capture()
        self.wait_for_panel()
        self.type("this")
        self.keys("Return")
        self.assertEqual(program.wait(PATIENCE), 0)
        self.assertEqual(self.texts(), ["this"])

    def test_a_start_that_cannot_be_meant_shows_nothing_and_says_why(self):
        for wrong, why in ((["--quick-entry", "--type", "poem"], "todo or text"),
                           (["--quick-entry", "--board", "Work"], "identifier"),
                           (["--quick-entry", "korvex://inbox"], "no link"),
                           (["--type", "text"], "for --quick-entry")):
            ran = subprocess.run([DESKTOP, *wrong], env=self.environment, text=True, check=False,
                                 capture_output=True, timeout=PATIENCE)
            self.assertEqual(ran.returncode, 2, wrong)
            self.assertIn(why, ran.stderr)

    def test_a_store_that_is_gone_costs_nothing(self):
        program = self.capture()
        self.wait_for_panel()
        self.type("kept")
        store = self.home / "data" / "korvex" / "Primary.store"
        away = store.rename(self.home / "away")
        self.keys("Return")
        time.sleep(0.5)
        self.assertIsNone(program.poll())
        self.wait_for_panel()
        away.rename(store)
        self.keys("Return")
        self.assertEqual(program.wait(PATIENCE), 0)
        self.assertEqual(self.texts(), ["kept"])

    def test_an_empty_one_goes_when_another_window_is_gone_to(self):
        main = self.start_window()
        second = self.capture()
        self.assertEqual(second.wait(PATIENCE), 0)
        self.wait_for_panel()
        window = self.xdotool("search", "--onlyvisible", "--name", "Inbox").split()[0]
        self.xdotool("windowactivate", window)
        self.wait_until_away()
        self.assertEqual(self.capture().wait(PATIENCE), 0)
        self.wait_for_panel()
        self.type("half a thou")
        self.xdotool("windowactivate", window)
        wait_for(lambda: not self.title().startswith(NAME), "the window to have the keyboard")
        time.sleep(1)
        self.assertTrue(any(name.startswith(NAME) for name in self.windows()), "words in it keep it")
        self.assertEqual(self.capture().wait(PATIENCE), 0)
        self.wait_for_panel()
        self.type("ght")
        self.keys("Return")
        wait_for(lambda: self.texts() == ["half a thought"], "the todo")
        self.assertIsNone(main.poll())


class BusCase(CaptureCase):
    with_bus = True

    def is_on_the_bus(self):
        return "dev.korvex.Korvex" in self.call("org.freedesktop.DBus", "/", "ListNames")

    def call(self, destination, path, member, *arguments):
        interface = "org.freedesktop.Application" if "korvex" in destination else destination
        return subprocess.run(
            ["gdbus", "call", "--session", "--dest", destination, "--object-path", path,
             "--method", f"{interface}.{member}", *arguments],
            env=self.environment, text=True, capture_output=True, check=True).stdout

    def activate(self, *parameters):
        self.call("dev.korvex.Korvex", "/dev/korvex/Korvex", "ActivateAction", "quick-entry",
                  f"[{', '.join(f'<{each!r}>' for each in parameters)}]", "{}")


class StartedByTheBusTest(BusCase):
    """Nobody runs: the bus starts the app, and delivers then what it is wanted for."""

    def start_bus(self):
        services = self.home / "data" / "dbus-1" / "services"
        services.mkdir(parents=True)
        (services / "dev.korvex.Korvex.service").write_text(
            f"[D-BUS Service]\nName=dev.korvex.Korvex\nExec={DESKTOP} --for-bus\n")
        super().start_bus()

    def test_only_what_is_asked_for_comes_up(self):
        self.activate()
        self.wait_for_panel()
        time.sleep(0.5)
        self.assertEqual([name.partition(" – ")[0] for name in self.windows()], [NAME])
        self.type("from the launcher")
        self.keys("Return")
        wait_for(lambda: not self.is_on_the_bus(), "the app to end with its panel")
        self.assertEqual(self.texts(), ["from the launcher"])
        self.call("dev.korvex.Korvex", "/dev/korvex/Korvex", "Activate", "{}")
        wait_for(lambda: "Inbox" in self.title(), "the window")
        self.keys("ctrl+q")
        wait_for(lambda: not self.is_on_the_bus(), "the app to end")


class RunningAppTest(BusCase):
    """Asked over the bus, with the main window there."""

    def setUp(self):
        super().setUp()
        self.app = self.start_window()
        wait_for(self.is_on_the_bus, "the app's name on the bus")

    def test_the_command_has_the_running_app_open_it(self):
        self.assertEqual(self.capture("--board", "Work").wait(PATIENCE), 0)
        self.wait_for_panel()
        self.type("from the command")
        self.keys("Return")
        wait_for(lambda: self.texts("Work") == ["from the command"], "the todo")
        self.wait_until_away()
        wait_for(lambda: "Inbox" in self.title(), "the window to have the keyboard again")
        self.keys("ctrl+n")
        self.type("in the window")
        self.keys("Escape", "ctrl+q")
        self.assertEqual(self.app.wait(PATIENCE), 0)
        self.assertEqual(self.texts(), ["in the window"])

    def test_an_action_opens_it_and_the_same_again_puts_it_away(self):
        board = [each["id"] for each in json.loads(self.korvex("boards"))
                 if each["name"] == "Work"][0]
        self.activate(f"board={board}", "type=text")
        self.wait_for_panel()
        self.type("a thought")
        self.activate()
        self.wait_until_away()
        self.assertEqual(self.texts("Work"), [])
        self.activate("of a later version")
        self.wait_for_panel()
        self.keys("ctrl+q")  # puts the panel away, and ends nothing
        self.wait_until_away()
        self.xdotool("windowactivate", self.xdotool("search", "--onlyvisible", "--name",
                                                    "Inbox").split()[0])
        self.activate(f"board={board}")
        self.wait_for_panel()
        self.keys("Return")
        wait_for(lambda: self.texts("Work") == ["a thought"], "the draft to be captured")
        self.assertEqual(json.loads(self.korvex("list", "Work"))[0]["type"], "text")
        self.assertIsNone(self.app.poll())

    def test_the_last_window_that_goes_ends_the_app(self):
        self.activate()
        self.wait_for_panel()
        self.type("kept")
        window = self.xdotool("search", "--onlyvisible", "--name", "Inbox").split()[0]
        self.xdotool("windowactivate", "--sync", window)
        self.keys("alt+F4")
        wait_for(lambda: all(name.startswith(NAME) for name in self.windows()), "the window to go")
        self.assertIsNone(self.app.poll(), "the panel is still there")
        self.wait_for_panel()
        self.keys("Return")
        self.assertEqual(self.app.wait(PATIENCE), 0)
        self.assertEqual(self.texts(), ["kept"])


if __name__ == "__main__":
    unittest.main()
