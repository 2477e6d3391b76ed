#!/usr/bin/env python3
"""The tree is what docs/architecture.md says: who reaches whose headers, and what each folder says of itself.

Usage: tree_test.py SOURCE_DIRECTORY BUILD_DIRECTORY

Asks the compiler, with the flags of one source of each folder, which headers of the product it finds. Status 0: just
those of the folders below.
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

# Folders of data or of files that the folder above speaks for.
SPOKEN_FOR = {"corpus", "data", "driver", "include", "ip_app_validation", "listed_platform", "regressions", "src", "testing", "tools", "yang"}


def reached(command, headers):
    """Names of the groups in `headers` of which the compile command finds a header, and of which it finds but some."""
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
    return set(counts), {group for group, count in counts.items() if count < len(headers[group])}


def arrows(source, build):
    """Faults in who reaches whose headers."""
    headers = {group: [str(h.relative_to(source / folder)) for h in sorted((source / folder).rglob("*.h"))]
               for group, folder in HEADERS.items()}
    commands = {}
    for command in json.loads((build / "compile_commands.json").read_text()):
        commands.setdefault(str(pathlib.Path(command["file"]).parent.relative_to(source)), command)
    for folder, allowed in REACHES.items():
        own = {group for group, place in HEADERS.items() if place in (folder, folder.replace("/src", "/include"))}
        found, part = reached(commands[folder], headers)
        for group in sorted(found - allowed - own):
            yield f"{folder} finds headers of {group} ({HEADERS[group]})"
        for group in sorted((allowed | own) - found):
            yield f"{folder} finds no header of {group} ({HEADERS[group]})"
        for group in sorted(part):
            yield f"{folder} finds but some headers of {group} ({HEADERS[group]})"


def silent_folders(source):
    """Folders that do not say what they hold."""
    files = subprocess.run(["git", "ls-files"], cwd=source, capture_output=True, text=True, check=True).stdout
    for folder in sorted({pathlib.PurePath(name).parent for name in files.splitlines()}):
        if SPOKEN_FOR & set(folder.parts[1:]) or folder.parts[:1] in ((), (".ci",)) or folder.parts[:2] == ("tests", "cases"):
            continue
        readme, cmake = source / folder / "README.md", source / folder / "CMakeLists.txt"
        if readme.exists():
            if folder.name != "docs" and len(readme.read_text().splitlines()) > 15:  # docs: an index
                yield f"{readme} is longer than 15 lines"
        elif not cmake.exists() and not (source / folder.parent / "CMakeLists.txt").exists():
            yield f"{folder} has neither README.md nor CMakeLists.txt"
        elif cmake.exists() and not cmake.read_text().startswith("# "):
            yield f"{cmake} does not begin with what lives there"


def main():
    source, build = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
    faults = list(arrows(source, build)) + list(silent_folders(source))
    print("\n".join(faults))
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
