#!/usr/bin/env python3
"""Print line and branch coverage of src/lib and platform/, and which lines no test ran.

Builds and runs nothing. Before it:

  cmake --preset coverage && cmake --build --preset coverage
  ctest --preset coverage -L unit

Every object of the build is asked, since the linker keeps one copy of an
inline function and that may be the one of a test. A branch is a way out of a
condition; ways that only an exception takes are not counted. Nor is a line
with nothing but a closing brace when it was not run: what it then holds are
the destructors that an exception would call, as any other way out of the
block runs them too.

What a process did that ends by abort or _exit is not in the data: the child
of a death test, and the child of ipvald in which the plug-in runs.

Status 0: all lines of src/lib were run, 1: some were not, 2: no data.
"""

import argparse
import collections
import concurrent.futures
import json
import os
import subprocess
import sys

TREE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
FOLDERS = ("src/lib/", "platform/")
COMPLETE = "src/lib/"  # where every line has to be run


class Coverage:
    """Counts of one file, added up over all objects that hold a part of it."""

    def __init__(self):
        self.lines = collections.Counter()  # by number
        # By line, function and position: an instance of a template has branches of its own.
        self.branches = collections.Counter()

    def add(self, line):
        number = line["line_number"]
        self.lines[number] += line["count"]
        ways = [way for way in line["branches"] if not way["throw"]]
        for position, way in enumerate(ways):
            self.branches[number, line.get("function_name"), position] += way["count"]

    def drop_closing_braces(self, source):
        """Takes out what only an exception would run."""
        for number in [number for number, count in self.lines.items() if count == 0]:
            if source[number - 1].strip() in ("}", "};", "});"):
                del self.lines[number]

    def missing_lines(self):
        return sorted(number for number, count in self.lines.items() if count == 0)

    def half_branches(self):
        """Lines that were run, but not out of every branch, with the number of those left."""
        missing = collections.Counter()
        for (number, _, _), count in self.branches.items():
            if count == 0 and self.lines[number] > 0:
                missing[number] += 1
        return missing


def note_files(build):
    return [os.path.join(folder, name)
            for folder, _, names in os.walk(build) for name in names if name.endswith(".gcno")]


def read_object(gcov, notes):
    """What gcov knows about the source files of one object, by path in the tree."""
    result = subprocess.run([gcov, "--json-format", "--stdout", "--branch-probabilities", notes],
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False, text=True)
    if result.returncode != 0:
        raise RuntimeError(f"{gcov} {notes}: {result.stderr.strip()}")
    found = []
    for text in result.stdout.splitlines():
        report = json.loads(text) if text else {"files": []}
        for source in report["files"]:
            path = os.path.join(report["current_working_directory"], source["file"])
            path = os.path.relpath(os.path.realpath(path), os.path.realpath(TREE))
            if path.startswith(FOLDERS):
                found.append((path, source["lines"]))
    return found


def read_build(build, gcov, jobs):
    files = collections.defaultdict(Coverage)
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        for found in pool.map(lambda notes: read_object(gcov, notes), note_files(build)):
            for path, lines in found:
                for line in lines:
                    files[path].add(line)
    return files


def read_sources(files):
    """Lines of each file."""
    sources = {}
    for path in files:
        with open(os.path.join(TREE, path), encoding="utf-8") as source:
            sources[path] = source.read().splitlines()
    return sources


def share(counts):
    total = len(counts)
    done = sum(1 for count in counts.values() if count > 0)
    percent = f"{100 * done / total:.1f} %" if total else "-"
    return f"{done:6} / {total:<6} {percent:>8}"


def sum_of(files, folder):
    total = Coverage()
    for path, coverage in files.items():
        if path.startswith(folder):
            for number, count in coverage.lines.items():
                total.lines[path, number] = count
            for branch, count in coverage.branches.items():
                total.branches[path, branch] = count
    return total


def print_table(files):
    width = max(len(path) for path in files)
    print(f"{'':{width}}  {'lines':>15} {'':8}   {'branches':>15}")
    for folder in FOLDERS:
        for path in sorted(path for path in files if path.startswith(folder)):
            print(f"{path:{width}}  {share(files[path].lines)}   {share(files[path].branches)}")
        total = sum_of(files, folder)
        print(f"{'all of ' + folder:{width}}  {share(total.lines)}   {share(total.branches)}\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", nargs="?", default=os.path.join(TREE, "build", "coverage"),
                        help="folder of the build (build/coverage)")
    parser.add_argument("--branches", action="store_true",
                        help="also list the lines that were not left by every branch")
    parser.add_argument("--gcov", default="gcov", help="of the compiler that built it")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    options = parser.parse_args()

    try:
        files = read_build(options.build, options.gcov, options.jobs)
        sources = read_sources(files)
    except (OSError, RuntimeError) as error:
        print(f"coverage.py: {error}", file=sys.stderr)
        return 2
    if not any(count for coverage in files.values() for count in coverage.lines.values()):
        print(f"coverage.py: no data of a test in {options.build}", file=sys.stderr)
        return 2

    for path, coverage in files.items():
        coverage.drop_closing_braces(sources[path])
    print_table(files)
    print("Lines that were not run:")
    for path in sorted(files):
        for number in files[path].missing_lines():
            print(f"  {path}:{number}: {sources[path][number - 1].strip()}")
    if options.branches:
        print("\nLines that were not left by every branch:")
        for path in sorted(files):
            for number, missing in sorted(files[path].half_branches().items()):
                print(f"  {path}:{number}: {missing} left: {sources[path][number - 1].strip()}")
    return 1 if sum_of(files, COMPLETE).missing_lines() else 0


if __name__ == "__main__":
    sys.exit(main())
