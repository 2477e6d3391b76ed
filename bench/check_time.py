#!/usr/bin/env python3
"""Measure `ipvald check` on a configuration of full size.

Makes a configuration with make_config.py, checks it several times, and prints
the median time from start to end and the peak memory, each beside its limit.
Status 1 when a figure is above its limit.

Example: check_time.py build/release
"""

import argparse
import os
import statistics
import subprocess
import sys
import tempfile
import time

TIME_LIMIT = 100  # ms
MEMORY_LIMIT = 60  # MiB
GNU_TIME = "/usr/bin/time"


def make_config(file, options):
    generator = os.path.join(os.path.dirname(os.path.abspath(__file__)), "make_config.py")
    command = [sys.executable, generator, "--interfaces", str(options.interfaces),
               "--routes", str(options.routes), "--format", options.format]
    subprocess.run(command, stdout=file, check=True)


def run_check(command):
    """Runs a check that has to accept; returns its wall-clock time in ms and what it printed."""
    begin = time.perf_counter()
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    elapsed = time.perf_counter() - begin
    if done.returncode != 0 or done.stdout != "accepted\n":
        sys.exit(f"{' '.join(command)}: status {done.returncode}\n{done.stdout}{done.stderr}")
    return elapsed * 1000, done.stderr


def peak_memory(command):
    """Peak memory in MiB of the larger of ipvald and its child. GNU time is in between because a
    process counts the memory of the one that started it, and Python is larger than ipvald."""
    _, kilobytes = run_check([GNU_TIME, "-f", "%M"] + command)
    return int(kilobytes) / 1024


def report(name, value, limit, unit):
    """Prints a figure and says whether it keeps to its limit."""
    kept = value <= limit
    print(f"{name:<14}{value:8.1f} {unit:<4} limit {limit} {unit}{'' if kept else '  EXCEEDED'}")
    return kept


def main(arguments):
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", help="build folder, of the release preset to mean anything")
    parser.add_argument("--runs", type=int, default=21, metavar="N", help="default 21")
    parser.add_argument("--interfaces", type=int, default=256, metavar="N", help="default 256")
    parser.add_argument("--routes", type=int, default=1000, metavar="N", help="default 1000")
    parser.add_argument("--format", choices=("xml", "json"), default="json", help="default json")
    options = parser.parse_args(arguments)
    if options.runs < 1:
        parser.error("at least one run is needed")
    if not os.access(GNU_TIME, os.X_OK):
        parser.error(f"{GNU_TIME} is missing: install Debian's package time")

    with tempfile.NamedTemporaryFile() as config:
        make_config(config, options)
        command = [os.path.join(options.build, "bin", "ipvald"), "check", config.name]
        run_check(command)  # fills the caches
        times = [run_check(command)[0] for _ in range(options.runs)]
        memory = peak_memory(command)
    print(f"{options.interfaces} interfaces, {options.routes} routes, {options.format}, "
          f"{options.runs} runs of {min(times):.1f} to {max(times):.1f} ms")
    kept = [report("median time", statistics.median(times), TIME_LIMIT, "ms"),
            report("peak memory", memory, MEMORY_LIMIT, "MiB")]
    return 0 if all(kept) else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
