#!/usr/bin/env python3
"""Checks the includes of the tree against the table of modules in docs/ARCHITECTURE.md.

    check-includes.py [ROOT]

The table's rows name a module by its folder and the folders of other modules whose headers it may include; a row of a
folder counts for what is below it, unless a longer one does, both for what may include and for what may be included: who
may include `a/` may not therefore include `a/b/`, when that has a row. Each include of a header of this project must give the header's
whole path from the root. Prints each include that breaks a rule, and ends with 1 when there is one.
"""

import re
import subprocess
import sys
from pathlib import Path

TABLE_HEAD = "| Module | Target | What is in it | May include |"
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')


def modules(text):
    """Reads the table: for each module's folder those of the modules that it may include."""
    lines = text.split("\n")
    allowed = {}
    for line in lines[lines.index(TABLE_HEAD) + 2:]:
        if not line.startswith("|"):
            break
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        for folder in re.findall(r"`([\w/]+/)`", cells[0]):
            allowed[folder] = set(re.findall(r"`([\w/.]+)`", cells[3])) | {folder}
            if "everything" in cells[3]:
                allowed[folder].add("")
    return allowed


def row_of(path, allowed):
    """Returns the longest of the table's folders that a file is in, or None."""
    return max((folder for folder in allowed if path.startswith(folder)), key=len, default=None)


def may_include(target, module, listed, allowed):
    """Whether a header, in a module, is among those listed: by its module, or by a path that is no module itself."""
    return module in listed or any(target.startswith(path) for path in listed if path not in allowed)


def faults(root, allowed):
    """Yields the place and the description of each include that breaks a rule."""
    listing = subprocess.run(["git", "-C", root, "ls-files", "--cached", "--others", "--exclude-standard", "*.h", "*.cpp",
                              ":!tests/recipes"],  # whose includes are right where run.py puts the files
                             check=True, capture_output=True, text=True).stdout
    names = set(listing.split())
    headers = {Path(name).name: name for name in names if name.endswith(".h")}
    for name in sorted(names):
        own = row_of(name, allowed)
        if own is None:
            yield name, "is in no module of the table"
            continue
        for number, line in enumerate((Path(root) / name).read_text().split("\n"), 1):
            include = INCLUDE.match(line)
            if not include:
                continue
            bracket, target = include.groups()
            place = f"{name}:{number}"
            if {".", ".."} & set(target.split("/")):
                yield place, f"{target} goes by the folder of the file, not from the root"
            elif target in names:
                module = row_of(target, allowed)
                if bracket == "<":
                    yield place, f'"{target}" is a header of this project'
                elif module != own and not may_include(target, module, allowed[own], allowed):
                    yield place, f"{own} may not include {target}"
                elif target.startswith("tests/support/") and not name.startswith(("tests/", "bench/", "fuzz/")):
                    yield place, f"{target} is for tests"
            elif Path(target).name in headers and bracket == '"' and not name.startswith("platform/"):
                yield place, f'"{headers[Path(target).name]}" is the whole path of {target}'


def main():
    root = sys.argv[1] if len(sys.argv) > 1 else str(Path(__file__).resolve().parent.parent)
    allowed = modules((Path(root) / "docs/ARCHITECTURE.md").read_text())
    failed = False
    for place, fault in faults(root, allowed):
        print(f"{place}: {fault}", file=sys.stderr)
        failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
