#!/usr/bin/env python3
"""Checks that the commands and the window reach the plug-in through PluginClient alone.

    check-plugin-calls.py [ROOT]

Prints each place in cli/ and desk/ where something is called, connected or read by a text, or a field of a model by a number,
and ends with 1 when there is one. A line that goes on counts as one, and QML counts, too; what is in comments does not.
"""

import re
import subprocess
import sys
from pathlib import Path

FAULTS = [
    (re.compile(r"\binvokeMethod\s*\(\s*[^,]*,\s*(?![&\[\s])"), "calls by a text"),
    (re.compile(r"\b(?:SIGNAL|SLOT)\s*\("), "connects by a text"),
    (re.compile(r"\b(?:property|setProperty)\s*\("), "reads or writes a property by a text"),
    (re.compile(r"\b(?:indexOfMethod|indexOfSignal|indexOfSlot|indexOfProperty|QMetaMethod|QMetaProperty)\b"),
     "looks into a meta-object"),
]
SCRIPT_FAULTS = [
    (re.compile(r"""(?<![\w.])(?:desk\.)?plugin\s*\[\s*["'`]"""), "reads or calls by a text"),
    (re.compile(r"""\bdata\s*\([^;\n]*,\s*(?:Qt\.UserRole|0x0?100|\d{3,})"""), "reads a field by its number"),
]
COMMENT = re.compile(r'''(?<!\w)(?:u8|[uUL])?R"([^()\\\s]*)\(.*?\)\1"|"(?:[^"\\\n]|\\.)*"|'(?:[^'\\\n]|\\.)*'|(?P<comment>//[^\n]*|/\*.*?\*/)''',
                     re.DOTALL)
ROLE = re.compile(r"\bQt::UserRole\b|\b0x0?100\b")


def code_of(text):
    """Returns a source without its comments, and with blanks where a line goes on; each line keeps its number."""
    text = COMMENT.sub(lambda token: re.sub(r"[^\n]", " ", token.group()) if token.group("comment") else token.group(), text)
    return text.replace("\\\n", " \n")


def faults(root):
    """Yields the place and the description of each line that breaks a rule."""
    listing = subprocess.run(["git", "-C", root, "ls-files", "--cached", "--others", "--exclude-standard", "cli", "desk"],
                             check=True, capture_output=True, text=True).stdout
    for name in sorted(listing.split()):
        if not name.endswith((".h", ".cpp", ".qml")) or not (Path(root) / name).exists():
            continue
        text = code_of((Path(root) / name).read_text())
        for pattern, what in SCRIPT_FAULTS if name.endswith(".qml") else FAULTS:
            for match in pattern.finditer(text):
                yield f"{name}:{text.count(chr(10), 0, match.start()) + 1}", what
        # A model of the desk's own gives its fields numbers, and names, in its header.
        if not name.endswith(".qml") and "roleNames() const override" not in text:
            for match in ROLE.finditer(text):
                yield f"{name}:{text.count(chr(10), 0, match.start()) + 1}", "reads a field by its number"


def main():
    root = sys.argv[1] if len(sys.argv) > 1 else str(Path(__file__).resolve().parent.parent)
    failed = False
    for place, fault in faults(root):
        print(f"{place}: {fault}; client/PluginClient.h has the plug-in's interface", file=sys.stderr)
        failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
