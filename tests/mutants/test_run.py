#!/usr/bin/env python3
"""Tries run.py on a tree of two files, with changes that are noticed, are not, and cannot be tried."""

import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

RUNNER = Path(__file__).resolve().parent / "run.py"

TREE = {
    ".gitignore": "/build/\n",
    "CMakePresets.json": """{"version": 6, "configurePresets": [{"name": "mutants", "generator": "Ninja",
        "binaryDir": "${sourceDir}/build/mutants", "cacheVariables": {"CMAKE_BUILD_TYPE": "Debug"}}]}""",
    "CMakeLists.txt": """cmake_minimum_required(VERSION 3.25)
project(Sample LANGUAGES CXX)
enable_testing()
foreach(test tst_sum tst_broken)
    add_executable(${test} sum.cpp ${test}.cpp)
    add_test(NAME ${test} COMMAND ${test})
    set_tests_properties(${test} PROPERTIES TIMEOUT 2 ENVIRONMENT "SUMMAND=2")
endforeach()
""",
    "sum.cpp": """int sum(int a, int b)
{
    int result = a;
    for (int i = 0; i < b; ++i) {
        ++result;
    }
    return result;
}
// twice
// twice
""",
    "tst_sum.cpp": """#include <cstdlib>
int sum(int a, int b);
int main(int argc, char**)
{
    return argc == 1 && sum(1, std::atoi(std::getenv("SUMMAND"))) != 3 ? 1 : 0;
}
""",
    "tst_broken.cpp": "int main() { return 1; }\n",
}

NOTICED = """# A comment.
== starts too high
file: sum.cpp
test: tst_sum
---
    int result = a;
+++
    int result = a + 1;

# Another comment.
== never ends
file: sum.cpp
test: tst_sum
---
    for (int i = 0; i < b; ++i) {
+++
    for (volatile int i = 0; i < b;) {

== crashes
file: sum.cpp
test: tst_sum
---
    return result;
+++
    __builtin_trap();

== adds nothing
file: sum.cpp
test: tst_sum
---
        ++result;
+++
"""

ENTRY = """== {title}
file: {file}
test: {test}
args: {args}
---
{old}
+++
{new}
"""


def entry(title, file="sum.cpp", test="tst_sum", args=" ", old="    int result = a;", new="    int result = 7;"):
    return ENTRY.format(title=title, file=file, test=test, args=args, old=old, new=new)


class RunnerTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.root = Path(self.folder.name)
        self.tree = dict(TREE)
        for name in self.tree:
            self.append(name, "")
        (self.root / "tests/mutants").mkdir(parents=True)
        subprocess.run(["git", "init", "-q"], cwd=self.root, check=True)

    def tearDown(self):
        self.folder.cleanup()

    def append(self, name, text):
        self.tree[name] += text
        (self.root / name).write_text(self.tree[name])

    def run_list(self, text, *arguments):
        (self.root / "tests/mutants/sample.mutants").write_text(text)
        process = subprocess.run([sys.executable, RUNNER, "--root", self.root, *arguments], stdout=subprocess.PIPE,
                                 stderr=subprocess.STDOUT, text=True, check=False, timeout=300)
        for name, contents in self.tree.items():
            self.assertEqual((self.root / name).read_text(), contents)
            if (self.root / "build/mutants/tree" / name).exists():
                self.assertEqual((self.root / "build/mutants/tree" / name).read_text(), contents)
        return process.returncode, process.stdout

    def test_noticed_and_kept(self):
        status, output = self.run_list(NOTICED)
        self.assertEqual(status, 0, output)
        self.assertIn("4 mutants: 4 noticed, 0 not noticed, 0 errors", output)
        self.assertIn("never ends (tst_sum: did not end", output)
        self.assertIn("crashes (tst_sum: ended by signal", output)
        self.append("tst_broken.cpp", "// does not matter to the other test\n")
        status, output = self.run_list(NOTICED)
        self.assertEqual((status, output), (0, "4 mutants: 4 noticed, 0 not noticed, 0 errors\n"))
        status, output = self.run_list(NOTICED.replace("a + 1", "a + 2"), "too high")
        self.assertEqual(len(re.findall("^noticed", output, re.MULTILINE)), 1, output)
        self.assertIn("1 mutants: 1 noticed", output)
        self.append("sum.cpp", "// changed\n")
        status, output = self.run_list(NOTICED, "too high")
        self.assertEqual(len(re.findall("^noticed", output, re.MULTILINE)), 1, output)

    def test_survivors_and_errors(self):
        status, output = self.run_list(entry("survives", args="-quiet"))
        self.assertEqual(status, 1, output)
        self.assertIn("NOT NOTICED sample: survives", output)
        self.assertIn("1 mutants: 0 noticed, 1 not noticed, 0 errors", output)
        status, output = self.run_list(
            entry("no such lines", old="    int result = b;") + entry("twice there", old="// twice") +
            entry("no such file", file="none.cpp") + entry("no such test", test="tst_none") +
            entry("does not compile", new="    int result = c;") + entry("fails as it is", test="tst_broken"))
        self.assertEqual(status, 2, output)
        self.assertNotEqual(self.run_list(entry("no such lines", old="    int result = b;"), "--check")[0], 0)
        self.assertEqual(self.run_list(entry("fits"), "--check"), (0, ""))
        for line in ("no such lines: the old lines stand 0 times", "twice there: the old lines stand 2 times",
                     "no such file: no file none.cpp", "no such test: no test tst_none",
                     "does not compile: does not compile", "fails as it is: tst_broken fails in the unchanged tree"):
            self.assertIn("ERROR       sample: " + line, output)
        self.assertIn("6 mutants: 0 noticed, 0 not noticed, 6 errors", output)

    def test_broken_lists(self):
        for text, message in ((entry("a").replace("file:", "fil:"), "unknown line"),
                              (entry("a").replace("test: tst_sum\n", ""), "missing"),
                              (entry("a", new="    int result = a;"), "changes nothing"),
                              (entry("a") + entry("a"), "stands twice"), ("", "0 mutants")):
            status, output = self.run_list(text)
            self.assertEqual(status, 2, output)
            self.assertIn(message, output)


if __name__ == "__main__":
    unittest.main()
