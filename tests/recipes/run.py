#!/usr/bin/env python3
"""Follows the recipes of CONTRIBUTING.md with made-up additions, and demands that a forgotten file is noticed.

    run.py [--root FOLDER] [--check] [PATTERN]

Each recipe is a section of CONTRIBUTING.md with a table: the new files (NAME stands for the addition's name), the files to
change, and what fails when one is forgotten: a test, perhaps with the function to run, or a script. A section that
links a folder of this one has its example there: files/ has the new files, changes.txt the changes of the others.

--check builds nothing: it demands that no recipe has more than four files, the new ones counted as one; that
the example has the files that the table names, and no others; that its changes fit; and that what is to fail exists.

Without it, each example, or those whose name PATTERN matches, is added to a copy of the tree in build/recipes/tree. What
the table names, and the example's own tests, must pass; then each row of the table is left out once, and what it names
must fail. The exit status is 0 when all is so, 1 when something was not noticed, 2 when a recipe cannot be followed.
"""

import argparse
import importlib.util
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
MAX_FILES = 4
HEAD = "| File | What it gets | Noticed by |"
NAME = "toy"  # of the examples
SCRIPT_LIMIT = 300  # seconds
BUILD_LIMIT = 3600  # seconds

spec = importlib.util.spec_from_file_location("mutants", HERE.parent / "mutants/run.py")
mutants = importlib.util.module_from_spec(spec)
spec.loader.exec_module(mutants)


class RecipeError(Exception):
    """A recipe that cannot be followed."""


class Row:
    """A row of a recipe: new files or a file to change, and what fails without it."""

    def __init__(self, cells):
        self.is_new = cells[0].startswith("new: ")
        self.paths = re.findall("`([^`]+)`", cells[0])
        self.checks = [check.replace("NAME", NAME) for check in re.findall("`([^`]+)`", cells[2])]

    def patterns(self):
        """The new files as expressions; a folder means all that is in it."""
        return [re.escape(path).replace("NAME", f"(?i:{NAME})") + (".+" if path.endswith("/") else "$") for path in self.paths]

    def has(self, path):
        return any(re.match(pattern, path) for pattern in self.patterns())


class Recipe:
    """A section of CONTRIBUTING.md with a table, and its example."""

    def __init__(self, title, rows, folder):
        self.title = title
        self.rows = rows
        self.folder = folder  # None without an example
        self.added = {}
        if folder:
            files = folder / "files"
            self.added = {str(path.relative_to(files)): path.read_bytes() for path in sorted(files.rglob("*")) if path.is_file()}

    def changed(self):
        """The files that the table names to be changed."""
        return [path for row in self.rows if not row.is_new for path in row.paths]

    def own_tests(self):
        """The example's own tests: programs by their names, the window's components by theirs."""
        return sorted({"quick_components" if path.endswith(".qml") else Path(path).stem
                       for path in self.added if Path(path).name.startswith("tst_")})

    def patched(self, root):
        """The changed files with the example's changes."""
        files = {}
        for name, old, new in changes(self.folder / "changes.txt"):
            if name not in files:
                if not (root / name).is_file():
                    raise RecipeError(f"changes.txt changes {name}, which is not there")
                files[name] = (root / name).read_text(encoding="utf-8")
            count = files[name].count(old)
            if count != 1:
                raise RecipeError(f"changes.txt does not fit: {count} times in {name}:\n{old}")
            files[name] = files[name].replace(old, new)
        return {name: text.encode() for name, text in files.items()}


def changes(path):
    """The changes of an example: file, old text, which it has once, and new text."""
    found = []
    name = part = None
    for line in path.read_text(encoding="utf-8").split("\n"):
        if line.startswith("== "):
            name, part = line[3:], None
        elif line == "---":
            found.append((name, [], []))
            part = 1
        elif line == "+++":
            part = 2
        elif part:
            found[-1][part].append(line)
        elif line:
            raise RecipeError(f"changes.txt: unknown line: {line}")
    for _, _, new in found:
        while new and not new[-1]:
            new.pop()  # what is between the changes
    return [(name, "\n".join(old), "\n".join(new)) for name, old, new in found]


