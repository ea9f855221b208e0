#!/usr/bin/env python3
"""hotkey_test.py DESKTOP KORVEX PORTAL: the shortcut of Quick Entry, pressed on a real X server beside a real
window manager, which has Alt+Space itself; the program in the background; and a session on Wayland, as
far as the program can tell, whose desktop reports the shortcut through a portal."""
import base64
import datetime
import json
import pathlib
import subprocess
import sys
import time
import unittest

PORTAL = str(pathlib.Path(sys.argv.pop(3)).resolve())

from window import DESKTOP, PATIENCE, WindowCase, now, wait_for  # pylint: disable=wrong-import-position

COMMAND, OPTION = 256, 2048
SPACE, J, N = 49, 38, 45


class HotkeyTest(WindowCase):
    def settings(self):
        file = self.home / "config" / "korvex" / "settings.json"
        return json.loads(file.read_text()) if file.exists() else {}

    def set(self, **settings):
        folder = self.home / "config" / "korvex"
        folder.mkdir(parents=True, exist_ok=True)
        (folder / "settings.json").write_text(json.dumps(self.settings() | settings))

    def set_shortcut(self, key, modifiers):
        shortcut = json.dumps({"keyCode": key, "modifiers": modifiers}).encode()
        self.set(quickEntryShortcut={"base64": base64.b64encode(shortcut).decode()})

    def shortcut(self):
        stored = self.settings().get("quickEntryShortcut")
        value = json.loads(base64.b64decode(stored["base64"])) if stored else {}
        return value.get("keyCode"), value.get("modifiers")

    def start_hidden(self):
        """Starts the app without a window; it ends with the test."""
        app = subprocess.Popen([DESKTOP, "--background"], env=self.environment,
                               stderr=subprocess.DEVNULL)
        self.addCleanup(self.end, app)
        wait_for(lambda: any(each.is_socket() for each in (self.home / "run").iterdir()),
                 "the app to take later starts")
        return app

    def seen(self):
        return self.xdotool("search", "--onlyvisible", "--name", "Korvex").split()

    def opens(self, *keys):
        """Whether a press brings Quick Entry into sight, with the keyboard."""
        deadline = time.monotonic() + PATIENCE
        while time.monotonic() < deadline:
            if not self.seen():  # another press would put away one that is late
                self.keys(*keys)
            for _ in range(40):
                if self.title().startswith("Quick Entry"):
                    return True
                time.sleep(0.05)
        return False

    def asks_a_running_app(self, *arguments):
        """A start that hands over what it is for; it must not become the app itself."""
        subprocess.run([DESKTOP, *arguments], env=self.environment, stderr=subprocess.DEVNULL,
                       check=True, timeout=PATIENCE)

    def goes_on(self, app):
        """Whether it still runs, some time after its last window has gone."""
        time.sleep(0.5)
        return app.poll() is None

    def capture(self):
        """A start for the panel alone, or what hands that over; it has the keyboard."""
        program = subprocess.Popen([DESKTOP, "--quick-entry"], env=self.environment,
                                   stderr=subprocess.DEVNULL)
        self.addCleanup(self.end, program)
        wait_for(lambda: self.title().startswith("Quick Entry"), "Quick Entry")
        return program

    def close_by_manager(self):
        self.keys("alt+F4")

    def test_in_the_background_a_press_brings_quick_entry_and_closing_leaves_it_ready(self):
        self.set_shortcut(N, COMMAND | OPTION)
        app = self.start_hidden()
        self.assertTrue(self.opens("ctrl+alt+n"))
        self.type("from anywhere")
        self.keys("Return")
        wait_for(lambda: not self.seen(), "the panel to go")
        self.assertEqual(self.texts(), ["from anywhere"])
        self.assertTrue(self.goes_on(app), "it was started for the background")
        self.asks_a_running_app()
        wait_for(lambda: "Inbox" in self.title(), "the main window")
        place = self.xdotool("getactivewindow", "getwindowgeometry", "--shell").split()[1:5]
        self.close_by_manager()
        time.sleep(0.3)
        self.assertTrue(self.seen(), "it asks first")
        self.keys("Return")  # "Keep Ready"
        wait_for(lambda: not self.seen(), "the window to go")
        self.assertEqual(self.settings()["whenMainWindowCloses"], "staysReady")
        self.assertTrue(self.opens("ctrl+alt+n"))
        self.keys("Escape")
        wait_for(lambda: not self.seen(), "the panel to go again")
        self.assertTrue(self.goes_on(app))
        # Nothing happens at a second start in the background; another one brings the window.
        self.asks_a_running_app("--background")
        time.sleep(0.5)
        self.assertFalse(self.seen())
        self.asks_a_running_app()
        wait_for(lambda: "Inbox" in self.title(), "the window")
        self.assertEqual(
            self.xdotool("getactivewindow", "getwindowgeometry", "--shell").split()[1:5], place)
        self.keys("ctrl+q")
        self.assertEqual(app.wait(PATIENCE), 0)

    def test_where_nothing_would_bring_it_back_it_ends_with_its_window(self):
        window = self.start_window()  # the window manager has Alt+Space
        self.close_by_manager()
        self.assertEqual(window.wait(PATIENCE), 0)

    def test_in_the_background_it_waits_for_the_desktops_own_key_too(self):
        app = self.start_hidden()  # the window manager has Alt+Space
        for _ in range(2):
            self.assertEqual(self.capture().wait(PATIENCE), 0, "it hands over")
            wait_for(lambda: self.title().startswith("Quick Entry"), "the panel")
            self.keys("Escape")
            wait_for(lambda: not self.seen(), "the panel to go")
            self.assertTrue(self.goes_on(app))

    def test_a_start_for_the_panel_alone_registers_nothing_and_ends_with_it(self):
        self.set_shortcut(N, COMMAND | OPTION)
        self.set(whenMainWindowCloses="staysReady")
        program = self.capture()
        time.sleep(0.5)
        self.keys("ctrl+alt+n")  # pressed as the shortcut, it would put the panel away
        time.sleep(0.5)
        self.assertTrue(self.seen())
        self.keys("Escape")
        self.assertEqual(program.wait(PATIENCE), 0)

    def open_pane(self):
        self.start_window()
        self.keys("ctrl+comma")
        wait_for(lambda: "Settings" in self.title(), "the settings")
        self.keys("Down", "Down", "Tab")  # to the pane, and to the shortcut in it

    def test_a_free_shortcut_is_one_press_away_and_works(self):
        self.open_pane()
        self.keys("Tab", "Return")
        wait_for(lambda: self.shortcut() == (SPACE, COMMAND | OPTION), "the first free one")
        self.keys("ctrl+alt+space")
        wait_for(lambda: self.title().startswith("Quick Entry"), "Quick Entry")

    def test_keys_that_somebody_has_are_recorded_and_take_no_working_ones_place(self):
        self.set_shortcut(N, COMMAND | OPTION)
        self.open_pane()
        self.keys("space")
        time.sleep(0.3)
        self.keys("ctrl+alt+n")  # its own
        time.sleep(0.3)
        self.assertIn("Settings", self.title(), "it is not pressed, but recorded")
        self.keys("space")
        time.sleep(0.3)
        self.keys("alt+space")  # the window manager's
        time.sleep(0.3)
        self.assertEqual(self.shortcut(), (N, COMMAND | OPTION), "it works, the other would not")
        self.keys("space")
        time.sleep(0.3)
        self.keys("ctrl+alt+j")
        wait_for(lambda: self.shortcut() == (J, COMMAND | OPTION), "the recorded one")
        self.keys("ctrl+alt+j")
        wait_for(lambda: self.title().startswith("Quick Entry"), "Quick Entry")


