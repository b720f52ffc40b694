#!/usr/bin/env python3
"""Tries tools/check-words.py on trees that have faults."""

import importlib.util
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
spec = importlib.util.spec_from_file_location("check_words", ROOT / "tools/check-words.py")
check_words = importlib.util.module_from_spec(spec)
spec.loader.exec_module(check_words)


class CheckWords(unittest.TestCase):
    def faults(self, files, exceptions=None):
        """The faults of a tree with the protocol's headers and some files."""
        with tempfile.TemporaryDirectory() as folder:
            root = Path(folder)
            subprocess.run(["git", "init", "-q", folder], check=True)
            for header in (*check_words.HEADERS, check_words.LIMITS):
                files = dict(files, **{header: (ROOT / header).read_text()})
            for name, text in files.items():
                (root / name).parent.mkdir(parents=True, exist_ok=True)
                (root / name).write_text(text)
            real = check_words.EXCEPTIONS
            check_words.EXCEPTIONS = exceptions or {}
            try:
                return list(check_words.faults(root, check_words.words_of(root), check_words.limits_of(root)))
            finally:
                check_words.EXCEPTIONS = real

    def test_words_in_each_module(self):
        for folder in check_words.FOLDERS:
            self.assertEqual(self.faults({folder + "A.cpp": '\nauto a = QStringLiteral("StartTalk");\n'}),
                             [(folder + "A.cpp:2", '"StartTalk" is Vocabulary::StartTalk')])

    def test_kinds_of_words(self):
        for text, constant in (("deviceID", "Vocabulary::deviceID"), ("GetCamera", "Words::GetCamera"),
                               ("401", "ReturnCode::noSuchDevice"), ("-2", "Vocabulary::returnCodeFileRefused")):
            self.assertEqual(self.faults({"desk/A.h": f'f("{text}");'}), [("desk/A.h:1", f'"{text}" is {constant}')])

    def test_limits(self):
        for number, constant in (("65535", "maxPort"), ("32 << 20", "maxFileBytes"), ("33554432U", "maxFileBytes"),
                                 ("48U << 20U", "maxMessageToServerBytes"), ("qint64{32} << 20", "maxFileBytes")):
            (place, fault), = self.faults({"client/A.cpp": f"int a = {number}; // 65536"})
            self.assertEqual((place, fault.split()[-1]), ("client/A.cpp:1", "Limits::" + constant))
        self.assertEqual(len(self.faults({"desk/qml/A.qml": "parseInt(text) <= 65535"})), 1)
        self.assertEqual(self.faults({"client/A.cpp": 'f(128, 256, 655350, 0x65535, 65534, "65535 ports", 1.65535);'}), [])

    def test_words_alone(self):
        for folder in ("platform/", "lifetime/", "system/", "audio/", "standins/", "bench/", "fuzz/", "tests/"):
            self.assertEqual(self.faults({folder + "A.cpp": 'f(65535, "StartTalk");'}),
                             [(folder + "A.cpp:1", '"StartTalk" is Vocabulary::StartTalk')])

    def test_scripts(self):
        self.assertEqual(len(self.faults({"desk/qml/A.qml": "a('UploadFile', \"it's\", \"StopTalk\") // 'TalkData'"})), 2)

    def test_ways_around(self):
        for code in ('R"(StartTalk)"', 'R"x(StartTalk)x"', 'u8R"(StartTalk)"', '"Start" "Talk"', '"Start"\n    "Talk"',
                     '"Start" /* a */ "Talk"', '"Start" // a\n "Talk"', '"Start\\\nTalk"', '"Start" \\\n"Talk"'):
            self.assertEqual(self.faults({"cli/A.cpp": f"\nf({code});"}),
                             [("cli/A.cpp:2", '"StartTalk" is Vocabulary::StartTalk')], code)
        for code in ('"Start" + "Talk"', "'Start' + \"Talk\"", "`StartTalk`", '"Start" +\n "Talk"'):
            self.assertEqual(self.faults({"desk/qml/A.qml": f"\nf({code})"}),
                             [("desk/qml/A.qml:2", '"StartTalk" is Vocabulary::StartTalk')], code)
        for code in ('"Start", "Talk"', 'R"("StartTalk")"', '"Start" x "Talk"', "R\"(// )\" \"\""):
            self.assertEqual(self.faults({"cli/A.cpp": f"f({code});"}), [], code)
        self.assertEqual(len(self.faults({"tools/a.py": "a = 'StartTalk' # 'StopTalk'\n"})), 1)

    def test_what_tests_share(self):
        for name, count in (("tests/support/A.cpp", 1), ("tests/server/Harness.h", 1), ("tests/server/tst_a.cpp", 0),
                            ("tests/desk/qml/tst_a.qml", 0), ("tests/tools/test_a.py", 0)):
            self.assertEqual(len(self.faults({name: 'f("StartTalk")'})), count, name)

    def test_what_is_no_word(self):
        text = '// "StartTalk"\n/* "StopTalk"\n*/ f("StartTalks", "a StopTalk", \'"\', "\\"TalkData\\"", \'"\');'
        self.assertEqual(self.faults({"server/A.cpp": text, "src/B.cpp": 'f("StartTalk");'}), [])

    def test_exceptions(self):
        files = {"cli/A.cpp": 'f("port", "ip");'}
        self.assertEqual(self.faults(files, {"cli/A.cpp": (("port", "ip"), "")}), [])
        self.assertEqual(self.faults(files, {"cli/A.cpp": (("port",), "")}), [("cli/A.cpp:1", '"ip" is Vocabulary::ip')])
        self.assertEqual(len(self.faults(files, {"cli/A.cpp": (("port", "ip", "guid"), "")})), 1)


if __name__ == "__main__":
    unittest.main()
