#!/usr/bin/env python3
"""Measure `ipvald check` on a configuration of full size.

Makes a configuration with make_config.py, checks it several times, and prints
the median time from start to end and the largest peak memory of a process,
each beside its limit. Status 1 when a figure is above its limit.

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


def make_config(file, options):
    generator = os.path.join(os.path.dirname(os.path.abspath(__file__)), "make_config.py")
    command = [sys.executable, generator, "--interfaces", str(options.interfaces),
               "--routes", str(options.routes), "--format", options.format]
    subprocess.run(command, stdout=file, check=True)


def run_check(ipvald, config):
    """One check: its wall-clock time in ms, and the peak memory of ipvald and its child in MiB."""
    begin = time.perf_counter()
    process = subprocess.Popen([ipvald, "check", config], stdout=subprocess.PIPE)
    output = process.stdout.read()
    _, status, usage = os.wait4(process.pid, 0)
    elapsed = time.perf_counter() - begin
    process.stdout.close()
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{ipvald} check: status {process.returncode}\n{output.decode()}")
    return elapsed * 1000, usage.ru_maxrss / 1024


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

    with tempfile.NamedTemporaryFile() as config:
        make_config(config, options)
        ipvald = os.path.join(options.build, "bin", "ipvald")
        run_check(ipvald, config.name)  # fills the caches
        runs = [run_check(ipvald, config.name) for _ in range(options.runs)]
    times, memory = zip(*runs)
    print(f"{options.interfaces} interfaces, {options.routes} routes, {options.format}, "
          f"{options.runs} runs of {min(times):.1f} to {max(times):.1f} ms")
    kept = [report("median time", statistics.median(times), TIME_LIMIT, "ms"),
            report("peak memory", max(memory), MEMORY_LIMIT, "MiB")]
    return 0 if all(kept) else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
