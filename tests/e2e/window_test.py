#!/usr/bin/env python3
"""window_test.py DESKTOP KORVEX: drives the real window on a screen of its own, with a window manager,
by keyboard, and reads back what was stored with the command line.

Every test has a home of its own. The window is asked nothing but what a person sees: what is typed
goes through the X server, and what is stored is read by another program."""
import base64
import contextlib
import fcntl
import json
import os
import signal
import subprocess
import time
import unittest
import uuid

from window import DESKTOP, KORVEX, PATIENCE, WindowCase, wait_for


class WindowTest(WindowCase):
    def picture(self):
        """What is on the screen, pixel by pixel."""
        return subprocess.run(["import", "-window", "root", "-depth", "8", "rgb:-"],
                              env=self.environment, capture_output=True, check=True).stdout

    def changed(self, before):
        """Whether the screen shows more that is new than a caret that blinks."""
        now = self.picture()
        return sum(old != new for old, new in zip(before[1::3], now[1::3])) > 400

    def still_picture(self):
        """What is on the screen once nothing moves there."""
        def unchanged():
            first = self.picture()
            return first if self.picture() == first and self.picture() == first else None

        return wait_for(unchanged, "the screen to stand still")

    @staticmethod
    def tinted(picture):
        """How many pixels have a little colour, as the ground of what is chosen has."""
        return sum(6 < max(pixel) - min(pixel) < 80
                   for pixel in zip(picture[0::3], picture[1::3], picture[2::3]))

    def wait_for_row_to_leave(self, ticked):
        wait_for(lambda: self.changed(ticked), "the ticked row to leave")
        self.still_picture()

    def press_control(self, place):
        """The control of the format bar that Tab comes to after `place` steps."""
        self.keys("F6", *["Tab"] * place, "Return")

    def test_a_todo_is_typed_scheduled_ticked_and_stored(self):
        self.start_window()
        self.keys("ctrl+n")
        self.type("Buy milk")
        self.keys("Return")
        self.type("Water plants")
        self.keys("Escape")
        wait_for(lambda: self.texts() == ["Buy milk", "Water plants"], "both todos to be stored")

        self.keys("Home", "ctrl+d", "Tab", "Return")  # the second button says "Tomorrow"
        wait_for(lambda: self.stored()[0].get("dueLabel") == "Tomorrow", "the schedule")
        self.assertNotIn("dueDay", self.stored()[1])

        self.keys("space")
        wait_for(lambda: self.texts() == ["Water plants"], "the ticked todo to be completed")
        ticked = self.picture()
        self.assertEqual(self.texts("--completed"), ["Buy milk"])
        # Its row leaves; then the keyboard is on the other todo, which can be changed in its place.
        self.wait_for_row_to_leave(ticked)
        self.keys("Return")
        self.type(" today")
        self.keys("Escape")
        wait_for(lambda: self.texts() == ["Water plants today"], "the edited todo")

    def test_a_change_from_outside_appears_while_something_is_typed(self):
        self.korvex("add", "first")
        self.start_window()
        self.keys("ctrl+n")
        self.type("typed ")
        before = self.still_picture()
        self.korvex("add", "from outside")
        wait_for(lambda: self.changed(before), "the change to appear")
        self.type("here")
        # The window knows the new todo: two up from the draft stands the first one.
        self.keys("Up", "Up")
        self.type("!")
        self.keys("Escape")
        wait_for(lambda: self.texts() == ["first!", "from outside", "typed here"],
                 "all three todos")

    def test_the_board_chosen_last_is_shown_again(self):
        self.korvex("board", "add", "Work")
        window = self.start_window()
        self.keys("ctrl+2", "ctrl+n")
        self.type("on the second board")
        self.keys("Escape", "ctrl+q")
        self.assertEqual(window.wait(PATIENCE), 0)
        self.start_window()
        self.keys("ctrl+n")
        self.type("there again")
        self.keys("Escape")
        wait_for(lambda: self.texts("Work") == ["on the second board", "there again"],
                 "both todos on the board")

    def test_a_formatted_text_is_typed_stored_and_shown_again(self):
        window = self.start_window()
        self.keys("ctrl+shift+t", "ctrl+alt+1")
        self.type("Trip to Lisbon")
        self.keys("Return")
        self.type("We land on ")
        self.keys("ctrl+b")
        self.type("Friday")
        self.keys("ctrl+b")
        self.type(", see ")
        self.keys("ctrl+shift+k")
        self.type("example.org")
        self.keys("Return", "Return", "ctrl+shift+8")
        self.type("Pack")
        self.keys("Return", "Tab")
        self.type("Passport")
        self.keys("Return", "shift+Tab")
        self.type("Tell Ada")
        self.keys("Return", "Return")  # out of the list

        self.press_control(9)
        self.type("3")
        self.keys("Tab")
        self.type("4")
        self.keys("Return")
        for cell in range(12):
            self.type(f"cell {cell}")
            if cell < 11:
                self.keys("Tab")
        self.keys("Down")
        self.press_control(8)
        self.type("int main() {")
        self.keys("Return")
        self.type("return 1; }")
        before = self.still_picture()
        self.press_control(9)  # the one for tables is passed over in code
        self.type("c++")
        # Until the languages are known, none is found.
        wait_for(lambda: self.tinted(self.still_picture()) > self.tinted(before) + 2000,
                 "the language to be found")
        self.keys("Return", "Escape")

        entry = wait_for(lambda: self.stored(), "the text to be stored")[0]
        stored = json.loads(self.korvex("show", entry["id"], "--as", "json"))
        cells = [f"cell {cell}\n" for cell in range(12)]
        lines = ["Trip to Lisbon\n", "We land on Friday, see https://example.org\n", "Pack\n",
                 "Passport\n", "Tell Ada\n", *cells, "\n", "int main() {\n", "return 1; }"]
        self.assertEqual(stored["text"], "".join(lines))

        def part(run):
            return stored["text"][run["location"]:run["location"] + run["length"]]

        runs = {part(run): run["attributes"] for run in stored["runs"]}
        plain = {"font": "system", "size": 13}
        self.assertEqual(runs, {
            "Trip to Lisbon\n": {"font": "system", "size": 20, "bold": True},
            "We land on ": plain,
            "Friday": plain | {"bold": True},
            ", see ": plain,
            "https://example.org": plain | {"link": "https://example.org"},
            "\nPack\nPassport\nTell Ada\n": plain,
            "".join(cells[:3]): plain | {"bold": True},
            "".join(cells[3:]) + "\n": plain,
            "int main() {\nreturn 1; }": {"font": "monospaced", "size": 13,
                                          "korvexCodeLanguage": "cpp", "korvexCodeBlock": True},
        })
        styles = {part(paragraph): paragraph["style"] for paragraph in stored["paragraphs"]}
        markers = {line: [each["marker"] for each in style.get("lists", [])]
                   for line, style in styles.items() if "lists" in style}
        self.assertEqual(markers, {"Pack\n": ["{disc}"], "Passport\n": ["{disc}", "{circle}"],
                                   "Tell Ada\n": ["{disc}"]})
        places = {line: (style["cells"][0]["row"], style["cells"][0]["column"])
                  for line, style in styles.items() if "cells" in style}
        self.assertEqual(places, {cell: (i // 3, i % 3) for i, cell in enumerate(cells)})

        self.keys("Home")
        before = self.still_picture()  # with the colours of the code
        self.keys("ctrl+q")
        self.assertEqual(window.wait(PATIENCE), 0)
        self.start_window()
        self.keys("Home")
        wait_for(lambda: self.picture() == before, "the text to look as before")
        self.assertEqual(json.loads(self.korvex("show", entry["id"], "--as", "json")), stored)

    def everything(self):
        """All that is stored of the Inbox, open and completed; but when it was changed last, which
        an undo is too."""
        entries = self.stored() + self.stored("--completed")
        return [{key: value for key, value in entry.items() if key != "updatedAt"} for entry in entries]

    def test_a_week_is_scheduled_ticked_deleted_undone_redone_and_found(self):
        ticket = self.home / "ticket.txt"
        ticket.write_text("seat 12A")
        self.korvex("note", "Trip to Lisbon", "--attach", str(ticket))
        self.start_window()
        self.keys("ctrl+n")
        for line in ("Pay the rent", "Call the dentist", "Return library books", "Water plants"):
            self.type(line)
            self.keys("Return")
        self.keys("Escape")
        wait_for(lambda: len(self.texts()) == 5, "what was typed")
        first = self.everything()

        self.keys("Home", "Down", "ctrl+d", "Tab", "Return")  # "Tomorrow"
        wait_for(lambda: "dueDay" in self.stored()[1], "the first schedule")
        self.keys("Down", "ctrl+d", "Return")  # "Today"
        wait_for(lambda: "dueDay" in self.stored()[2], "the second schedule")
        self.keys("Down", "space")
        wait_for(lambda: len(self.texts()) == 4, "the tick")
        self.wait_for_row_to_leave(self.picture())
        self.keys("alt+Up")
        wait_for(lambda: self.texts()[2] == "Water plants", "the move")
        self.keys("Home", "Delete")
        wait_for(lambda: len(self.texts()) == 3, "the deletion")
        last = self.everything()

        self.keys(*["ctrl+z"] * 5)
        wait_for(lambda: self.everything() == first, "everything as it was, the attachment too")
        self.keys(*["ctrl+shift+z"] * 5)
        wait_for(lambda: self.everything() == last, "everything as it became")

        for word, whole in (("plan", "Water plants"), ("dentist call", "Call the dentist")):
            self.keys("ctrl+f")
            self.type(word)
            self.keys("Return")  # opens the board with the entry selected
            self.keys("Return")  # which is edited then
            self.type("!")
            self.keys("Escape")
            wait_for(lambda whole=whole: whole + "!" in self.texts(), f"{whole} to be found")

    def choose_folder_for_backups(self, mark):
        """As the settings do."""
        chosen = self.home / "backups"
        chosen.mkdir()
        (chosen / ".korvex-backup-folder").write_text(f"{mark}\n")
        bookmark = base64.b64encode(b"KVXFLDR1" + mark.bytes + os.fsencode(chosen)).decode()
        settings = self.home / "config" / "korvex" / "settings.json"
        settings.parent.mkdir(parents=True)
        settings.write_text(json.dumps({"automaticBackupEnabled": True,
                                        "automaticBackupBookmark": {"base64": bookmark}}))
        return chosen

    def test_a_backup_that_fell_due_is_made_at_the_start_and_of_the_users_own_store_only(self):
        chosen = self.choose_folder_for_backups(uuid.uuid4())
        other = str(self.home / "other")
        window = self.start_window("--data-dir", other)
        self.keys("ctrl+n")
        self.type("of another store")
        self.keys("Return", "Escape")
        wait_for(lambda: "of another store" in self.korvex("--data-dir", other, "list"), "the todo")
        self.keys("ctrl+q")
        self.assertEqual(window.wait(PATIENCE), 0)
        self.assertEqual(os.listdir(chosen), [".korvex-backup-folder"])

        self.korvex("add", "of the user")
        self.start_window()
        backups = wait_for(lambda: list(chosen.glob("Korvex Automatic Backups */Korvex-*.korvexbackup")),
                           "the backup")
        self.assertIn("of the user", backups[0].read_text())
        self.assertEqual(len(json.loads(self.korvex("backup", "list"))), 1)

    def test_settings_are_followed_and_kept_beside_other_programs(self):
        work = json.loads(self.korvex("board", "add", "Work"))["id"]
        window = self.start_window()
        settings = self.home / "config" / "korvex" / "settings.json"
        before = self.still_picture()
        theirs = settings.with_name("theirs.json")
        theirs.write_text(json.dumps(json.loads(settings.read_text()) | {"fontSize": 24}))
        theirs.rename(settings)
        wait_for(lambda: self.changed(before), "the larger texts")
        before = self.still_picture()
        with settings.with_name("settings.json.lock").open("w") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            self.keys("ctrl+2")
            wait_for(lambda: self.changed(before), "the other board")
        wait_for(lambda: json.loads(settings.read_text()).get("mainBoardSelectedBoardID") == work,
                 "the board to be kept")
        window.kill()
        window.wait(PATIENCE)
        self.assertEqual(json.loads(settings.read_text())["fontSize"], 24)

    def test_a_folder_that_does_not_answer_keeps_no_window_from_ending(self):
        chosen = self.choose_folder_for_backups(uuid.uuid4())
        asked = []
        before = signal.signal(signal.SIGIO, lambda *_: asked.append(True))
        self.addCleanup(signal.signal, signal.SIGIO, before)
        with (chosen / ".korvex-backup-folder").open("r+") as mark:
            try:  # who opens it waits until the lease is given back
                fcntl.fcntl(mark, fcntl.F_SETLEASE, fcntl.F_WRLCK)
            except OSError as error:
                self.skipTest(f"no leases here: {error}")
            window = self.start_window()
            wait_for(lambda: asked, "the backup to begin")
            self.keys("ctrl+q")
            self.assertEqual(window.wait(PATIENCE), 0)
            self.start_window()  # and none that is raised in its place

    def test_a_second_start_raises_the_first_window(self):
        window = self.start_window()
        self.start_second()
        self.assertIsNone(window.poll())
        self.assertEqual(len(self.windows()), 1)

    def test_a_link_leads_to_its_entry_in_the_running_window_and_in_a_new_one(self):
        self.korvex("board", "add", "Work")
        self.korvex("add", "--board", "Work", "Call Ada", "Call Ben")
        link = "korvex://entry/" + self.stored("Work")[0]["id"]
        window = self.start_window()
        self.painted_window(DESKTOP, "--data-dir", str(self.home / "other"))
        wait_for(lambda: "other" in self.title(), "another window in front")
        # As a launcher does, with the moment of the user's press.
        leave = {"DESKTOP_STARTUP_ID": f"test_TIME{int(time.monotonic() * 1000)}"}
        subprocess.run([KORVEX, "open", link], env=self.environment | leave, timeout=PATIENCE,
                       check=True)
        wait_for(lambda: self.title() == "Work – Korvex", "the first window to come forward")
        self.keys("Return")
        self.type("!")
        self.keys("Escape")
        wait_for(lambda: self.texts("Work") == ["Call Ada!", "Call Ben"], "the entry to be chosen")

        self.keys("ctrl+q")
        self.assertEqual(window.wait(PATIENCE), 0)
        self.painted_window(KORVEX, "korvex://board/inbox")
        wait_for(lambda: self.title() == "Inbox – Korvex", "a new window")

    def start_without_store(self):
        """The program, and not yet its main window."""
        window = subprocess.Popen([DESKTOP], env=self.environment, stderr=subprocess.DEVNULL)
        self.addCleanup(self.end, window)
        wait_for(lambda: self.title() == "Korvex", "a window that says why it is not the main one")
        return window

    def wait_for_words(self, wanted):
        """Until the active window says this somewhere on the way down its left side."""
        def copied():
            for y in range(40, 400, 14):
                window = self.xdotool("getactivewindow").strip()
                self.xdotool("mousemove", "--window", window, "160", str(y), "click", "1")
                self.keys("ctrl+a", "ctrl+c")
                if wanted in subprocess.run(["xclip", "-out", "-selection", "clipboard"],
                                            env=self.environment, text=True, capture_output=True,
                                            check=False).stdout:
                    return True
            return False

        wait_for(copied, f"the words {wanted}")

    @contextlib.contextmanager
    def store_of_others(self):
        """Another program has the store for as long."""
        folder = self.home / "data" / "korvex"
        folder.mkdir(parents=True, exist_ok=True)
        with (folder / "Primary.store.lock").open("w") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            yield

    def windows(self):
        return self.xdotool("search", "--onlyvisible", "--name", "Korvex").split()

    def start_second(self):
        second = subprocess.run([DESKTOP], env=self.environment, timeout=PATIENCE, check=False)
        self.assertEqual(second.returncode, 0)

    def test_a_store_that_others_have_is_waited_for_in_one_window(self):
        with self.store_of_others():
            begin = time.monotonic()
            window = self.start_without_store()
            waiting = self.windows()
            self.assertEqual(len(waiting), 1)
            self.xdotool("windowminimize", "--sync", *waiting)
            self.start_second()
            wait_for(lambda: self.title() == "Korvex", "the one that waits to come forward")
            self.assertEqual(self.windows(), waiting)
            time.sleep(max(0, begin + 2 - time.monotonic()))
        wait_for(lambda: "Inbox" in self.title(), "the main window")
        self.assertEqual(len(self.windows()), 1)
        self.start_second()
        self.assertIsNone(window.poll())
        self.assertEqual(len(self.windows()), 1)

    def test_who_does_not_want_to_wait_for_the_store_leaves(self):
        with self.store_of_others():
            for key in ("alt+F4", "Escape", "ctrl+q"):
                window = self.start_without_store()
                self.keys(key)
                self.assertEqual(window.wait(PATIENCE), 0, key)
        self.start_window()

    def test_a_store_of_an_older_version_that_cannot_be_read_is_named(self):
        legacy = self.home / "data" / "Korvex" / "default.store"
        legacy.parent.mkdir(parents=True)
        legacy.write_bytes(b"something else of the user's")
        self.start_without_store()
        self.wait_for_words(str(legacy))

    def test_a_file_that_is_no_store_is_refused_and_kept(self):
        folder = self.home / "data" / "korvex"
        folder.mkdir(parents=True)
        store = folder / "Primary.store"
        store.write_bytes(b"something else of the user's")
        window = self.start_without_store()
        self.wait_for_words("korvex store repair")

        def ends_by_its_button():
            # Somewhere behind the words.
            self.keys("Tab", "Return")
            return window.poll() is not None

        wait_for(ends_by_its_button, "the window to end")
        self.assertEqual(window.returncode, 3)
        self.assertEqual(store.read_bytes(), b"something else of the user's")


class WindowWithBusTest(WindowTest):
    """The same with a session bus, over which the programs tell each other of changes."""

    with_bus = True

    def agent(self):
        return json.loads(self.korvex("agent", "status"))

    def test_the_window_has_the_agent_with_it_and_again_when_it_was_killed(self):
        self.assertFalse(self.agent()["isRunning"])
        self.start_window()
        wait_for(lambda: self.agent()["isRunning"], "the agent to be started")
        first = self.agent()["process"]
        os.kill(first, signal.SIGKILL)
        wait_for(lambda: self.agent().get("process", first) != first, "another agent")


unittest.main(verbosity=2)
