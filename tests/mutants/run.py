#!/usr/bin/env python3
"""Changes the sources in small ways, one at a time, and demands that a test fails each time.

    run.py [--root FOLDER] [--check] [PATTERN]

The changes stand in the lists beside this program, *.mutants; see README.md here for their form. Each is applied to a
copy of the tree in build/mutants/tree, built with the preset "mutants", and undone. PATTERN, a regular expression,
chooses those whose list, title, file or test it matches. --check builds nothing: it only demands that the lists can
be read and that each change fits its file.

What was noticed is kept in build/mutants/noticed under a hash of the entry and of all files of the tree but documents,
this folder and the sources of other tests (tst_*), so that a run that was cut off goes on where it was. The exit status is 0
when every change was noticed, 1 when one was not, 2 when an entry could not be tried.
"""

import argparse
import contextlib
import fcntl
import hashlib
import json
import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

BUILD_LIMIT = 900  # seconds
MEMORY_LIMIT = 8 << 30  # bytes of a test's addresses: a change may remove a bound


class EntryError(Exception):
    """An entry that cannot be tried."""


class Mutant:
    """One change of one file, and the test that must fail with it."""

    def __init__(self, list_name, title):
        self.list_name = list_name
        self.title = title
        self.file = self.test = self.args = ""
        self.old = []
        self.new = []

    def __str__(self):
        return f"{self.list_name}: {self.title}"

    def matches(self, pattern):
        return re.search(pattern, f"{self} {self.file} {self.test}", re.IGNORECASE) is not None

    def applied_to(self, text):
        """The text with the old lines, which must stand there once, replaced by the new ones."""
        lines = text.split("\n")
        places = [i for i in range(len(lines)) if lines[i:i + len(self.old)] == self.old]
        if len(places) != 1:
            raise EntryError(f"the old lines stand {len(places)} times in {self.file}")
        lines[places[0]:places[0] + len(self.old)] = self.new
        return "\n".join(lines)


def parse(path):
    """The mutants of one list."""
    mutants = []
    part = None  # of the entry: its head, the old lines or the new ones
    for number, line in enumerate(path.read_text(encoding="utf-8").split("\n"), 1):
        if line.startswith("== "):
            mutants.append(Mutant(path.stem, line[3:].strip()))
            part = "head"
        elif part == "head" and line == "---":
            part = "old"
        elif part == "old" and line == "+++":
            part = "new"
        elif part == "old":
            mutants[-1].old.append(line)
        elif part == "new":
            mutants[-1].new.append(line)
        elif part == "head" and re.match(r"(file|test|args): ", line):
            key, value = line.split(": ", 1)
            setattr(mutants[-1], key, value.strip())
        elif line.strip() and not line.startswith("#"):
            raise EntryError(f"{path.name}:{number}: unknown line: {line}")
    titles = set()
    for mutant in mutants:
        # Blank lines and comments between entries belong to neither.
        while mutant.new and re.fullmatch(r"\s*|#( .*)?", mutant.new[-1]):
            mutant.new.pop()
        if not (mutant.file and mutant.test and mutant.old):
            raise EntryError(f"{mutant}: file, test or old lines are missing")
        if mutant.old == mutant.new:
            raise EntryError(f"{mutant}: changes nothing")
        if mutant.title in titles:
            raise EntryError(f"{mutant}: this title stands twice")
        titles.add(mutant.title)
    return mutants


def run(command, limit, folder, env=None, memory=None):
    """Runs a command with all that it starts. Returns its status, None when the time was up, and its output."""
    def limits():
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        if memory:
            resource.setrlimit(resource.RLIMIT_AS, (memory, memory))

    with subprocess.Popen(command, cwd=folder, env=env, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, start_new_session=True, preexec_fn=limits) as process:
        def end_all():
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)

        try:
            output, _ = process.communicate(timeout=limit)
            return process.returncode, output.decode(errors="replace")
        except subprocess.TimeoutExpired:
            end_all()
            return None, process.communicate()[0].decode(errors="replace")
        finally:
            end_all()  # what a test that crashed has left running


