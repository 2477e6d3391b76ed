#!/usr/bin/env python3
"""Apply small faults to src/lib, one at a time, and tell which ones the tests catch.

Each fault (mutant) is made in a copy of the tree under the scratch folder,
never in the tree itself. The unit and point tests that link or load the
changed file are built and run, those first that caught the most mutants of
that file, until one fails.

  caught          a test failed, crashed, or did not end in time
  survived        all tests passed: a test is missing, or the fault is none
  does not build  the compiler caught it; not counted

The mutants are chosen by the seed from all that the operators find, so that
every file and every operator has its share. Results are kept in a file;
a run that was interrupted goes on where it stopped. A mutant is known by the
text of its file, so a changed file starts anew; after a change of the tests
give --retry survived.
"""

import argparse
import collections
import hashlib
import json
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

TREE = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
MUTATED = "src/lib"
LABELS = "^unit$"
MAX_MEMORY = 4 << 30  # bytes of address space for a test, against mutants that allocate for ever
MAX_OUTPUT = 64 << 20
MIN_TIMEOUT = 10  # seconds
SLOWER = 10  # times the duration of the unchanged test is taken for an endless loop

Mutant = collections.namedtuple("Mutant", "key file line operator before after start end text")


# What can be changed.

def mask(source):
    """`source` with comments and the inside of literals blanked out, at the same offsets, and the
    spans (start, end) of its string literals."""
    masked = list(source)
    strings = []
    pattern = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\'', re.S)
    for match in pattern.finditer(source):
        start, end = match.span()
        if source[start] == "'" and start > 0 and source[start - 1].isalnum():
            continue  # a digit separator
        if source[start] == '"':
            strings.append((start, end))
        inner = (start, end) if source[start] == "/" else (start + 1, end - 1)
        for i in range(*inner):
            if masked[i] != "\n":
                masked[i] = " "
    text = "".join(masked)
    # Preprocessor lines, and attributes, which only the compiler reads.
    for match in re.finditer(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*", text, re.M):
        text = text[:match.start()] + re.sub(r"[^\n]", " ", match.group()) + text[match.end():]
    for match in re.finditer(r"__attribute__\(\(.*?\)\)", text):
        text = text[:match.start()] + re.sub(r"[^\n]", " ", match.group()) + text[match.end():]
    return text, strings


def closing(code, opening):
    """Offset of the bracket that closes the one at `opening`, or -1."""
    depth = 0
    for i in range(opening, len(code)):
        if code[i] in "([{":
            depth += 1
        elif code[i] in ")]}":
            depth -= 1
            if depth == 0:
                return i
    return -1


def replace_words(code, table):
    """(start, end, replacement) for every occurrence of a key of `table`."""
    words = sorted(table, key=len, reverse=True)
    for match in re.finditer("|".join(re.escape(word) for word in words), code):
        for replacement in table[match.group()]:
            yield match.start(), match.end(), replacement


def comparisons(code, _source, _strings):
    return replace_words(code, {
        " == ": [" != "], " != ": [" == "], " < ": [" <= ", " >= "], " <= ": [" < ", " > "],
        " > ": [" >= ", " <= "], " >= ": [" > ", " < "]})


def logic(code, _source, _strings):
    return replace_words(code, {" && ": [" || "], " || ": [" && "]})


def arithmetic(code, source, _strings):
    for start, end, replacement in replace_words(
            code, {" + ": [" - "], " - ": [" + "], "++": ["--"], " += ": [" -= "]}):
        # Texts cannot be subtracted.
        if '"' not in (source[start - 1], source[min(end, len(source) - 1)]):
            yield start, end, replacement


def constants(code, _source, _strings):
    for match in re.finditer(r"(?<![\w.'-])(\d+)(\.\d+)?(?=[uUlL]*(?![\w.']))", code):
        if match.group(2):
            yield match.start(), match.end(), match.group() + "1"
            continue
        value = int(match.group())
        yield match.start(), match.end(), str(value + 1)
        if value > 0:
            yield match.start(), match.end(), str(value - 1)


def truth(code, _source, _strings):
    for match in re.finditer(r"\b(true|false)\b", code):
        yield match.start(), match.end(), "false" if match.group() == "true" else "true"


def results(code, _source, _strings):
    swapped = {"0": "-1", "-1": "0", "nullptr": None, "std::nullopt": None}
    for match in re.finditer(r"\breturn ([^;{}]+);", code):
        replacement = swapped.get(match.group(1))
        if replacement is not None:
            yield match.start(1), match.end(1), replacement
    for match in re.finditer(r"\bbreak;|\bcontinue;", code):
        yield match.start(), match.end(), "continue;" if match.group() == "break;" else "break;"


def negations(code, source, _strings):
    for match in re.finditer(r"(?<![\w)\]])!(?=[\w(])", code):
        yield match.start(), match.end(), ""
    for match in re.finditer(r"\b(?:if|while) (\()", code):
        end = closing(code, match.start(1))
        if end > 0 and ";" not in code[match.start(1):end]:
            condition = source[match.start(1):end + 1]
            yield match.start(1), end + 1, "(!" + condition + ")"
            if match.group().startswith("if"):
                # The whole check is dropped, and what it depends on is still used.
                yield match.start(1), end + 1, "(" + condition + " && false)"


STATEMENT = re.compile(r"^[ \t]*(?!return\b|using\b|case\b|const\b|else\b|for\b|if\b|while\b|static\b)"
                       r"([A-Za-z_][\w.:>\[\]-]*(?:\(|(?: [-+|&]?= )))", re.M)


def statements(code):
    """(start, end) of calls and assignments that stand alone, without blanks around."""
    for match in STATEMENT.finditer(code):
        start = match.start(1)
        if re.match(r"\s*[)\]},]", code[start:start + 1]):
            continue
        depth = 0
        for i in range(start, len(code)):
            if code[i] in "([{":
                depth += 1
            elif code[i] in ")]}":
                depth -= 1
                if depth < 0:
                    break
            elif code[i] == ";" and depth == 0:
                # Not what goes on from the line before, and not what a class has not.
                before = code[:match.start()].rstrip()
                if before and before[-1] in ";{}:" and not re.search(
                        r"= (?:delete|default);$", code[start:i + 1]):
                    yield start, i + 1
                break
            elif code[i] == "{" and depth == 0:
                break


def dropped(code, _source, _strings):
    for start, end in statements(code):
        yield start, end, ";"
    for match in re.finditer(r"(?<=\) )(?:return|continue|break)\b[^;{}]*;", code):
        yield match.start(), match.end(), ";"


def reordered(code, source, _strings):
    found = list(statements(code))
    for (start, end), (next_start, next_end) in zip(found, found[1:]):
        between = source[end:next_start]
        if between.strip() or "(" not in code[start:end] + code[next_start:next_end]:
            continue
        first, second = source[start:end], source[next_start:next_end]
        if first != second:
            yield start, next_end, second + between + first


def swapped_arguments(code, source, _strings):
    for match in re.finditer(r"\b(?!if\b|for\b|while\b|switch\b|return\b)\w+(\()", code):
        end = closing(code, match.start(1))
        if end < 0 or re.match(r"\s*(?:const\s*)?(?:override\s*)?\{", code[end + 1:end + 30]):
            continue
        depth, cuts = 0, [match.start(1)]
        for i in range(match.start(1) + 1, end):
            depth += (code[i] in "([{") - (code[i] in ")]}")
            if code[i] == "," and depth == 0:
                cuts.append(i)
        cuts.append(end)
        arguments = [(a + 1, b) for a, b in zip(cuts, cuts[1:])]
        for (a, b), (c, d) in zip(arguments, arguments[1:]):
            first, second = source[a:b].strip(), source[c:d].strip()
            # "Type name" is a parameter.
            parameter = re.compile(r"^(?:const )?[\w:<>*&]+[ *&]+\w+$")
            if first == second or parameter.match(first) or parameter.match(second):
                continue
            left = source[a:b].replace(first, second, 1)
            right = source[c:d].replace(second, first, 1)
            yield a, d, left + source[b:c] + right


def messages(_code, source, strings):
    for start, end in strings:
        line_start = source.rfind("\n", 0, start) + 1
        if source[line_start:start].lstrip().startswith(("#", "extern")) or (
                end - start < 3):
            continue
        inner = source[start + 1:end - 1]
        for edge in (0, len(inner) - 1):
            if inner[edge] in " ." or len(inner) == 1:
                cut = inner[1:] if edge == 0 else inner[:-1]
                yield start, end, '"' + cut + '"'
        letters = [i for i in range(len(inner))
                   if inner[i].isalpha() and not re.search(r"[\\%][\w.*]*$", inner[:i])]
        if letters:
            i = letters[len(letters) // 2]
            yield start, end, '"' + inner[:i] + inner[i].swapcase() + inner[i + 1:] + '"'


OPERATORS = {
    "comparison": comparisons, "logic": logic, "arithmetic": arithmetic, "constant": constants,
    "truth": truth, "result": results, "condition": negations, "dropped": dropped,
    "order": reordered, "arguments": swapped_arguments, "message": messages}


def one_line(text):
    return " ".join(text.split())


def excerpt(source, start, end, replacement):
    """The lines around a change, before and after it, each as one line."""
    first = source.rfind("\n", 0, start) + 1
    last = source.find("\n", end)
    last = len(source) if last < 0 else last
    return (one_line(source[first:last]),
            one_line(source[first:start] + replacement + source[end:last]))


def mutants_of(file):
    with open(os.path.join(TREE, file), encoding="utf-8") as opened:
        source = opened.read()
    code, strings = mask(source)
    version = hashlib.sha256(source.encode()).hexdigest()
    seen = set()
    for name, operator in OPERATORS.items():
        for start, end, text in operator(code, source, strings):
            changed = (start, end, text)
            if source[start:end] == text or changed in seen:
                continue
            seen.add(changed)
            key = hashlib.sha256(f"{file} {version} {changed}".encode()).hexdigest()[:16]
            line = source.count("\n", 0, start + len(source[start:end]) -
                                len(source[start:end].lstrip())) + 1
            yield Mutant(key, file, line, name, *excerpt(source, start, end, text), start, end, text)


def choose(candidates, limit, seed):
    """`limit` of the candidates: of each file in proportion, at least three, operators in turn."""
    chooser = random.Random(seed)
    chosen = []
    for file in sorted(candidates):
        by_operator = collections.defaultdict(list)
        for mutant in candidates[file]:
            by_operator[mutant.operator].append(mutant)
        queues = [by_operator[name] for name in sorted(by_operator)]
        for queue in queues:
            chooser.shuffle(queue)
        chooser.shuffle(queues)
        order = [queue[i] for i in range(max(map(len, queues), default=0))
                 for queue in queues if i < len(queue)]
        total = sum(map(len, candidates.values()))
        share = max(3, -(-limit * len(order) // total))
        chosen.append(order[:share])
    # The largest shares give up what is too many.
    while sum(map(len, chosen)) > limit:
        max(chosen, key=len).pop()
    return [mutant for share in chosen for mutant in share]


# Building and running.

class Tree:
    """A copy of the tree, and its build. One for each job."""

    def __init__(self, folder, processors):
        self.processors = processors  # for one mutant
        self.source = os.path.join(folder, "tree")
        self.build = os.path.join(folder, "build")
        self.log = os.path.join(folder, "build.log")
        self.tests = {}  # program -> (command, folder, seconds that it takes)
        self.changed = None

    def prepare(self):
        """Makes the copy the same as the tree, builds all and takes the time of the tests."""
        listed = subprocess.run(
            ["git", "-C", TREE, "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
            check=True, capture_output=True, text=True).stdout.split("\0")
        wanted = {name for name in listed if name and os.path.isfile(os.path.join(TREE, name))}
        for root, _, names in os.walk(self.source):
            for name in names:
                path = os.path.join(root, name)
                if os.path.relpath(path, self.source) not in wanted:
                    os.remove(path)
        for name in wanted:
            self.copy(name)
        arguments = ["cmake", "-G", "Ninja", "-S", self.source, "-B", self.build,
                     "-DCMAKE_BUILD_TYPE=", "-DCMAKE_CXX_FLAGS=-O0 -w",
                     "-DIPAV_BUILD_BENCHMARKS=OFF", "-DIPAV_BUILD_HOST=OFF"]
        if shutil.which("ld.gold"):
            arguments += [f"-DCMAKE_{kind}_LINKER_FLAGS=-fuse-ld=gold"
                          for kind in ("EXE", "SHARED", "MODULE")]
        if shutil.which("ccache"):
            arguments += ["-DCMAKE_C_COMPILER_LAUNCHER=ccache",
                          "-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"]
        self.run(arguments) or self.give_up("cannot be configured")
        tests = self.find_tests()
        for program, (command, folder) in tests.items():
            began = time.monotonic()
            failure = self.run_test(command, folder, 600)
            if failure:
                self.give_up(f"fails in {program}: {failure}")
            tests[program] = (command, folder, time.monotonic() - began)
        self.tests = tests

    def copy(self, name):
        """Copies what differs, so that nothing else is built again."""
        source, target = os.path.join(TREE, name), os.path.join(self.source, name)
        with open(source, "rb") as opened:
            content = opened.read()
        if os.path.isfile(target):
            with open(target, "rb") as opened:
                if opened.read() == content:
                    return
        os.makedirs(os.path.dirname(target), exist_ok=True)
        shutil.copy(source, target)

    def give_up(self, why):
        sys.exit(f"mutate.py: the unchanged tree {why}, see {self.log}")

    def run(self, arguments):
        with open(self.log, "w", encoding="utf-8") as log:
            return subprocess.run(arguments, stdout=log, stderr=log, check=False).returncode == 0

    def ninja(self, *targets):
        processors = self.processors if self.tests else os.cpu_count() or 1
        return self.run(["ninja", "-C", self.build, "-j", str(processors), *targets])

    def find_tests(self):
        """The tests that link or load what is mutated: program -> (command, folder). They are built
        on the way; a test has the name of its program."""
        programs = [test["name"] for test in self.known_tests() if self.depends(test["name"])]
        if not programs:
            self.give_up("has no test that depends on " + MUTATED)
        self.ninja(*programs) or self.give_up("does not build")
        tests = {}
        for test in self.known_tests():
            if test["name"] in programs:
                properties = {p["name"]: p["value"] for p in test["properties"]}
                tests[test["name"]] = (test["command"], properties.get("WORKING_DIRECTORY"))
        return tests

    def known_tests(self):
        shown = subprocess.run(
            ["ctest", "--test-dir", self.build, "-L", LABELS, "--show-only=json-v1"],
            check=True, capture_output=True, text=True).stdout
        return json.loads(shown)["tests"]

    def depends(self, program):
        inputs = subprocess.run(["ninja", "-C", self.build, "-t", "inputs", program], check=False,
                                capture_output=True, text=True).stdout
        return f"{self.source}/{MUTATED}/" in inputs

    def run_test(self, command, folder, timeout):
        """Why the test failed, or ""."""
        # Not by preexec_fn: that is not safe where there are threads.
        limits = f"ulimit -v {MAX_MEMORY >> 10}; ulimit -f {MAX_OUTPUT >> 9}; ulimit -c 0"
        environment = dict(os.environ, GTEST_FAIL_FAST="1", GTEST_BRIEF="1")
        environment.pop("GTEST_OUTPUT", None)
        with tempfile.TemporaryFile() as output, subprocess.Popen(
                ["/bin/sh", "-c", limits + '; exec "$@"', "sh", *command],
                cwd=folder or self.build, env=environment, stdin=subprocess.DEVNULL,
                stdout=output, stderr=output, start_new_session=True) as process:
            try:
                status = process.wait(timeout)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                return "timeout"
            if status == 0:
                return ""
            output.seek(0)
            text = output.read(1 << 20).decode(errors="replace")
        failed = re.search(r"\[  FAILED  \] ([\w./]+)", text)
        return failed.group(1) if failed else f"status {status}"

    # One mutant.

    def write(self, file, source):
        with open(os.path.join(self.source, file), "w", encoding="utf-8") as opened:
            opened.write(source)

    def restore(self):
        if self.changed is not None:
            shutil.copy(os.path.join(TREE, self.changed), os.path.join(self.source, self.changed))
            os.utime(os.path.join(self.source, self.changed))
            self.changed = None

    def steps(self, program):
        """How much there is to build for `program`."""
        planned = subprocess.run(["ninja", "-C", self.build, "-n", program], check=False,
                                 capture_output=True, text=True).stdout
        return planned.count("Building CXX")

    def judge(self, mutant, caught_by):
        """(outcome, detail). `caught_by` counts the mutants of the file that each program caught."""
        if self.changed != mutant.file:
            self.restore()
        with open(os.path.join(TREE, mutant.file), encoding="utf-8") as opened:
            source = opened.read()
        self.changed = mutant.file
        self.write(mutant.file, source[:mutant.start] + mutant.text + source[mutant.end:])

        if not self.ninja("src/lib/all"):
            return "does not build", ""
        costs = {program: self.steps(program) for program in self.tests} if (
            mutant.file.endswith(".h")) else {}
        order = sorted(self.tests, key=lambda program: (
            costs.get(program, 0), -caught_by[program], self.tests[program][2]))
        for program in order:
            if not self.ninja(program):
                return "does not build", program
            command, folder, seconds = self.tests[program]
            failure = self.run_test(command, folder, max(MIN_TIMEOUT, SLOWER * seconds))
            if failure:
                caught_by[program] += 1
                return "caught", f"{program}: {failure}"
        return "survived", ""


class Run:
    """The mutants still to be judged, shared by the jobs, and the results."""

    def __init__(self, mutants, results_file, retry):
        self.lock = threading.Lock()
        self.results = {}
        self.results_file = results_file
        known = {}
        if os.path.isfile(results_file):
            with open(results_file, encoding="utf-8") as opened:
                for line in opened:
                    try:
                        known.update((result["key"], result) for result in [json.loads(line)])
                    except ValueError:
                        continue  # cut off when the run was interrupted
        self.mutants = mutants
        self.waiting = []
        for mutant in mutants:
            result = known.get(mutant.key)
            if result and result["outcome"] not in retry:
                self.results[mutant.key] = result
            else:
                self.waiting.append(mutant)
        self.caught_by = collections.defaultdict(collections.Counter)
        self.failed = None

    def next(self, file):
        """A mutant of that file if there is one: then nothing else has to be built again."""
        with self.lock:
            if self.failed or not self.waiting:
                return None
            same = [mutant for mutant in self.waiting if mutant.file == file]
            counts = collections.Counter(mutant.file for mutant in self.waiting)
            # Headers come last: the tests that include them have to be compiled again.
            most = max(sorted(counts), key=lambda name: (name.endswith(".cc"), counts[name]))
            mutant = same[0] if same else next(m for m in self.waiting if m.file == most)
            self.waiting.remove(mutant)
            return mutant

    def work(self, tree):
        try:
            file = None
            while (mutant := self.next(file)) is not None:
                file = mutant.file
                began = time.monotonic()
                outcome, detail = tree.judge(mutant, self.caught_by[file])
                self.add(mutant, outcome, detail, time.monotonic() - began)
            tree.restore()
        except BaseException as error:  # the other jobs must not go on alone
            self.failed = error

    def add(self, mutant, outcome, detail, seconds):
        result = dict(key=mutant.key, file=mutant.file, line=mutant.line, operator=mutant.operator,
                      before=mutant.before, after=mutant.after, outcome=outcome, detail=detail,
                      seconds=round(seconds, 1))
        with self.lock:
            self.results[mutant.key] = result
            with open(self.results_file, "a", encoding="utf-8") as opened:
                opened.write(json.dumps(result) + "\n")
            print(f"{len(self.results)}/{len(self.mutants)} {outcome} ({seconds:.1f} s) "
                  f"{mutant.file}:{mutant.line} {mutant.operator} {detail}", flush=True)

    def report(self):
        done = [self.results[m.key] for m in self.mutants if m.key in self.results]
        for result in done:
            if result["outcome"] == "survived":
                print(f"\nsurvived: {result['file']}:{result['line']} ({result['operator']})\n"
                      f"  - {result['before']}\n  + {result['after']}")
        rows = [("file", "mutants", "caught", "survived", "does not build")]
        for file in sorted({result["file"] for result in done}) + ["all"]:
            counts = collections.Counter(
                r["outcome"] for r in done if file in (r["file"], "all"))
            rows.append((file, sum(counts.values()), *(counts[name] for name in rows[0][2:])))
        print()
        for row in rows:
            print(f"{row[0]:<45}" + "".join(f"{cell:>16}" for cell in row[1:]))
        timeouts = sum(r["detail"].endswith(": timeout") for r in done)
        if done:
            print(f"caught by a timeout: {timeouts}; seconds for each mutant: "
                  f"{sum(r['seconds'] for r in done) / len(done):.1f}")
        if len(done) < len(self.mutants):
            print(f"not judged yet: {len(self.mutants) - len(done)}")


def parse_options(arguments):
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    add = parser.add_argument
    add("--list", action="store_true", help="print the chosen mutants and end")
    add("--only", metavar="FILE", action="append", default=[],
        help="mutants of this file alone, for example config.cc; may be repeated")
    add("--limit", type=int, default=200, metavar="N", help="mutants to choose (default 200)")
    add("--seed", type=int, default=1, metavar="N", help="which ones are chosen (default 1)")
    add("--jobs", type=int, default=os.cpu_count() or 1, metavar="N",
        help="copies of the tree to work in (default: one for each processor)")
    add("--scratch", default=os.path.join(TREE, "build", "mutation"), metavar="DIR",
        help="folder for the copies (default build/mutation)")
    add("--results", metavar="FILE", help="results to go on from (default DIR/results.jsonl)")
    add("--retry", action="append", default=[], metavar="OUTCOME",
        help="judge those mutants again, for example survived")
    return parser.parse_args(arguments)


def main(arguments):
    options = parse_options(arguments)
    files = [f"{MUTATED}/{name}" for name in sorted(os.listdir(os.path.join(TREE, MUTATED)))
             if name.endswith((".cc", ".h"))]
    wanted = [file for file in files
              if not options.only or file in options.only or os.path.basename(file) in options.only]
    if not wanted:
        sys.exit(f"mutate.py: no such file in {MUTATED}")
    candidates = {file: found for file in wanted if (found := list(mutants_of(file)))}
    mutants = choose(candidates, options.limit, options.seed)
    if options.list:
        for mutant in mutants:
            print(f"{mutant.file}:{mutant.line} ({mutant.operator})\n"
                  f"  - {mutant.before}\n  + {mutant.after}")
        print(f"{len(mutants)} of {sum(map(len, candidates.values()))} mutants")
        return 0

    os.makedirs(options.scratch, exist_ok=True)
    results_file = options.results or os.path.join(options.scratch, "results.jsonl")
    run = Run(mutants, results_file, options.retry)
    if run.waiting:
        trees = []
        jobs = max(1, min(options.jobs, len(run.waiting)))
        for i in range(jobs):
            folder = os.path.join(options.scratch, f"job-{i}")
            os.makedirs(folder, exist_ok=True)
            print(f"preparing {folder}", flush=True)
            trees.append(Tree(folder, max(1, (os.cpu_count() or 1) // jobs)))
            trees[-1].prepare()
        threads = [threading.Thread(target=run.work, args=(tree,), daemon=True) for tree in trees]
        for thread in threads:
            thread.start()
        try:
            for thread in threads:
                thread.join()
        except KeyboardInterrupt:
            run.failed = KeyboardInterrupt("interrupted")
    run.report()
    if run.failed:
        print(f"mutate.py: {run.failed!r}", file=sys.stderr)
        return 2
    return 1 if any(r["outcome"] == "survived" for r in run.results.values()) else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