def recipes(root):
    """The recipes of CONTRIBUTING.md."""
    found = []
    for section in re.split(r"^### ", (root / "CONTRIBUTING.md").read_text(encoding="utf-8"), flags=re.MULTILINE)[1:]:
        lines = section.split("\n")
        if HEAD not in lines:
            continue
        rows = []
        for line in lines[lines.index(HEAD) + 2:]:
            if not line.startswith("|"):
                break
            rows.append(Row([cell.strip() for cell in line.strip("|").split(" | ")]))
        example = re.search(r"\(tests/recipes/([\w-]+)\)", section)
        found.append(Recipe(lines[0], rows, root / "tests/recipes" / example.group(1) if example else None))
    return found


def faults(root):
    """Yields what is wrong with the recipes, without building anything."""
    all_recipes = recipes(root)
    if not all_recipes:
        yield "CONTRIBUTING.md has no recipes"
    tests = {path.stem for path in (root / "tests").rglob("tst_*.cpp")} | {"quick_components"}
    for recipe in all_recipes:
        count = len(recipe.changed()) + any(row.is_new for row in recipe.rows)
        if not 0 < count <= MAX_FILES:
            yield f"{recipe.title}: {count} files"
        for path in recipe.changed():
            if not (root / path).is_file():
                yield f"{recipe.title}: no file {path}"
        for row in recipe.rows:
            if not row.checks:
                yield f"{recipe.title}: nothing notices that {' '.join(row.paths)} is forgotten"
            for check in row.checks:
                name = check.split()[0]
                if not (root / name).is_file() and name not in tests | set(recipe.own_tests()):
                    yield f"{recipe.title}: no test {check}"
        if recipe.folder:
            yield from (f"{recipe.title}: {fault}" for fault in example_faults(root, recipe))
    with_example = {recipe.folder.name for recipe in all_recipes if recipe.folder}
    for folder in sorted(path.name for path in (root / "tests/recipes").iterdir() if path.is_dir() and path.name != "__pycache__"):
        if folder not in with_example:
            yield f"tests/recipes/{folder} belongs to no recipe"


def example_faults(root, recipe):
    """Yields what is wrong with an example."""
    try:
        patched = recipe.patched(root)
    except (OSError, RecipeError) as error:
        yield str(error)
        return
    if set(patched) != set(recipe.changed()):
        yield f"the example changes {', '.join(sorted(patched))}, the table {', '.join(sorted(recipe.changed()))}"
    new_rows = [row for row in recipe.rows if row.is_new]
    for path in recipe.added:
        if (root / path).exists():
            yield f"{path} is not new"
        if not any(row.has(path) for row in new_rows):
            yield f"the table does not name {path}"
    for row in new_rows:
        for pattern, path in zip(row.patterns(), row.paths):
            if not any(re.match(pattern, added) for added in recipe.added):
                yield f"the example has no {path}"