class Tree:
    """The copy of the sources in which the changes are made, with its build."""

    def __init__(self, root):
        self.root = root
        self.copy = root / "build/mutants/tree"
        self.build = self.copy / "build/mutants"
        self.hashes = {}
        self.tests = {}

    def synchronise(self):
        """Makes the copy equal to the tree; files that are equal keep their times, so that little is built anew."""
        names = subprocess.run(["git", "ls-files", "-coz", "--exclude-standard"], cwd=self.root, check=True,
                               stdout=subprocess.PIPE).stdout.decode().split("\0")
        for name in names:
            source = self.root / name
            if not name or not source.is_file():
                continue
            contents = source.read_bytes()
            self.hashes[name] = hashlib.sha256(contents).hexdigest()
            target = self.copy / name
            if not target.is_file() or target.read_bytes() != contents:
                target.parent.mkdir(parents=True, exist_ok=True)
                target.write_bytes(contents)
                shutil.copymode(source, target)
        for folder, subfolders, files in os.walk(self.copy):
            if Path(folder) == self.copy:
                subfolders[:] = [name for name in subfolders if name != "build"]
            for name in files:
                path = Path(folder) / name
                if str(path.relative_to(self.copy)) not in self.hashes:
                    path.unlink()

    def state(self, test):
        """A hash of everything that the result of a test can depend on."""
        digest = hashlib.sha256()
        for name in sorted(self.hashes):
            path = Path(name)
            if path.suffix == ".md" or path.parts[0] == "docs" or path.parts[:2] == ("tests", "mutants"):
                continue
            if path.stem.startswith("tst_") and path.stem != test:
                continue
            digest.update(f"{name} {self.hashes[name]}\n".encode())
        return digest.hexdigest()

    def configure(self):
        linker = ["-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld", "-DCMAKE_SHARED_LINKER_FLAGS=-fuse-ld=lld"]
        command = ["cmake", "--preset", "mutants"] + (linker if shutil.which("ld.lld") else [])
        status, output = run(command, BUILD_LIMIT, self.copy)
        if status != 0:
            raise EntryError(f"the copy cannot be configured\n{output}")
        self.list_tests()

    def list_tests(self):
        """Asks ctest for the tests; the command of one is there once it has been built."""
        listing = subprocess.run(["ctest", "--show-only=json-v1"], cwd=self.build, check=True, stdout=subprocess.PIPE)
        for test in json.loads(listing.stdout)["tests"]:
            self.tests[test["name"]] = test

    def compile(self, targets):
        """Builds targets. Returns whether that worked, and what the compiler says."""
        status, output = run(["ninja", *targets], BUILD_LIMIT, self.build)
        return status == 0, output

    def run_test(self, name, args, limit=None):
        """Runs a test as ctest does. Returns its status, None when it took too long, its time and its output."""
        test = self.tests[name]
        properties = {item["name"]: item["value"] for item in test.get("properties", [])}
        env = dict(os.environ)
        env.update(item.split("=", 1) for item in properties.get("ENVIRONMENT", []))
        limit = min(limit or 1500, properties.get("TIMEOUT", 1500))
        start = time.monotonic()
        status, output = run(test["command"] + args.split(), limit, properties.get("WORKING_DIRECTORY", self.build),
                             env, MEMORY_LIMIT)
        return status, time.monotonic() - start, output

    @contextlib.contextmanager
    def changed(self, mutant):
        """The mutant's file stands changed inside the context."""
        path = self.copy / mutant.file
        if mutant.file not in self.hashes:
            raise EntryError(f"no file {mutant.file}")
        original = path.read_text(encoding="utf-8")
        path.write_text(mutant.applied_to(original), encoding="utf-8")
        try:
            yield
        finally:
            path.write_text(original, encoding="utf-8")


def last_lines(text, count=15):
    return "\n".join("    " + line for line in text.rstrip().split("\n")[-count:])


