#!/usr/bin/env python3
"""Measure `ipvald check` on large tables beside libyang alone.

For 10 000 L3 interfaces: the median wall-clock time of `ipvald check`, and
that of a program that only loads the data model, parses and validates the
same file with libyang. The two run in turn, and the ratio is the median of
those of two neighbours, since a machine is not equally fast all the time.
Status 1 when the check takes more than 1.5 times as long.

The L3 interfaces are refused for their number, once all have been read. As
many loopbacks are accepted after all points have read and checked them; their
ratio is shown for comparison and has no limit.

Example: check_beside_libyang.py build/release
"""

import argparse
import os
import statistics
import subprocess
import sys
import tempfile
import time

BENCH = os.path.dirname(os.path.abspath(__file__))

# What is in the file, the option of make_config.py, how the check begins its answer, and the limit.
TABLES = (
    ("L3 interfaces", "--interfaces", "rejected\n", 1.5),  # the device takes 256
    ("loopbacks", "--loopbacks", "accepted\n", None),
)


def run(command, status, output):
    """Returns the wall-clock time in ms of a program that has to end in this way."""
    begin = time.perf_counter()
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    elapsed = time.perf_counter() - begin
    if done.returncode != status or not done.stdout.startswith(output):
        sys.exit(f"{' '.join(command)}: status {done.returncode}\n{done.stdout}{done.stderr}")
    return elapsed * 1000


def measure(options, make_option, output):
    """Medians: ms of ipvald, ms of libyang alone, ratio of the two."""
    programs = os.path.join(options.build, "bin")
    yang = os.path.join(os.path.dirname(BENCH), "yang")
    with tempfile.NamedTemporaryFile(suffix=".json") as config:
        subprocess.run([sys.executable, os.path.join(BENCH, "make_config.py"), make_option,
                        str(options.size)], stdout=config, check=True)
        check = [os.path.join(programs, "ipvald"), "check", config.name]
        alone = [os.path.join(programs, "libyang_alone"), yang, config.name]
        status = 0 if output == "accepted\n" else 1
        pairs = [(run(check, status, output), run(alone, 0, "")) for _ in range(options.runs)]
    times = [(ours, theirs, ours / theirs) for ours, theirs in pairs]
    return [statistics.median(column) for column in zip(*times)]


def main(arguments):
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", help="build folder, of the release preset to mean anything")
    parser.add_argument("--runs", type=int, default=21, metavar="N", help="default 21")
    parser.add_argument("--size", type=int, default=10000, metavar="N", help="default 10000")
    options = parser.parse_args(arguments)
    if options.runs < 1:
        parser.error("at least one run is needed")

    all_kept = True
    for name, make_option, output, limit in TABLES:
        check, alone, ratio = measure(options, make_option, output)
        kept = limit is None or ratio <= limit
        all_kept = all_kept and kept
        print(f"{options.size} {name}: {check:.1f} ms, libyang alone {alone:.1f} ms, "
              f"ratio {ratio:.2f}{f' (at most {limit})' if limit else ''}"
              f"{'' if kept else '  EXCEEDED'}")
    return 0 if all_kept else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
