#!/usr/bin/env python3
"""install_test.py CMAKE SOURCES PROGRAMS OPTION...: installs the programs that are built, and asks those who
are told of them: desktops, the bus, the session's start. OPTION: what the build's CMake was told."""
import os
import pathlib
import shlex
import subprocess
import sys
import unittest

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "support"))
from program_case import ProgramCase

CMAKE, SOURCES, PROGRAMS, *OPTIONS = sys.argv[1:]
del sys.argv[1:]

AUTOSTART = "autostart/dev.korvex.Agent.desktop"
WANTED = "lib/systemd/user/graphical-session.target.wants/korvex-agent.service"
INSTALLED = {
    "bin/korvex", "bin/korvex-agent", "bin/korvex-desktop", "bin/korvex-widget",
    "lib/korvex/libkorvex-javascript.so", "lib/systemd/user/korvex-agent.service", WANTED,
    "share/applications/dev.korvex.Korvex.desktop", "share/applications/dev.korvex.Widget.desktop",
    "share/dbus-1/services/dev.korvex.Agent.service", "share/dbus-1/services/dev.korvex.Korvex.service",
    "share/icons/hicolor/scalable/apps/korvex.svg",
    "share/icons/hicolor/symbolic/apps/korvex-symbolic.svg",
}


class InstallTest(ProgramCase):
    def install(self, prefix, **environment):
        """The paths are written when a build is configured; what is in it is built already."""
        build = self.home / "build"
        build.mkdir()
        (build / "bin").symlink_to(PROGRAMS)
        self.run_quietly(CMAKE, "-S", SOURCES, "-B", build, "-G", "Ninja", "-DKORVEX_TESTS=OFF",
                         f"-DCMAKE_INSTALL_PREFIX={prefix}", *OPTIONS)
        self.run_quietly(CMAKE, "--install", build, **environment)

    def run_quietly(self, *command, **environment):
        ran = subprocess.run(command, env=os.environ | environment, text=True, check=False,
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.assertEqual(ran.returncode, 0, ran.stdout)
        return ran.stdout

    @staticmethod
    def files(folder):
        return {str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir()}

    def test_desktops_the_bus_and_the_session_find_the_programs(self):
        prefix = self.home / "my programs"
        self.install(prefix)
        self.assertEqual(self.files(prefix) - {"share/applications/mimeinfo.cache"},
                         INSTALLED | {"etc/xdg/" + AUTOSTART})
        commands = 0
        for name in self.files(prefix):
            file = prefix / name
            if file.suffix == ".desktop":
                self.run_quietly("desktop-file-validate", file)
            if file.suffix in (".desktop", ".service"):
                for line in file.read_text().splitlines():
                    if line.startswith(("Exec=", "ExecStart=")):
                        program = shlex.split(line.split("=", 1)[1])[0]
                        self.assertTrue(os.access(program, os.X_OK), f"{name}: {line}")
                        commands += 1
        self.assertEqual(commands, 8)

        self.environment["XDG_DATA_DIRS"] = f"{prefix}/share"
        opener = self.run_quietly("gio", "mime", "x-scheme-handler/korvex", **self.environment)
        self.assertIn("Default application for “x-scheme-handler/korvex”: dev.korvex.Korvex.desktop",
                      opener)
        bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"],
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                               env=self.environment)
        self.addCleanup(bus.stdout.close)
        self.addCleanup(self.end, bus)
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().strip()
        self.run_quietly("gdbus", "call", "--session", "--dest", "dev.korvex.Agent", "--object-path", "/",
                         "--method", "org.freedesktop.DBus.Peer.Ping", **self.environment)

    def test_a_package_holds_what_is_installed_and_nothing_that_others_hold_too(self):
        root = self.home / "package"
        self.install("/usr", DESTDIR=str(root))
        self.assertEqual(self.files(root),
                         {"usr/" + name for name in INSTALLED} | {"etc/xdg/" + AUTOSTART})
        self.assertTrue((root / "usr" / WANTED).resolve().exists())


unittest.main()
