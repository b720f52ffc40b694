#!/usr/bin/env python3
"""Tries run.py on recipes that are followed, that have faults, and whose lack nothing notices."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

RUNNER = Path(__file__).resolve().parent / "run.py"

RECIPE = """# Contributing

### A word

| File | What it gets | Noticed by |
|---|---|---|
| new: `words/NAME.txt` | The word. | `check.sh` |
| `list.txt` | Its name. | `check.sh` |

Example: [tests/recipes/word](tests/recipes/word).

### Nothing of the kind

Text.
"""

CHANGES = """== list.txt
---
# end
+++
toy
# end
"""

# Each word is in the list, and the other way round.
CHECK = """#!/bin/sh
for file in words/*.txt; do grep -qx "$(basename "$file" .txt)" list.txt || exit 1; done
grep -v '^#' list.txt | while read -r word; do test -e "words/$word.txt" || exit 1; done
"""


class Recipes(unittest.TestCase):
    def run_on(self, *arguments, **changed):
        """Runs on a tree with one recipe; @p changed are contents of its files, None for one that is not there."""
        files = {"CONTRIBUTING.md": RECIPE, "check.sh": CHECK, "list.txt": "old\n# end\n", "words/old.txt": "",
                 "tests/recipes/word/files/words/toy.txt": "", "tests/recipes/word/changes.txt": CHANGES, ".gitignore": "/build/\n"}
        names = {"recipe": "CONTRIBUTING.md", "check": "check.sh", "list": "list.txt", "changes": "tests/recipes/word/changes.txt",
                 "own": "tests/recipes/word/files/words/toy.txt", "other": "tests/recipes/word/files/other.txt",
                 "lost": "tests/recipes/lost/changes.txt", "there": "words/toy.txt"}
        files.update({names[key]: text for key, text in changed.items()})
        with tempfile.TemporaryDirectory() as folder:
            root = Path(folder)
            subprocess.run(["git", "init", "-q"], cwd=root, check=True)
            for name, text in files.items():
                if text is not None:
                    (root / name).parent.mkdir(parents=True, exist_ok=True)
                    (root / name).write_text(text)
                    (root / name).chmod(0o755)
            process = subprocess.run([sys.executable, RUNNER, "--root", root, *arguments], stdout=subprocess.PIPE,
                                     stderr=subprocess.STDOUT, text=True, check=False, timeout=300)
            if arguments != ("--check",):
                self.assertEqual((root / "list.txt").read_text(), files["list.txt"])
            return process.returncode, process.stdout

    def fault(self, **changed):
        status, output = self.run_on("--check", **changed)
        self.assertEqual(status, 2, output)
        return output

    def test_followed(self):
        self.assertEqual(self.run_on("--check"), (0, ""))
        status, output = self.run_on()
        self.assertEqual(status, 0, output)
        self.assertIn("noticed     A word without words/NAME.txt (check.sh: status 1)", output)
        self.assertIn("noticed     A word without list.txt (check.sh: status 1)", output)
        self.assertIn("1 recipes: 0 files whose lack nothing noticed, 0 errors", output)

    def test_not_noticed(self):
        status, output = self.run_on(check=CHECK.replace("|| exit 1; done\ngrep", "; done\ngrep"))
        self.assertEqual(status, 1, output)
        self.assertIn("NOT NOTICED A word without list.txt (check.sh)", output)
        self.assertIn("noticed     A word without words/NAME.txt (check.sh: status 1)", output)

    def test_example_that_fails(self):
        status, output = self.run_on(check="#!/bin/sh\necho broken; exit 1\n")
        self.assertEqual(status, 2, output)
        self.assertIn("check.sh fails with the whole example", output)
        self.assertIn("broken", output)
        self.assertEqual(self.run_on("none of it")[0], 2)

    def test_files_that_differ(self):
        self.assertIn("the table does not name other.txt", self.fault(other=""))
        self.assertIn("the example has no words/NAME.txt", self.fault(own=None))
        self.assertIn("words/toy.txt is not new", self.fault(there=""))
        self.assertIn("the example changes check.sh, list.txt, the table list.txt",
                      self.fault(changes=CHANGES + "\n== check.sh\n---\nfor file\n+++\nfor one\n"))
        self.assertIn("no file list.txt", self.fault(list=None))
        self.assertIn("no test check.sh", self.fault(check=None))
        self.assertIn("tests/recipes/lost belongs to no recipe", self.fault(lost=""))

    def test_changes_that_do_not_fit(self):
        self.assertIn("0 times in list.txt", self.fault(list="old\n"))
        self.assertIn("2 times in list.txt", self.fault(list="# end\n# end\n"))
        self.assertIn("unknown line: toy", self.fault(changes="toy\n"))

    def test_recipes_with_faults(self):
        row = "| `list.txt` | Its name. | `check.sh` |\n"
        self.assertIn("A word: 5 files", self.fault(recipe=RECIPE.replace(row, 4 * row)))
        self.assertIn("nothing notices that list.txt is forgotten", self.fault(recipe=RECIPE.replace(row, "| `list.txt` | Its name. | |\n")))
        self.assertIn("CONTRIBUTING.md has no recipes", self.fault(recipe="# Contributing\n"))


if __name__ == "__main__":
    unittest.main()
