"""The check of the floors, on small trees that hold and trees with one fault each."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

CHECK = sys.argv.pop(1)

GOOD = {
    "src/base/Clock.h": "#pragma once\n#include <chrono>\n",
    "src/store/Context.h": '#pragma once\n#include "base/Clock.h"\n',
    "src/store/salvage/Salvage.h": '#pragma once\n#include "store/Context.h"\n',
    "src/app/Settings.cpp": '#include "store/Context.h"\n#include <sqlite3.h>\n',
    "src/platform/systemd/Journal.h": '#pragma once\n#include "base/Clock.h"\n',
    "src/platform/qt/QtRunLoop.h": "#pragma once\n#include <QObject>\n",
    "src/richtext/text/Text.h": '#pragma once\n#include "base/Clock.h"\n',
    "src/richtext/table/Table.h": '#pragma once\n#include "richtext/text/Text.h"\n',
    "src/richtext/rtf/RtfReader.h": '#pragma once\n#include "richtext/text/Text.h"\n',
    "src/backup/Backup.cpp": '#include "richtext/rtf/RtfReader.h"\n',
    "src/cli/commands/Command.h": "#pragma once\n",
    "src/cli/main.cpp":
        '#include "cli/commands/Command.h"\n#include "platform/systemd/Journal.h"\n',
    "src/app/Settings.h": "#pragma once\n",
    "src/ui/kit/theme/Theme.h": '#pragma once\n#include "app/Settings.h"\n',
    "src/ui/kit/controls/Button.h": '#pragma once\n#include "ui/kit/theme/Theme.h"\n',
    "src/ui/kit/lists/List.h": '#pragma once\n#include "base/Clock.h"\n',
    "src/ui/kit/pages/Page.h":
        '#pragma once\n#include "ui/kit/controls/Button.h"\n#include "ui/kit/lists/List.h"\n',
    "src/ui/boards/Boards.h": '#pragma once\n#include "ui/kit/controls/Button.h"\n',
    "src/ui/overview/Upcoming.h": '#pragma once\n#include "ui/boards/Boards.h"\n',
    "src/ui/windows/Window.h": '#pragma once\n#include "ui/overview/Upcoming.h"\n',
    "src/ui/windows/Window.cpp":
        '#include "platform/qt/QtRunLoop.h"\n#include <QtWidgets>\n#include "Window.moc"\n',
    "src/desktop/main.cpp": '#include "ui/windows/Window.h"\n#include "platform/systemd/Journal.h"\n',
    "tests/base/ClockTest.cpp": "line\n" * 600,
}

FAULTS = [
    # A file to add or replace, its content, and what the check must say of it.
    ("src/base/Up.h", '#pragma once\n#include "store/Context.h"\n', "Up.h:2: base may not include"),
    ("src/app/Up.cpp", '#include "cli/commands/Command.h"\n', "app may not include cli/commands"),
    ("src/richtext/text/Up.cpp", '#include "richtext/table/Table.h"\n',
     "richtext/text may not include richtext/table"),
    ("src/richtext/rtf/Side.cpp", '#include "richtext/table/Table.h"\n',
     "richtext/rtf may not include richtext/table"),
    ("src/backup/Inside.cpp", '#include "richtext/rtf/RtfTokens.h"\n',
     "not for others than richtext/rtf"),
    ("src/richtext/Loose.cpp", "\n", "in no room of it"),
    ("src/richtext/attic/Loose.cpp", "\n", "in no room of it"),
    ("src/richtext/rtf/deep/Loose.cpp", "\n", "in no room of it"),
    ("src/store/Up.cpp", '#include "store/salvage/Salvage.h"\n', "store may not include store/salvage"),
    ("src/store/deep/Loose.cpp", "\n", "in no room of it"),
    ("src/backup/Roomless.cpp", '#include "richtext/Reader.h"\n',
     "not named from its floor and room on"),
    ("src/cli/commands/Door.cpp", '#include "cli/main.cpp"\n', "cli/commands may not include cli/main.cpp"),
    ("src/richtext/main.cpp", '#include "services/Service.h"\n',
     "richtext/main.cpp may not include services"),
    ("src/platform/systemd/Side.cpp", '#include "platform/qt/QtRunLoop.h"\n',
     "platform/systemd may not include platform/qt"),
    ("src/platform/qt/Side.cpp", '#include "platform/systemd/Journal.h"\n',
     "platform/qt may not include platform/systemd"),
    ("src/cli/commands/Side.cpp", '#include "ui/windows/Window.h"\n', "cli/commands may not include ui"),
    ("src/ui/kit/theme/Side.cpp", '#include "cli/commands/Command.h"\n',
     "ui/kit/theme may not include cli/commands"),
    ("src/ui/kit/pages/Up.cpp", '#include "ui/boards/Boards.h"\n',
     "ui/kit/pages may not include ui/boards"),
    ("src/ui/kit/controls/Up.cpp", '#include "ui/kit/pages/Page.h"\n',
     "ui/kit/controls may not include ui/kit/pages"),
    ("src/ui/kit/lists/Side.cpp", '#include "ui/kit/controls/Button.h"\n',
     "ui/kit/lists may not include ui/kit/controls"),
    ("src/ui/workspace/Up.cpp", '#include "ui/text/TextLook.h"\n',
     "ui/workspace may not include ui/text"),
    ("src/ui/kit/Loose.cpp", "\n", "in no room of it"),
    ("src/ui/boards/Roomless.cpp", '#include "ui/kit/Button.h"\n',
     "not named from its floor and room on"),
    ("src/ui/entries/Side.cpp", '#include "ui/overview/Upcoming.h"\n',
     "ui/entries may not include ui/overview"),
    ("src/ui/kit/theme/Theme.cpp", '#include "store/Context.h"\n',
     "ui/kit/theme may not include store"),
    ("src/ui/kit/lists/List.cpp", '#include "app/Settings.h"\n',
     "ui/kit/lists may not include app"),
    ("src/ui/Window.cpp", "\n", "in no room of it"),
    ("src/ui/windows/Roomless.cpp", '#include "ui/Button.h"\n',
     "not named from its floor and room on"),
    ("src/cli/commands/Adapter.cpp", '#include "platform/qt/QtRunLoop.h"\n',
     "cli/commands may not include platform/qt"),
    ("src/model/Qt.cpp", "#include <QString>\n", "model may not know Qt"),
    ("src/cli/commands/Qt.cpp", "  #  include <QtCore/qglobal.h>\n",
     "cli/commands may not know Qt"),
    ("src/platform/systemd/Qt.h", "#pragma once\n#include <QtDBus/QDBusConnection>\n",
     "platform/systemd may not know Qt"),
    ("src/store/Beside.cpp", '#include "Context.h"\n', "not named from its floor and room on"),
    ("src/store/Beside.cpp", '#include "../base/Clock.h"\n', "not named from its floor and room on"),
    ("src/store/Other.cpp", '#include "attic/Clock.h"\n', "not named from its floor and room on"),
    ("src/attic/Clock.cpp", "\n", "stands on no floor"),
    ("src/Loose.cpp", "\n", "stands on no floor"),
    ("src/store/Twice.h", "// #pragma once\n", "no #pragma once"),
    ("src/store/Long.cpp", "line\n" * 601, "601 lines"),
    ("tests/base/LongTest.cpp", "line\n" * 601, "601 lines"),
]


class CheckIncludes(unittest.TestCase):
    def run_on(self, files):
        with tempfile.TemporaryDirectory() as folder:
            for name, content in files.items():
                path = pathlib.Path(folder, name)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(content, encoding="utf-8")
            return subprocess.run([sys.executable, CHECK, folder], capture_output=True, text=True,
                                  check=False)

    def test_a_tree_that_holds_passes(self):
        result = self.run_on(GOOD)
        self.assertEqual((result.returncode, result.stdout), (0, "The floors hold.\n"))

    def test_each_fault_is_found_and_it_alone(self):
        for name, content, said in FAULTS:
            with self.subTest(name=name, said=said):
                result = self.run_on(GOOD | {name: content})
                self.assertEqual(result.returncode, 1)
                self.assertEqual(len(result.stdout.splitlines()), 1, result.stdout)
                self.assertIn(said, result.stdout)

    def test_a_folder_of_too_many_sources_is_found(self):
        crowd = {f"src/model/Record{number}.cpp": "\n" for number in range(61)}
        result = self.run_on(GOOD | crowd)
        self.assertEqual((result.returncode, result.stdout),
                         (1, "src/model: 61 sources, more than 60: give it rooms\n"))

    def test_a_folder_without_sources_is_no_proof(self):
        self.assertNotEqual(self.run_on({"README.md": ""}).returncode, 0)


unittest.main()
