"""The check with clang-tidy: it looks at many files as one, and must find what it finds one by one."""
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(sys.argv.pop(1)).resolve()

# A file's content, and what must be said of it.
FAULTS = {
    "Moved.cpp": ("#include <string>\nnamespace korvex { std::string twice(std::string text) {\n"
                  "    std::string taken = std::move(text);\n    return taken + text;\n} }\n",
                  "bugprone-use-after-move"),
    "Named.cpp": ("namespace korvex { int Wrong_name() { return 1; } }\n",
                  "readability-identifier-naming"),
    "Copied.cpp": ("#include <string>\n#include <vector>\nnamespace korvex {\n"
                   "std::size_t all(const std::vector<std::string>& texts) {\n    std::size_t sum = 0;\n"
                   "    for (const auto text : texts) {\n        sum += text.size();\n    }\n"
                   "    return sum;\n}\n}\n", "performance-for-range-copy"),
    "Sliced.cpp": ("namespace korvex { struct Base { int a = 0; };\nstruct Derived : Base { int b = 0; };\n"
                   "Base cut(const Derived& whole) { return whole; } }\n", "cppcoreguidelines-slicing"),
    "Implicit.cpp": ("namespace korvex { struct Implicit { Implicit(int) {} }; }\n",
                     "google-explicit-constructor"),
    "Empty.cpp": ("#include <string>\nnamespace korvex {\n"
                  "bool isEmpty(const std::string& text) { return text.size() == 0; }\n}\n",
                  "readability-container-size-empty"),
    "Unknown.cpp": ("namespace korvex { int broken() { return unheardOf(); } }\n",
                    "clang-diagnostic-error"),
}
# Each by itself is in order; together they are not.
ALIKE = "namespace korvex {\nnamespace {\nint local() { return %d; }\n} // namespace\nint f%d() { return local(); }\n}\n"
CLASHING = "namespace korvex {\nstatic int same() { return 1; }\nint g%d() { return same(); }\n}\n"


class Tidy(unittest.TestCase):
    def check(self, files):
        """The exit status and the output for a tree of these files."""
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder).resolve()
            for name in ("tools/check-tidy", ".clang-tidy"):
                (root / name).parent.mkdir(exist_ok=True)
                shutil.copy(ROOT / name, root / name)
            sources = root / "src" / "base"
            sources.mkdir(parents=True)
            commands = []
            for name, content in files.items():
                (sources / name).write_text(content, encoding="utf-8")
                commands.append({"directory": str(root), "file": str(sources / name),
                                 "command": f"c++ -std=c++20 -Wall -Wshadow -o {name}.o "
                                            f"-c {sources / name}"})
            (root / "compile_commands.json").write_text(json.dumps(commands), encoding="utf-8")
            run = subprocess.run([sys.executable, str(root / "tools" / "check-tidy"), str(root)],
                                 capture_output=True, text=True, check=False)
            return run.returncode, run.stdout + run.stderr

    def test_a_fault_of_each_kind_is_found_in_its_file_and_no_other(self):
        good = {f"Good{i}.cpp": ALIKE % (i, i) for i in range(3)}
        status, output = self.check({name: content for name, (content, _) in FAULTS.items()} | good)
        self.assertEqual(status, 1, output)
        for name, (_, finding) in FAULTS.items():
            self.assertRegex(output, rf"{name}:\d+:\d+: error: .*\[{finding}")
        self.assertNotIn("Good", output)
        self.assertIn(f"{len(FAULTS)} with findings", output)

    def test_files_that_do_not_go_together_pass_by_themselves(self):
        status, output = self.check({f"File{i}.cpp": CLASHING % i for i in range(6)})
        self.assertEqual(status, 0, output)

    def test_it_does_not_pass_when_it_looks_at_nothing(self):
        status, output = self.check({})
        self.assertEqual(status, 1, output)
        self.assertIn("compiles nothing", output)


unittest.main()
