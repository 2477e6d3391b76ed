#!/usr/bin/env python3
"""Runs clang-tidy over the product's sources in a compile database, leaving out what has not changed.

Usage: cached_tidy.py BUILD_DIRECTORY CACHE_DIRECTORY

The tests are left out: with GoogleTest's macros each takes a minute, and the compilers and sanitizers watch them.

A source is clean until its command, its configuration, or its text with all headers changes: the preprocessed text with
its comments (they may hold NOLINT) is hashed, and an empty file of that name in the cache means "checked, no findings".
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import shlex
import subprocess
import sys

TIDY = "clang-tidy-14"
COMPILER = "clang++-14"
FOLDERS = ("src", "platform", "host")


def first_party_sources(database, root):
    """Map of source file to its first compile command, for the .cc files below FOLDERS."""
    sources = {}
    for entry in json.loads(database.read_text()):
        path = pathlib.Path(entry["directory"], entry["file"]).resolve()
        if path.suffix == ".cc" and any(path.is_relative_to(root / folder) for folder in FOLDERS):
            sources.setdefault(path, entry)
    return sources


def preprocess_command(entry):
    """The compile command, turned into one that prints the text which clang-tidy will see."""
    words = shlex.split(entry["command"])
    if os.path.basename(words[0]) == "ccache":
        words.pop(0)
    command = [COMPILER]
    rest = iter(words[1:])
    for word in rest:
        if word in ("-o", "-MF", "-MT"):
            next(rest)
        elif word not in ("-c", "-MD"):
            command.append(word)
    return command + ["-E", "-C", "-w"]


def fingerprint(entry, configuration):
    """Hash of everything that the findings depend on, or None if the source does not preprocess."""
    command = preprocess_command(entry)
    result = subprocess.run(command, cwd=entry["directory"], capture_output=True)
    if result.returncode != 0:
        return None
    digest = hashlib.sha256(configuration)
    digest.update("\0".join(command).encode())
    digest.update(result.stdout)
    return digest.hexdigest()


def check(source, entry, build, cache, configuration):
    """Checks one source unless it is known to be clean. Returns (was checked, is clean, findings)."""
    key = fingerprint(entry, configuration)
    stamp = cache / key if key else None
    if stamp and stamp.exists():
        stamp.touch()
        return False, True, ""
    result = subprocess.run([TIDY, "--quiet", "-p", str(build), str(source)], capture_output=True, text=True)
    if result.returncode != 0:
        return True, False, result.stdout or result.stderr
    if stamp:
        stamp.touch()
    return True, True, ""


def main():
    build, cache = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
    root = pathlib.Path(__file__).resolve().parent.parent
    cache.mkdir(parents=True, exist_ok=True)
    configuration = subprocess.run([TIDY, "--version"], check=True, capture_output=True).stdout
    configuration += (root / ".clang-tidy").read_bytes()
    sources = first_party_sources(build / "compile_commands.json", root)

    checked = dirty = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        runs = [pool.submit(check, *item, build, cache, configuration) for item in sorted(sources.items())]
        for run in concurrent.futures.as_completed(runs):
            was_checked, clean, findings = run.result()
            checked += was_checked
            dirty += not clean
            if findings:
                print(findings, flush=True)
    print(f"clang-tidy: {len(sources)} sources, {checked} checked, {dirty} with findings")
    return 1 if dirty or not sources else 0


if __name__ == "__main__":
    sys.exit(main())
