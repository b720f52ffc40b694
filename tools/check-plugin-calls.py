#!/usr/bin/env python3
"""Checks that the commands and the window reach the plug-in through PluginClient alone.

    check-plugin-calls.py [ROOT]

Prints each place in cli/ and desk/ where something is called, connected or read by a text, or a field of a model by a number,
and ends with 1 when there is one.
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
ROLE = re.compile(r"\bQt::UserRole\b|\b0x0?100\b")


def faults(root):
    """Yields the place and the description of each line that breaks a rule."""
    listing = subprocess.run(["git", "-C", root, "ls-files", "--cached", "--others", "--exclude-standard", "cli", "desk"],
                             check=True, capture_output=True, text=True).stdout
    for name in sorted(listing.split()):
        if not name.endswith((".h", ".cpp")) or not (Path(root) / name).exists():
            continue
        text = (Path(root) / name).read_text()
        for pattern, what in FAULTS:
            for match in pattern.finditer(text):
                yield f"{name}:{text.count(chr(10), 0, match.start()) + 1}", what
        # A model of the desk's own gives its fields numbers, and names, in its header.
        if "roleNames() const override" not in text:
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
