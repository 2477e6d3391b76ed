#!/usr/bin/env python3
"""The tree is what docs/architecture.md says: who reaches whose headers, and what each folder says of itself.

Usage: tree_test.py SOURCE_DIRECTORY BUILD_DIRECTORY

Asks the compiler, with the flags of the sources of each folder, which headers of the product it finds. Status 0: just
those of the folders below, and every folder says what lives in it.
"""

import json
import pathlib
import shlex
import subprocess
import sys

# Where the headers of a folder are included from. Headers of a folder's own sources only are not here.
HEADERS = {
    "include": "include",
    "src/lib": "src/lib",
    "nettypes": "platform/nettypes/include",
    "limid": "platform/limid/include",
    "vrfid": "platform/vrfid/include",
    "confd": "platform/confd/include",
    "confd driver": "platform/confd/driver",
    "confd testing": "platform/confd/testing",
    "framework": "platform/framework/include",
    "framework driver": "platform/framework/driver",
    "store": "platform/store/include",
    "base": "host/base",
    "input": "host/input",
    "sandbox": "host/sandbox",
    "transaction": "host/transaction",
    "report": "host/report",
    "command": "host/command",
}

DEVICE = {"nettypes", "limid", "vrfid", "confd", "framework"}
DRIVERS = {"confd", "confd driver", "store"}

# What the sources of a folder find, beside their own headers.
REACHES = {
    "src/lib": DEVICE | {"include"},
    "platform/nettypes/src": set(),
    "platform/limid/src": set(),
    "platform/vrfid/src": set(),
    "platform/store/src": set(),
    "platform/confd/src": {"confd driver", "confd testing", "store"},
    "platform/framework/src": {"confd", "framework driver"},
    "host/base": set(),
    "host/input": {"base", "store"},
    "host/sandbox": DRIVERS | {"base", "framework", "framework driver"},
    "host/transaction": DRIVERS | {"sandbox", "framework", "framework driver"},
    "host/report": {"base", "store", "transaction"},
    "host/command": {"base", "input", "report", "store", "transaction"},
}

# The tree, but for folders of data or of files that the folder above speaks for.
TOP = ("bench", "cmake", "docs", "examples", "fuzz", "host", "include", "platform", "script", "src/lib", "tests", "tools",
       "yang")
SPOKEN_FOR = {"corpus", "data", "driver", "include", "ip_app_validation", "listed_platform", "regressions", "src",
              "testing", "tools", "yang"}


def reached(command, headers):
    """How many of the headers of each group in `headers` the compile command finds; groups without one are not there."""
    arguments = shlex.split(command["command"])
    arguments = arguments[next(i for i, a in enumerate(arguments) if a.startswith("-")) - 1:]
    output = arguments.index("-o")
    del arguments[output:output + 2]
    arguments = [a for a in arguments if a not in ("-c", command["file"])]
    text = "".join(f'#if __has_include("{name}")\nFOUND {group}:{name}\n#endif\n'
                   for group, names in headers.items() for name in names)
    # Quoted includes are looked for beside the source first.
    found = subprocess.run(arguments + ["-iquote", str(pathlib.Path(command["file"]).parent), "-E", "-P", "-x", "c++", "-"],
                           cwd=command["directory"], input=text, capture_output=True, text=True, check=True).stdout
    counts = {}
    for line in found.splitlines():
        if line.startswith("FOUND "):
            group = line[len("FOUND "):].split(":")[0]
            counts[group] = counts.get(group, 0) + 1
    return counts


def arrows(source, build):
    """Faults in who reaches whose headers."""
    headers = {group: [str(h.relative_to(source / folder)) for h in sorted((source / folder).rglob("*.h"))]
               for group, folder in HEADERS.items()}
    commands = {}  # by folder, one for each set of flags
    for command in json.loads((build / "compile_commands.json").read_text()):
        folder = str(pathlib.Path(command["file"]).parent.relative_to(source))
        commands.setdefault(folder, {}).setdefault(command["command"].split(" -o ")[0], command)
    for folder in sorted(set(commands) - set(REACHES)):
        if folder.startswith(("host/", "platform/", "src/")) and not folder.endswith("/tools"):
            yield f"{folder} is not in the table of this test"
    for folder, allowed in REACHES.items():
        own = {group for group, place in HEADERS.items() if place in (folder, folder.replace("/src", "/include"))}
        counts = {}  # of the command that finds most
        for command in commands[folder].values():
            for group, count in reached(command, headers).items():
                counts[group] = max(count, counts.get(group, 0))
        for group in sorted(set(counts) - allowed - own):
            yield f"{folder} finds headers of {group} ({HEADERS[group]})"
        for group in sorted(allowed | own):
            if counts.get(group, 0) < len(headers[group]):
                yield f"{folder} does not find all headers of {group} ({HEADERS[group]})"


def silent_folders(source):
    """Folders that do not say what they hold."""
    folders = [source / top for top in TOP]
    for folder in folders:
        if folder != source / "tests" / "cases":  # one folder of files for each point
            folders += [child for child in sorted(folder.iterdir())
                        if child.is_dir() and child.name[0] not in "._"
                        and (child.name not in SPOKEN_FOR or child == source / "tests" / "src")]
        readme, cmake = folder / "README.md", folder / "CMakeLists.txt"
        if readme.exists():
            if folder.name != "docs" and len(readme.read_text().splitlines()) > 15:  # docs: an index
                yield f"{readme} is longer than 15 lines"
        elif cmake.exists():
            if not cmake.read_text().startswith("# "):
                yield f"{cmake} does not begin with what lives there"
        elif not (folder.parent / "CMakeLists.txt").exists():
            yield f"{folder} has neither README.md nor CMakeLists.txt"


def main():
    source, build = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    faults = list(arrows(source, build)) + list(silent_folders(source))
    print("\n".join(faults))
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
