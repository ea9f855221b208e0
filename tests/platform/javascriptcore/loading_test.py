#!/usr/bin/env python3
"""loading_test.py KORVEX [DESKTOP]: the script engine is mapped by a window that shows code, and by
nothing else."""
import base64
import hashlib
import json
import pathlib
import subprocess
import sys
import time
import unittest

sys.path.append(str(pathlib.Path(__file__).resolve().parents[2] / "support"))
from program_case import ProgramCase

KORVEX, *DESKTOP = (str(pathlib.Path(argument).resolve()) for argument in sys.argv[1:3])
del sys.argv[1:3]
ENGINE = "javascript"  # in the names of the module and of the engine's library
PATIENCE = 60  # seconds; what is waited for takes a fraction of one


def formatted(text, language=None):
    """The stored form of a line, as code in a language or as plain text."""
    group = ""
    if language:
        metadata = {
            "fingerprint": base64.b64encode(hashlib.sha256(text.encode()).digest()).decode(),
            "runs": [{"location": 0, "length": len(text), "language": language, "block": False}],
        }
        group = "{\\*\\korvexcode " + base64.b64encode(json.dumps(metadata).encode()).decode() + "}"
    return "{\\rtf1\\ansi{\\fonttbl{\\f0\\fswiss Helvetica;}}\\f0\\fs26 " + text + group + "}"


class LoadingTest(ProgramCase):
    def korvex(self, *arguments):
        """Runs a command; gives back its output and what it loaded."""
        loaded = self.home / "loaded"
        result = subprocess.run(
            [KORVEX, *arguments], capture_output=True, text=True, check=True,
            env={**self.environment, "LD_DEBUG": "files", "LD_DEBUG_OUTPUT": str(loaded)})
        traces = list(self.home.glob("loaded.*"))
        names = "".join(trace.read_text(errors="replace") for trace in traces)
        for trace in traces:
            trace.unlink()
        self.assertIn("libicu", names, "the loader says nothing")
        return result.stdout, names

    def add_note(self, text, language=None):
        file = self.home / "note.rtf"
        file.write_text(formatted(text, language))
        return self.korvex("note", "--rtf", str(file))[0].strip()

    def window(self):
        """Starts the app; gives back what its process maps."""
        window = self.painted_window(*DESKTOP)
        return lambda: pathlib.Path(f"/proc/{window.pid}/maps").read_text()

    def test_no_command_loads_the_engine(self):
        note = self.add_note("return 42;", "cpp")
        for command in (["list"], ["show", note], ["show", note, "--as", "json"],
                        ["show", note, "--as", "rtf"], ["add", "x"], ["--help"]):
            output, loaded = self.korvex(*command)
            self.assertNotIn(ENGINE, loaded.lower(), command)
        # The note is code, or the rest proves nothing.
        self.assertIn('"cpp"', self.korvex("show", note, "--as", "json")[0])

    @unittest.skipUnless(DESKTOP, "no windows in this build")
    def test_a_window_without_code_loads_no_engine(self):
        self.add_note("no code at all")
        maps = self.window()
        # Whatever follows the first picture has happened by then.
        for _ in range(10):
            self.assertNotIn(ENGINE, maps())
            time.sleep(0.1)

    @unittest.skipUnless(DESKTOP, "no windows in this build")
    def test_a_window_that_shows_code_loads_the_engine(self):
        self.add_note("return 42;", "cpp")
        maps = self.window()
        deadline = time.monotonic() + PATIENCE
        while "libkorvex-javascript" not in maps() or "libjavascriptcore" not in maps():
            self.assertLess(time.monotonic(), deadline, "the engine is not loaded for code")
            time.sleep(0.05)


unittest.main()
