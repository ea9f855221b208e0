#!/usr/bin/env python3
"""kill_test.py DESKTOP KORVEX: ends the real window while something is typed into it, and compares what is
stored with what was typed.

Killed (SIGKILL) at random moments, it may lose the last two seconds of typing and nothing else; asked to end
(SIGTERM and its like), nothing at all. KORVEX_SEED repeats a run's moments."""
import concurrent.futures
import os
import pathlib
import random
import signal
import time
import unittest

from window import PATIENCE, Screen, WindowCase

KILLS = 52
SCREENS = 4  # side by side: most of the time is waiting
MAY_BE_LOST = 2.0  # seconds of typing
ON_ITS_WAY = 0.7  # seconds from the key to the disk, on a machine that does other things


class KilledWindow(WindowCase):
    """One screen's share of the kills, in one home."""

    def runTest(self):
        for _ in range(self.kills):
            self.type_and_kill()

    def type_and_kill(self):
        window = self.start_window()
        before = self.texts()
        kind = self.random.choice(["todo", "text", "edit"] if before else ["todo", "text"])
        if kind == "edit":
            self.keys("Home", "Return")
            typed = before[0]
        else:
            self.keys({"todo": "ctrl+n", "text": "ctrl+shift+t"}[kind])
            typed = ""
        moment = time.monotonic() + self.random.uniform(0.2, 4.5)
        safe = typed
        stages = []
        while time.monotonic() < moment:
            word = f"{self.random.choice('abcdefgh')}{len(stages)} "
            self.type(word)
            typed += word
            stages.append((time.monotonic(), typed))
            if self.random.random() < 0.05:
                time.sleep(self.random.uniform(0, 1.5))  # thinks
        window.kill()
        killed = time.monotonic()
        window.wait()
        for when, text in stages:
            if when < killed - MAY_BE_LOST - ON_ITS_WAY:
                safe = text
        after = self.texts()
        if len(after) == len(before) and kind != "edit":
            self.assertEqual(safe, "", "a new entry is lost")
            self.assertEqual(after, before)
            return
        others = before[1:] if kind == "edit" else before
        place = next((i for i in range(len(after)) if after[:i] + after[i + 1:] == others), None)
        self.assertIsNotNone(place, f"what nobody touched: {before} became {after}")
        written = after[place]
        self.assertTrue(typed.startswith(written), f"{written!r} was not typed: {typed!r}")
        self.assertTrue(written.startswith(safe.rstrip()), f"lost of {safe!r}: {written!r}")


class EndTest(WindowCase):
    def test_a_window_that_is_killed_loses_two_seconds_at_most(self):
        seed = int(os.environ.get("KORVEX_SEED", random.randrange(1 << 32)))
        print(f"KORVEX_SEED={seed}", flush=True)

        def run(number):
            case = KilledWindow()
            case.screen = Screen()
            case.random = random.Random(seed + number)
            case.kills = KILLS // SCREENS
            try:
                return case.run()
            finally:
                case.screen.close()

        with concurrent.futures.ThreadPoolExecutor(SCREENS) as pool:
            for result in pool.map(run, range(SCREENS)):
                for _, trace in result.failures + result.errors:
                    self.fail(trace)

    def test_a_window_that_is_asked_to_end_loses_nothing(self):
        for number, each in enumerate((signal.SIGTERM, signal.SIGHUP, signal.SIGINT)):
            with self.subTest(each.name):
                window = self.start_window()
                own = self.xdotool("getactivewindow").strip()
                width = 640 + 20 * number
                self.xdotool("windowsize", "--sync", own, str(width), "500")
                self.keys("ctrl+n")
                self.type(f"typed before {each.name}")
                time.sleep(0.2)  # until the window has the last key
                window.send_signal(each)
                window.send_signal(signal.SIGTERM)  # a session that ends sends several
                self.assertEqual(window.wait(PATIENCE), 0)
                self.assertEqual(self.texts()[-1], f"typed before {each.name}")
                window = self.start_window()
                geometry = self.xdotool("getactivewindow", "getwindowgeometry")
                self.assertIn(f"{width}x500", geometry)
                self.keys("ctrl+q")
                self.assertEqual(window.wait(PATIENCE), 0)
        self.assertFalse((pathlib.Path(self.environment["XDG_DATA_HOME"]) / "korvex/Drafts").exists())


unittest.main(verbosity=2, defaultTest="EndTest")
