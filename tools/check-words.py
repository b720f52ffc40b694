#!/usr/bin/env python3
"""Finds words, codes and large limits of the protocol that are written out where a constant has them.

    check-words.py [ROOT]

The words are those of src/vocabulary/Vocabulary.h and PluginWords.h, protocol/Words.h, HostCommands.h and ReturnCode.h. The modules of FOLDERS
use their constants: a string literal with the text of a word is a fault, and so is a number with the value of a limit
of protocol/Limits.h that is too large to be a coincidence (10000 or more; not in the folders of AMOUNTS); but for the
places of EXCEPTIONS. A string is what the compiler makes of it: raw strings, literals that follow each other and lines that
go on included. In tests/ the files of test cases are left out, what they share is not. Prints each fault and each exception that is not needed any more, and ends with 1 when there is one.
"""

import ast
import re
import subprocess
import sys
from pathlib import Path

LIMITS = "protocol/Limits.h"
LEAST_LIMIT = 10000
AMOUNTS = ("platform/", "lifetime/", "audio/", "standins/", "system/", "bench/", "fuzz/", "tests/") # many round numbers of their own
HEADERS = ("src/vocabulary/Vocabulary.h", "src/vocabulary/PluginWords.h", "protocol/Words.h", "protocol/HostCommands.h",
           "protocol/ReturnCode.h")
FOLDERS = ("platform/", "lifetime/", "system/", "audio/", "standins/", "server/", "client/", "embedded/", "cli/", "desk/", "tools/", "bench/", "fuzz/", "tests/")
CASES = re.compile(r"tests/.*\b(?:tst_\w+\.(?:cpp|qml)|test_\w+\.py)$") # they say letter by letter what the code has to do
SUFFIXES = (".h", ".cpp", ".qml", ".py")

CONSTANT = re.compile(r'QString (\w+) =\s*QStringLiteral\("([^"]*)"\)')
NAMESPACE = re.compile(r"^namespace (\w+) {", re.MULTILINE)
TOKEN = re.compile(r'''(?<!\w)(?:u8|[uUL])?R"(?P<mark>[^()\\\s]*)\((?P<raw>.*?)\)(?P=mark)"|"(?P<text>(?:[^"\\\n]|\\.)*)"'''
                   r'''|'(?:[^'\\\n]|\\.)'|(?P<comment>//[^\n]*|/\*.*?\*/)''', re.DOTALL)
SCRIPT_TOKEN = re.compile(r'''"(?P<text>(?:[^"\\\n]|\\.)*)"|'(?P<single>(?:[^'\\\n]|\\.)*)'|`(?P<raw>(?:[^`\\]|\\.)*)`'''
                          r'''|(?P<comment>//[^\n]*|/\*.*?\*/)''', re.DOTALL)

LIMIT = re.compile(r"constexpr int (\w+) = (\d+)(?: << (\d+))?;")
NUMBER = re.compile(r"(?<![\w.])(\d[\d']*)U?(?:\}? *<< *(\d+)U?)?\b")

# A file, the words that mean something else in it (None: any), and what.
EXCEPTIONS = {
    "server/devices/onvif/RtspGuard.cpp": (("location",), "a property of GStreamer's source"),
    "tools/check-enumerators.py": (("location",), "a key of the compiler's report"),
    "bench/bench_desk.cpp": (("0", "targets"), "a time, and the name of an item of the window"),
    "cli/commands/CameraOptions.cpp": (("transport", "dscp"), "options"),
    "cli/commands/DeviceCommands.cpp": (("port", "ip", "username"), "arguments and columns of a command"),
    "cli/commands/ScheduleCommands.cpp": (("weekdays",), "a column"),
    "cli/commands/ScheduleOptions.cpp": (("weekdays",), "an option"),
    "desk/PlaybackModel.cpp": (("progress",), "a role of a model"),
    "desk/qml/ConnectionPage.qml": (("Token",), "a label"),
    "desk/qml/FilesPage.qml": (("0",), "a digit of a time"),
    "desk/qml/GroupDialog.qml": (("groupName",), "the name of an item of the window"),
    "desk/qml/ScheduleDialog.qml": (("scheduleName",), "the name of an item of the window"),
    "desk/qml/TalkPage.qml": (("0", "targets"), "a digit of a time, and the name of an item of the window"),
    "fuzz/fuzz_userstore.cpp": (("password",), "a password"),
    "fuzz/make_corpus.py": (None, "it writes messages byte by byte, as another client would"),
    "tests/desk/TalkTest.cpp": (None, "steps of test cases"),
    "tests/desk/TalkTest.h": (None, "steps of test cases"),
    "tests/host/ending_host.cpp": (None, "a host that has nothing of ours but the plug-in's contract"),
    "tests/plugin/PluginFixture.h": (None, "what the plug-in has to send and read, letter by letter"),
    "tests/plugin/RecordsFixture.h": (None, "what the plug-in has to send and read, letter by letter"),
    "tests/server/onvif/test_camera.cpp": (("0", "password", "port", "transport"), "options of its command line"),
    "tests/support/VirtualDisplay.cpp": (("0",), "a number of a screen"),
    "tools/check-words.py": (None, "this list"),
}


