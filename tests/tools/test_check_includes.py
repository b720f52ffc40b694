#!/usr/bin/env python3
"""Tries tools/check-includes.py on trees that break its rules."""

import importlib.util
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
spec = importlib.util.spec_from_file_location("check_includes", ROOT / "tools/check-includes.py")
check_includes = importlib.util.module_from_spec(spec)
spec.loader.exec_module(check_includes)

TABLE = f"""{check_includes.TABLE_HEAD}
|---|---|---|---|
| `audio/` | | | nothing |
| `server/` | | | `audio/`, `client/Link.h` |
| `server/devices/` | | | nothing |
| `client/` | | | `audio/` |
"""


class CheckIncludes(unittest.TestCase):
    def faults(self, name, line):
        """What is wrong with a line of a file in a tree that has a header in each module."""
        with tempfile.TemporaryDirectory() as folder:
            root = Path(folder)
            subprocess.run(["git", "init", "-q", folder], check=True)
            files = {header: "" for header in ("audio/Sound.h", "server/Server.h", "server/devices/Device.h",
                                               "client/Client.h", "client/Link.h")}
            for file, text in dict(files, **{name: line + "\n"}).items():
                (root / file).parent.mkdir(parents=True, exist_ok=True)
                (root / file).write_text(text)
            return [fault for _, fault in check_includes.faults(folder, check_includes.modules(TABLE))]

    def test_what_the_table_allows(self):
        for line in ('#include "audio/Sound.h"', '#include "server/Server.h"', '#include "client/Link.h"',
                     "#include <vector>", "#include <QString>"):
            self.assertEqual(self.faults("server/A.cpp", line), [])

    def test_what_it_does_not(self):
        for line in ('#include "client/Client.h"', '#include "server/devices/Device.h"', '  # include "client/Client.h"'):
            self.assertEqual(len(self.faults("server/A.cpp", line)), 1, line)
        self.assertEqual(len(self.faults("client/A.h", '#include "server/Server.h"')), 1)
        self.assertEqual(len(self.faults("audio/A.cpp", '#include "server/Server.h"')), 1)

    def test_ways_around(self):
        for line in ("#include <server/Server.h>", '#include "../server/Server.h"', '#include "client/../server/Server.h"',
                     '#include "Server.h"'):
            self.assertEqual(len(self.faults("client/A.cpp", line)), 1, line)

    def test_files_outside_of_the_table(self):
        self.assertEqual(self.faults("other/A.cpp", ""), ["is in no module of the table"])


if __name__ == "__main__":
    unittest.main()
