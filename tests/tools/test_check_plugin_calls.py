#!/usr/bin/env python3
"""Tries tools/check-plugin-calls.py on trees that break its rules."""

import importlib.util
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent
spec = importlib.util.spec_from_file_location("check_plugin_calls", ROOT / "tools/check-plugin-calls.py")
check_plugin_calls = importlib.util.module_from_spec(spec)
spec.loader.exec_module(check_plugin_calls)


class CheckPluginCalls(unittest.TestCase):
    def faults(self, name, text):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(["git", "init", "-q", folder], check=True)
            path = Path(folder) / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text + "\n")
            return list(check_plugin_calls.faults(folder))

    def test_texts_and_numbers(self):
        for line in ('QMetaObject::invokeMethod(plugin, "stopTalk");', "QMetaObject::invokeMethod(plugin, name);",
                     'QMetaObject::invokeMethod(plugin, R"(stopTalk)");', 'QMetaObject::invokeMethod(plugin,\n "stop" "Talk");',
                     'QMetaObject::invokeMethod \\\n (plugin, "stopTalk");', "connect(a, SIGNAL(b()), c, &C::d);",
                     "QObject::connect(a, &A::b, c, SLOT(d()));", 'plugin->property("talking");', "a.indexOfMethod(b);",
                     "index.data(Qt::UserRole);", "index.data(0x100 + 2);"):
            self.assertEqual(len(self.faults("cli/A.cpp", line)), 1, line)

    def test_scripts(self):
        for line in ('desk.plugin["stopTalk"]()', "plugin [ 'stopTalk' ]()", "plugin[`stopTalk`]()", "model.data(index, 257)",
                     "model.data(model.index(0, 0), Qt.UserRole + 1)"):
            self.assertEqual(len(self.faults("desk/qml/A.qml", line)), 1, line)
        for line in ("desk.plugin.stopTalk()", "rows[0]", "model.data(model.index(0, 0), 12)", "// plugin['stopTalk']()"):
            self.assertEqual(self.faults("desk/qml/A.qml", line), [], line)

    def test_what_is_allowed(self):
        for line in ("QMetaObject::invokeMethod(this, &A::b, Qt::QueuedConnection);", "invokeMethod(this, [this] { a(); });",
                     '// invokeMethod(plugin, "stopTalk")', "/* SIGNAL(a()) */", "plugin.stopTalk();"):
            self.assertEqual(self.faults("cli/A.cpp", line), [], line)
        self.assertEqual(self.faults("client/A.cpp", 'plugin->property("talking");'), [])

    def test_models_of_the_desk(self):
        self.assertEqual(self.faults("desk/A.h", "enum { A = Qt::UserRole }; roleNames() const override;"), [])


if __name__ == "__main__":
    unittest.main()