def words_of(root):
    """Returns the constant of each word."""
    words = {}
    for header in HEADERS:
        content = (root / header).read_text()
        for constant in CONSTANT.finditer(content):
            name, text = constant.groups()
            namespace = NAMESPACE.findall(content, 0, constant.start())[-1]
            words.setdefault(text, f"{namespace}::{name}")
    return words


def limits_of(root):
    """Returns the constant of each value that is large enough."""
    values = {}
    for name, number, shift in LIMIT.findall((root / LIMITS).read_text()):
        if int(number) << int(shift or 0) >= LEAST_LIMIT:
            values.setdefault(str(int(number) << int(shift or 0)), f"Limits::{name}")
    return values


def numbers(name, text):
    """Yields the line and the value, as text, of each whole number outside of comments and strings."""
    if name.startswith(AMOUNTS) or name.endswith(".py"):
        return
    code = TOKEN.sub(lambda token: re.sub(r"[^\n]", " ", token.group()), text)
    for number in NUMBER.finditer(code):
        value = int(number.group(1).replace("'", "")) << int(number.group(2) or 0)
        yield code.count("\n", 0, number.start()) + 1, str(value)


def literals(name, text):
    """Yields the line and the text of each string, as the compiler has it: literals that follow each other are one, and
    so are those that a script adds up."""
    if name.endswith(".py"):
        for node in ast.walk(ast.parse(text)):
            if isinstance(node, ast.Constant) and isinstance(node.value, str):
                yield node.lineno, node.value
        return
    script = name.endswith(".qml")
    joint = re.compile(r"\s*\+\s*" if script else r"(?:\s|\\\n)*")
    line, whole, end = 0, None, 0
    for token in (SCRIPT_TOKEN if script else TOKEN).finditer(text):
        groups = token.groupdict()
        part = next((groups[kind] for kind in ("raw", "text", "single") if groups.get(kind) is not None), None)
        if groups["comment"] is not None:
            if not text[end:token.start()].strip():
                end = token.end() # a comment between two literals does not part them
            continue
        if part is not None and groups["raw"] is None:
            part = part.replace("\\\n", "") # a line that goes on
        if whole is not None and part is not None and joint.fullmatch(text, end, token.start()):
            whole += part
        else:
            if whole is not None:
                yield line, whole
            line, whole = text.count("\n", 0, token.start()) + 1, part
        end = token.end()
    if whole is not None:
        yield line, whole


def faults(root, words, limits):
    listing = subprocess.run(["git", "-C", str(root), "ls-files", "--cached", "--others", "--exclude-standard", *FOLDERS],
                           check=True, capture_output=True, text=True).stdout.split("\n")
    needed = set()
    for name in sorted(file for file in set(listing) if file.endswith(SUFFIXES) and not CASES.match(file) and (root / file).is_file()):
        excepted = EXCEPTIONS.get(name, ((), ""))[0]
        content = (root / name).read_text()
        found = [(line, text, f'"{text}"', words) for line, text in literals(name, content)]
        found += [(line, value, value, limits) for line, value in numbers(name, content)]
        for line, text, shown, constants in sorted(found, key=lambda entry: entry[:2]):
            if text not in constants:
                continue
            if excepted is None or text in excepted:
                needed.add((name, text))
            else:
                yield f"{name}:{line}", f"{shown} is {constants[text]}"
    for name, (texts, _) in sorted(EXCEPTIONS.items()):
        for text in texts or ():
            if (name, text) not in needed:
                yield name, f'"{text}" is excepted in tools/check-words.py, but not there'


def main():
    root = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent)
    failed = False
    for place, fault in faults(root, words_of(root), limits_of(root)):
        print(f"{place}: {fault}", file=sys.stderr)
        failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