class WaylandTest(HotkeyTest):
    """As far as the program can tell."""

    def setUp(self):
        super().setUp()
        self.start_bus(with_services=False)
        self.environment["XDG_SESSION_TYPE"] = "wayland"

    def capture_with_reminder(self):
        """In the panel, which is open."""
        due = (now() + datetime.timedelta(hours=2)).replace(second=0)
        self.type("from Wayland")
        self.type_schedule(due)
        self.keys("Return")
        wait_for(lambda: self.texts() == ["from Wayland"], "it to be captured")
        self.check_schedules("Inbox", due)

    def test_on_wayland_the_desktop_reports_it(self):
        self.set_shortcut(N, COMMAND | OPTION)
        portal = subprocess.Popen([PORTAL], env=self.environment, text=True,
                                  stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        for stream in (portal.stdin, portal.stdout):
            self.addCleanup(stream.close)
        self.addCleanup(self.end, portal)
        self.assertEqual(portal.stdout.readline(), "ready\n")
        self.start_hidden()
        self.assertEqual(portal.stdout.readline(), "bound\n")
        self.keys("ctrl+alt+n")
        time.sleep(0.5)
        self.assertFalse(self.seen(), "no X server is asked for keys")
        portal.stdin.write("press\n")
        portal.stdin.flush()
        wait_for(lambda: self.title().startswith("Quick Entry"), "Quick Entry")
        self.capture_with_reminder()

    def test_on_wayland_without_a_portal_the_settings_give_a_command_for_the_desktops_own_key(self):
        self.open_pane()
        self.keys("Return")  # "Copy"
        paste = ["xclip", "-selection", "clipboard", "-o"]
        command = wait_for(lambda: subprocess.run(paste, env=self.environment, text=True, check=False,
                                                  capture_output=True).stdout, "the command")
        subprocess.run(command, shell=True, env=self.environment, check=True, timeout=PATIENCE)
        wait_for(lambda: self.title().startswith("Quick Entry"), "Quick Entry")
        self.capture_with_reminder()


def load_tests(loader, _tests, _pattern):
    wayland = [WaylandTest(name) for name in loader.getTestCaseNames(WaylandTest)
               if "wayland" in name]
    return unittest.TestSuite([loader.loadTestsFromTestCase(HotkeyTest), *wayland])


if __name__ == "__main__":
    unittest.main()
