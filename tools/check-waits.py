#!/usr/bin/env python3
"""Finds tests that wait for a fixed time.

    check-waits.py [ROOT]

A test waits for a condition (QTRY_*, QTest::qWaitFor, a signal), or has a clock that it hands in. QTest::qWait, and a sleep of
more than the millisecond of a poll, are faults in tests/ and bench/, but for the places of STALLS, where the delay itself
is what is tried. Prints each fault and each exception that is not needed any more, and ends with 1 when there is one.
"""

import re
import subprocess
import sys
from pathlib import Path

WAIT = re.compile(r"\bqWait\(|\b(?:qSleep|msleep|(?:g_)?usleep|sleep_for|sleep|time\.sleep)\((?!1\)|std::chrono::milliseconds\(1\)\))")

# A file, how many such lines it has, and what they are.
STALLS = {
    "bench/relay/RelayServer.cpp": (1, "looks until a server of another make listens"),
    "bench/relay/ScratchFolder.cpp": (1, "tries again to remove what a server has open"),
    "tests/audio/tst_wavefilewriter.cpp": (3, "the pace of live sound"),
    "tests/server/onvif/test_camera.cpp": (1, "a camera that answers late"),
    "tests/standins/tst_framesmith.cpp": (3, "callbacks that are slow"),
    "tests/tools/test_check_waits.py": (5, "lines that it tries"),
}


def faults(root, stalls):
    listed = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", "tests", "bench"], cwd=root, check=True,
                            capture_output=True, text=True)
    for name in listed.stdout.splitlines():
        if not name.endswith((".h", ".cpp", ".qml", ".py")):
            continue
        lines = (Path(root) / name).read_text(errors="replace").splitlines()
        waits = [f"{name}:{number}: {line.strip()}" for number, line in enumerate(lines, 1)
                 if WAIT.search(re.split("//|#", line)[0])]
        count, what = stalls.get(name, (0, ""))
        if len(waits) > count:
            yield from waits
        elif len(waits) < count:
            yield f"{name}: fewer waits than the {count} of the exception ({what})"


def main():
    found = list(faults(Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent, STALLS))
    for fault in found:
        print(fault, file=sys.stderr)
    if found:
        print("A test waits for a condition, or hands in a clock.", file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
