#!/usr/bin/env python3
"""Tries tools/check-waits.py on tests that wait."""

import importlib.util
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
spec = importlib.util.spec_from_file_location("check_waits", ROOT / "tools/check-waits.py")
check_waits = importlib.util.module_from_spec(spec)
spec.loader.exec_module(check_waits)


class CheckWaits(unittest.TestCase):
    def faults(self, name, text, stalls=None):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["git", "init", "-q", folder], check=True)
            path = Path(folder) / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text + "\n")
            return list(check_waits.faults(folder, stalls or {}))

    def test_waits(self):
        for line in ("QTest::qWait(30);", "QTRY_VERIFY((QTest::qWait(5), done()));", "QTest::qSleep(10);", "QThread::msleep(20);",
                     "std::this_thread::sleep_for(std::chrono::milliseconds(50));", "g_usleep(1000);", "time.sleep(0.1)"):
            self.assertEqual(len(self.faults("tests/a/tst_a.cpp", line)), 1, line)

    def test_what_is_allowed(self):
        for line in ("QVERIFY(QTest::qWaitFor([&] { return done(); }, 100));", "QTest::qSleep(1);", "// QTest::qWait(30);",
                     "std::this_thread::sleep_for(std::chrono::milliseconds(1));"):
            self.assertEqual(self.faults("tests/a/tst_a.cpp", line), [], line)
        self.assertEqual(self.faults("src/A.cpp", "QThread::msleep(20);"), [])

    def test_exceptions(self):
        stalls = {"tests/a.cpp": (1, "a stall")}
        self.assertEqual(self.faults("tests/a.cpp", "g_usleep(5);", stalls), [])
        self.assertEqual(len(self.faults("tests/a.cpp", "g_usleep(5);\ng_usleep(5);", stalls)), 2)
        self.assertEqual(len(self.faults("tests/a.cpp", "", stalls)), 1)


if __name__ == "__main__":
    unittest.main()