class Runner:
    """Tries mutants one after the other and counts."""

    def __init__(self, tree):
        self.tree = tree
        self.noticed_folder = tree.root / "build/mutants/noticed"
        self.noticed_folder.mkdir(parents=True, exist_ok=True)
        self.limits = {}  # seconds, by test and arguments; None where the unchanged test fails
        self.states = {}
        self.noticed = self.survived = self.errors = 0

    def error(self, mutant, text):
        self.errors += 1
        print(f"ERROR       {mutant}: {text}", flush=True)

    def record(self, mutant):
        """The file that says that this mutant was noticed."""
        if mutant.test not in self.states:
            self.states[mutant.test] = self.tree.state(mutant.test)
        entry = [mutant.file, mutant.test, mutant.args, mutant.old, mutant.new, self.states[mutant.test]]
        return self.noticed_folder / hashlib.sha256(json.dumps(entry).encode()).hexdigest()

    def limit(self, mutant):
        """How long the mutant's test may run, in seconds, by the time of the unchanged one, which must pass."""
        key = (mutant.test, mutant.args)
        if key not in self.limits:
            built, output = self.tree.compile([mutant.test])
            if built:
                self.tree.list_tests()
                status, seconds, output = self.tree.run_test(*key)
            passed = built and status == 0
            if not passed:
                print(f"{mutant.test} {mutant.args} fails in the unchanged tree:\n{last_lines(output, 40)}", flush=True)
            self.limits[key] = 10 * seconds + 10 if passed else None
        if self.limits[key] is None:
            raise EntryError(f"{mutant.test} fails in the unchanged tree")
        return self.limits[key]

    def try_mutant(self, mutant):
        """Whether the test noticed the change, and how."""
        if mutant.test not in self.tree.tests:
            raise EntryError(f"no test {mutant.test}")
        with self.tree.changed(mutant):
            pass  # an entry that does not fit any more is reported before anything is built for it
        limit = self.limit(mutant)
        with self.tree.changed(mutant):
            built, output = self.tree.compile([mutant.test])
            if not built:
                raise EntryError(f"does not compile\n{last_lines(output)}")
            status, _, _ = self.tree.run_test(mutant.test, mutant.args, limit)
        if status is None:
            return True, "did not end"
        if status < 0:
            return True, f"ended by signal {-status}"
        return status != 0, f"status {status}"

    def run_all(self, mutants):
        # One file after the other: a file that was changed and restored is compiled anew only once.
        for mutant in sorted(mutants, key=lambda item: (item.file, item.test, item.args)):
            record = self.record(mutant)
            if record.exists():
                self.noticed += 1
                continue
            start = time.monotonic()
            try:
                noticed, how = self.try_mutant(mutant)
            except EntryError as error:
                self.error(mutant, error)
                continue
            seconds = f"{time.monotonic() - start:.0f} s"
            if noticed:
                self.noticed += 1
                record.write_text(f"{mutant}\n", encoding="utf-8")
                print(f"noticed     {mutant} ({mutant.test}: {how}; {seconds})", flush=True)
            else:
                self.survived += 1
                print(f"NOT NOTICED {mutant} ({mutant.file}, {mutant.test} {mutant.args}; {seconds})", flush=True)


def check(root, mutants):
    """Reports entries that do not fit the tree. Returns their number."""
    errors = 0
    for mutant in mutants:
        try:
            path = root / mutant.file
            if not path.is_file():
                raise EntryError(f"no file {mutant.file}")
            mutant.applied_to(path.read_text(encoding="utf-8"))
        except EntryError as error:
            errors += 1
            print(f"ERROR       {mutant}: {error}")
    return errors


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--root", type=Path, default=Path(__file__).resolve().parents[2], help="the tree to try")
    parser.add_argument("--check", action="store_true", help="only check that the changes fit the tree")
    parser.add_argument("pattern", nargs="?", default="")
    options = parser.parse_args()
    tree = Tree(options.root.resolve())
    try:
        mutants = [mutant for path in sorted((tree.root / "tests/mutants").glob("*.mutants"))
                   for mutant in parse(path) if mutant.matches(options.pattern)]
    except EntryError as error:
        print(error, file=sys.stderr)
        return 2
    if options.check:
        return 2 if check(tree.root, mutants) else 0
    tree.copy.mkdir(parents=True, exist_ok=True)
    with open(tree.root / "build/mutants/lock", "w", encoding="utf-8") as lock:
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            print("another run is at work in this tree", file=sys.stderr)
            return 2
        runner = Runner(tree)
        try:
            tree.synchronise()
            tree.configure()
        except EntryError as error:
            print(error, file=sys.stderr)
            return 2
        runner.run_all(mutants)
    print(f"{len(mutants)} mutants: {runner.noticed} noticed, {runner.survived} not noticed, {runner.errors} errors")
    return 2 if runner.errors or not mutants else 1 if runner.survived else 0


if __name__ == "__main__":
    for ending in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(ending, lambda number, _: sys.exit(128 + number))  # so that a file is restored, too
    sys.exit(main())