class Tree(mutants.Tree):
    """The copy of the sources that the examples are added to."""

    def __init__(self, root):
        super().__init__(root)
        self.copy = root / "build/recipes/tree"
        self.build = self.copy / "build/mutants"
        names = subprocess.run(["git", "ls-files", "-coz", "--exclude-standard", ":!tests/recipes"], cwd=root, check=True,
                               stdout=subprocess.PIPE).stdout.decode().split("\0")
        self.base = {name: (root / name).read_bytes() for name in names if name and (root / name).is_file()}
        self.configured = True

    def place(self, overlay):
        """Makes the copy the tree with some files over it; what is equal keeps its time, so that little is built anew."""
        wanted = {**self.base, **overlay}
        for name, contents in wanted.items():
            target = self.copy / name
            if not target.is_file() or target.read_bytes() != contents:
                target.parent.mkdir(parents=True, exist_ok=True)
                target.write_bytes(contents)
            if name in self.base:
                shutil.copymode(self.root / name, target)
        for folder, subfolders, files in os.walk(self.copy):
            if Path(folder) == self.copy:
                subfolders[:] = [name for name in subfolders if name != "build"]
            for name in files:
                path = Path(folder) / name
                if str(path.relative_to(self.copy)) not in wanted:
                    path.unlink()
        for folder, _, _ in os.walk(self.copy, topdown=False):
            if Path(folder) != self.copy and not os.listdir(folder):
                os.rmdir(folder)
        self.configured = False

    def compile(self, targets):
        """Builds targets, at first all that they need. Returns whether that worked, and what the compiler says."""
        status, output = mutants.run(["ninja", *targets], BUILD_LIMIT, self.build)
        return status == 0, output

    def fails(self, check):
        """Runs a script or a test of the copy. Returns why it failed, or None."""
        name, *arguments = check.split()
        if (self.copy / name).is_file():
            status, output = mutants.run([self.copy / name], SCRIPT_LIMIT, self.copy, self.listing())
            return None if status == 0 else f"status {status}\n{output}"
        try:
            if not self.configured:
                self.configure()
                self.configured = True
            built, output = self.compile([name])
            if not built:
                return f"is not built\n{output}"
            self.list_tests()
        except (mutants.EntryError, subprocess.CalledProcessError) as error:
            return str(error)
        if name not in self.tests:
            return "no such test"
        status, _, output = self.run_test(name, " ".join(arguments))
        return None if status == 0 else f"status {status}\n{output}"

    def listing(self):
        """Surroundings in which git lists the files of the copy."""
        folder = self.root / "build/recipes/git"
        env = dict(os.environ, GIT_DIR=str(folder), GIT_WORK_TREE=str(self.copy))
        if not folder.is_dir():
            subprocess.run(["git", "init", "-q"], env=env, check=True)
        return env


def follow(tree, recipe):
    """Adds an example, then leaves each of its rows out. Returns the number of rows that nothing noticed."""
    overlay = {**recipe.patched(tree.root), **recipe.added}
    checks = dict.fromkeys([check for row in recipe.rows for check in row.checks] + recipe.own_tests())
    tree.place(overlay)
    for check in checks:
        failure = tree.fails(check)
        if failure:
            raise RecipeError(f"{check} fails with the whole example: {mutants.last_lines(failure, 40)}")
    print(f"followed    {recipe.title} ({', '.join(checks)})", flush=True)
    not_noticed = 0
    for row in recipe.rows:
        tree.place({name: contents for name, contents in overlay.items()
                    if not (row.has(name) if row.is_new else name in row.paths)})
        for check in row.checks:
            failure = tree.fails(check)
            what = f"{recipe.title} without {', '.join(row.paths)} ({check}"
            how = ": " + failure.split("\n", 1)[0] if failure else ""
            print(f"{'noticed    ' if failure else 'NOT NOTICED'} {what}{how})", flush=True)
            not_noticed += failure is None
    return not_noticed


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--root", type=Path, default=HERE.parents[1], help="the tree to try")
    parser.add_argument("--check", action="store_true", help="only check the recipes and their examples")
    parser.add_argument("pattern", nargs="?", default="")
    options = parser.parse_args()
    root = options.root.resolve()
    found = list(faults(root))
    for fault in found:
        print(fault, file=sys.stderr)
    if found or options.check:
        return 2 if found else 0
    not_noticed = errors = 0
    chosen = [recipe for recipe in recipes(root) if recipe.folder and re.search(options.pattern, recipe.folder.name)]
    (root / "build/recipes/tree").mkdir(parents=True, exist_ok=True)
    tree = Tree(root)
    for recipe in chosen:
        try:
            not_noticed += follow(tree, recipe)
        except RecipeError as error:
            errors += 1
            print(f"ERROR       {recipe.title}: {error}", flush=True)
    print(f"{len(chosen)} recipes: {not_noticed} files whose lack nothing noticed, {errors} errors")
    return 2 if errors or not chosen else 1 if not_noticed else 0


if __name__ == "__main__":
    sys.exit(main())
