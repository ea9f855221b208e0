"""Programs in a home of their own, for tests that run them as a user does."""
import os
import pathlib
import shutil
import subprocess
import tempfile
import time
import unittest


class ProgramCase(unittest.TestCase):
    """A home for each test, with nothing of the user's in the environment."""

    def setUp(self):
        """Once more in a test: it goes on as somebody else, with a home of their own."""
        self.home = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(self.remove, self.home)
        runtime = self.home / "run"
        runtime.mkdir(mode=0o700)
        self.environment = {
            "PATH": os.environ["PATH"], "HOME": str(self.home), "XDG_RUNTIME_DIR": str(runtime),
            "XDG_DATA_HOME": str(self.home / "data"), "XDG_CONFIG_HOME": str(self.home / "config"),
            "XDG_CACHE_HOME": str(self.home / "cache"), "TZ": "UTC", "LC_ALL": "C.UTF-8",
            "QT_QPA_PLATFORM": "offscreen", "NO_AT_BRIDGE": "1",
            "DBUS_SESSION_BUS_ADDRESS": "disabled:", "KORVEX_TRACE_STARTUP": "1",
        }
        if "ASAN_OPTIONS" in os.environ:
            self.environment["ASAN_OPTIONS"] = os.environ["ASAN_OPTIONS"]

    @staticmethod
    def remove(home):
        """What a program has started for itself ends with its bus, but a moment later."""
        deadline = time.monotonic() + 5
        while home.exists():
            shutil.rmtree(home, ignore_errors=time.monotonic() < deadline)
            time.sleep(0.02)

    @staticmethod
    def end(process):
        if process.poll() is None:
            process.terminate()
        process.wait()

    def painted_window(self, desktop, *arguments):
        """Starts the app, which ends with the test, and waits until its window is painted."""
        window = subprocess.Popen([desktop, *arguments], env=self.environment, stderr=subprocess.PIPE, text=True)
        self.addCleanup(window.stderr.close)
        self.addCleanup(self.end, window)
        line = window.stderr.readline()
        while line and "first paint" not in line:
            line = window.stderr.readline()
        self.assertIn("first paint", line, "the window is not painted")
        return window
