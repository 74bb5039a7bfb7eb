#!/usr/bin/env python3
"""Mutation testing on a sample: how many small faults planted in the program the fast test
suite notices, and which ones it lets through.

    nice -n 5 tools/mutate.py [--seed 2026] [--count 160] [--build build-mutate] [--log FILE]
                              [--list] [--only 3,17]

Candidate sites come from the program's .cpp files in core/, eval/, search/, ui/, uci/ and
analysis/ only: not the headers, not tests/ or tools/. Comments, string and character literals,
preprocessor lines and static_assert lines are skipped. Each mutant is one change at one place:

    comparison  < <= > >= == != flipped (< to <=, <= to <, == to !=, ...)
    arithmetic  binary + - * / % and += -= *= /= swapped (+ with -, * with /, % to /)
    constant    an integer literal n made n+1 (not in array sizes or template arguments)
    negation    if (X) or while (X) made if (!(X))
    logical     && and || swapped
    drop        a call or assignment that is a whole line, or the body of a one-line if,
                replaced by ';' (never a declaration, a return or a break)

The sources are clang-formatted, so a binary operator is one with a space on both sides: that
tells it from a sign, a pointer or reference declarator and a template bracket.

The seed picks the sample from the candidates sorted by file, line, column and kind, taking the
kinds in turn and, within a kind, the files in turn. Each mutant is written into its file, the
Release build in its own folder rebuilt (every target, the tests too) and the fast suite run up
to its first failure: the unit tests as one process, then ctest less the unit cases (label
unit), the deep perft counts (label perft-deep) and the slow whole-game tests. A mutant that
does not compile is left out of the share killed. The file is always put back, on Ctrl-C or a
kill too, and at the end the sources are checked to be as committed. The run first times the
fast suite unmutated; each mutant then costs a rebuild and at most one such run. A mutant in a
front end (ui/, uci/, analysis/) rebuilds only its programs and the unit tests and runs only the
tests that start one of its programs, since no other test can notice it; one in the console
program that changes the opening book it builds runs every test. Progress and
summary also go to the log. --list prints the sample without running it; --only runs the given
mutants again, by their index in that list.
"""
import argparse
import contextlib
import json
import os
import random
import re
import signal
import subprocess
import sys
import time
from collections import Counter, defaultdict, deque
from dataclasses import dataclass

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SOURCE_DIRS = ["core", "eval", "search", "ui", "uci", "analysis"]
SLOW_TESTS = "^(selfplay|auto232-match|install-staged)$"
UNIT_TIMEOUT, TEST_TIMEOUT, SUITE_TIMEOUT, BUILD_TIMEOUT = 60, 60, 1200, 240

FLIPS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}
SWAPS = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "/", "+=": "-=", "-=": "+=", "*=": "/=",
         "/=": "*="}
LOGICAL = {"&&": "||", "||": "&&"}
# Longest first, so that << is not read as two < nor -> as a minus.
OPERATOR = re.compile(r"<<=|>>=|<=>|->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%]=|[<>+\-*/%]")
INTEGER = re.compile(r"(?<![\w.])(0[xX][0-9a-fA-F]+|[1-9][0-9]*|0)([uUlL]*)(?![\w.])")
TEMPLATE_OPEN = re.compile(r"\w<(?=\S)")
ARRAY_DECLARATION = re.compile(r"\b([A-Za-z_][\w:]*)[*&]? +[A-Za-z_]\w*((?:\[[^\]]*\])+)")
NOT_TYPES = {"return", "case", "else", "delete", "new", "throw", "sizeof"}
CONDITION = re.compile(r"\b(if|while) \(")
DECLARATION = re.compile(r"\s*(const\s+)?[\w:]+[*&]*\s+\w+\s*=[^=]")  # if (T* p = ...)
# A statement to drop: an assignment or increment of a name, a member or an element (never
# `Type name = ...`, which has a space before the name), or a call.
LVALUE = r"\*?[A-Za-z_][\w:.\[\]>-]*"
ASSIGNMENT = re.compile(rf"{LVALUE} (?:[-+*/%|&^]|<<|>>)?= .*|(\+\+|--){LVALUE}|{LVALUE}(\+\+|--)")
CALL = re.compile(r"([A-Za-z_][\w:.\[\]>-]*)(?:<[^;]*>)?\(.*\)")
NOT_CALLS = {"assert", "sizeof"}  # assert is nothing in a Release build
# What may stand between the previous ; { or } and a statement that starts a line.
STATEMENT_START = re.compile(r"|(else )?(if|while|for) \(.*\)|else|.*:", re.S)


@dataclass(frozen=True, order=True)
class Mutant:
    file: str
    line: int
    column: int
    kind: str
    start: int  # the span of the file's text that `after` replaces
    end: int
    before: str
    after: str


def blank_out(text):
    """The source with comments, preprocessor lines and the insides of string and character
    literals turned to spaces (newlines and quotes kept), every column staying in place."""
    out, i, line_start = list(text), 0, True
    while i < len(text):
        c, end, keep = text[i], i + 1, 0
        if line_start and c == "#":  # a directive, with its backslash continuations
            while (end := text.find("\n", end)) > 0 and text[end - 1] == "\\":
                end += 1
        elif text.startswith("//", i):
            end = text.find("\n", i)
        elif text.startswith("/*", i):
            end = text.index("*/", i) + 2
        elif c in "\"'":
            while text[end] != c:
                end += 2 if text[end] == "\\" else 1
            end, keep = end + 1, 1
        end = len(text) if end < 0 else end
        if end > i + 1:
            out[i + keep:end - keep] = [" " if k != "\n" else k for k in text[i + keep:end - keep]]
        line_start = c == "\n" or (line_start and c in " \t")
        i = end
    return "".join(out)


def matching(code, i, stop):
    """The index of the bracket closing the one at i, or None if a stop character comes first."""
    opening, closing, depth = code[i], {"(": ")", "<": ">"}[code[i]], 0
    for j in range(i, len(code)):
        depth += (code[j] == opening) - (code[j] == closing)
        if depth == 0:
            return j
        if code[j] in stop:
            return None
    return None


def operator_sites(code, text):
    """Comparisons, arithmetic and logical operators, binary ones only."""
    for m in OPERATOR.finditer(code):
        op, a, b = m.group(), m.start(), m.end()
        if not (0 < a and b < len(code) and code[a - 1].isspace() and code[b].isspace()):
            continue
        line = code[code.rfind("\n", 0, a) + 1:code.find("\n", a)]
        if op in ("+", "+=") and '"' in line:  # most likely joining strings
            continue
        for kind, table in (("comparison", FLIPS), ("arithmetic", SWAPS), ("logical", LOGICAL)):
            if op in table:
                yield kind, a, b, table[op]


def constant_sites(code, text):
    """Integer literals, less those sizing an array or given as template arguments."""
    exempt = set()
    for m in ARRAY_DECLARATION.finditer(code):
        if m.group(1) not in NOT_TYPES:
            exempt.update(range(m.start(2), m.end(2)))
    for m in TEMPLATE_OPEN.finditer(code):
        if close := matching(code, m.end() - 1, stop=";{}()"):
            exempt.update(range(m.end(), close))
    for m in INTEGER.finditer(code):
        if m.start() not in exempt:
            number, suffix = m.groups()
            value = int(number, 0) + 1
            if number[:2].lower() == "0x":
                value = f"0x{value:X}" if number[2:].isupper() else hex(value)
            yield "constant", m.start(), m.end(), f"{value}{suffix}"


def negation_sites(code, text):
    """The conditions of if and while statements, less those declaring a variable."""
    for m in CONDITION.finditer(code):
        close = matching(code, m.end() - 1, stop=";{}")
        if close and not DECLARATION.match(code, m.end(), close):
            yield "negation", m.end(), close, "!(" + text[m.end():close] + ")"


def drop_sites(code, text):
    """Calls and assignments that are a whole line, or the body of a one-line if."""
    line_end = -1
    for line in code.split("\n"):
        line_end += len(line) + 1
        start = line_end - len(line.lstrip())
        if not line.rstrip().endswith(";") or "{" in line or "}" in line:
            continue
        if code.startswith("if (", start):
            close = matching(code, start + 3, stop=";{}")
            if close is None or close > line_end:
                continue
            start = line_end - len(code[close + 1:line_end].lstrip())
        elif not STATEMENT_START.fullmatch(
                code[max(code.rfind(c, 0, start) for c in ";{}") + 1:start].strip()):
            continue
        statement = code[start:line_end].rstrip()
        body = re.sub(r"\[[^\[\]]*\]", "[]", statement[:-1])  # index expressions out of the way
        call = CALL.fullmatch(body)
        if ASSIGNMENT.fullmatch(body) or call and call.group(1) not in NOT_CALLS:
            yield "drop", start, start + len(statement), ";"


def find_candidates():
    listed = subprocess.run(["git", "ls-files", "--", *(d + "/*.cpp" for d in SOURCE_DIRS)],
                            cwd=ROOT, capture_output=True, text=True, check=True).stdout.split()
    candidates = []
    for path in listed:
        with open(os.path.join(ROOT, path), newline="") as source:
            text = source.read()
        code = blank_out(text)
        lines = code.split("\n")
        for finder in (operator_sites, constant_sites, negation_sites, drop_sites):
            for kind, start, end, after in finder(code, text):
                line = code.count("\n", 0, start) + 1
                if "static_assert" not in lines[line - 1]:  # the compiler's business
                    column = start - code.rfind("\n", 0, start)
                    candidates.append(
                        Mutant(path, line, column, kind, start, end, text[start:end], after))
    return candidates


def choose(candidates, count, seed):
    """The sample: the kinds in turn, within a kind the files in turn, each in seeded order."""
    rng = random.Random(seed)
    pools = defaultdict(lambda: defaultdict(list))
    for mutant in sorted(candidates):
        pools[mutant.kind][mutant.file].append(mutant)
    queues = []
    for kind in sorted(pools):
        files = sorted(pools[kind])
        rng.shuffle(files)
        for file in files:
            rng.shuffle(pools[kind][file])
        queues.append(deque(deque(pools[kind][file]) for file in files))
    chosen = []
    while len(chosen) < count and any(queues):
        for queue in queues:
            if queue and len(chosen) < count:
                pool = queue.popleft()
                chosen.append(pool.popleft())
                if pool:
                    queue.append(pool)
    return sorted(chosen)


def run(command, timeout, cwd=ROOT):
    """Runs a command in a process group of its own; returns its exit status (None when it ran
    out of time) and its output. The whole group is killed on a time-out or an interruption."""
    process = subprocess.Popen(command, cwd=cwd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               text=True, errors="replace", start_new_session=True)
    try:
        output = process.communicate(timeout=timeout)[0]
        return process.returncode, output
    except BaseException as error:
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGKILL)
        if not isinstance(error, subprocess.TimeoutExpired):
            raise
        return None, process.communicate()[0]


# The programs a front end's sources go into (the unit tests link every library too); the
# engine's folders go into all of them. A test can only notice a mutant through a program it
# runs, so only those programs are rebuilt and only the tests that run one of them are run.
FRONT_END_PROGRAMS = {"ui": ["kovrel"], "uci": ["kovrel-uci"],
                      "analysis": ["kovrel-epd", "kovrel-annotate"]}


def programs_of(mutant):
    """The programs the mutant changes, or None for all of them."""
    return FRONT_END_PROGRAMS.get(mutant.file.split("/")[0])


def suite_tests(build):
    """The fast suite's ctest cases with the program names on their command lines and in their
    environment."""
    status, output = run(["ctest", "--show-only=json-v1"], 120, build)
    if status != 0:
        sys.exit("mutate: ctest cannot list the tests")
    tests = []
    for test in json.loads(output)["tests"]:
        labels = [label for p in test.get("properties", []) if p["name"] == "LABELS"
                  for label in p["value"]]
        if "unit" in labels or "perft-deep" in labels or re.match(SLOW_TESTS, test["name"]):
            continue
        # A program may also reach a test's script through its environment.
        words = test["command"] + [value.split("=", 1)[-1] for p in test.get("properties", [])
                                   if p["name"] == "ENVIRONMENT" for value in p["value"]]
        tests.append((test["name"], {os.path.basename(word) for word in words}))
    return tests


def build_problem(build, programs=None):
    """Rebuilds the given programs and the unit tests (every target when None); returns None,
    or the outcome and why when the build fails."""
    # The book too: the console program builds it, and a book changed by an earlier console
    # mutant is built again from the restored program.
    targets = [] if programs is None else ["--target", *programs, "kovrel-tests", "book"]
    status, output = run(["cmake", "--build", build, "-j2", *targets], BUILD_TIMEOUT)
    if status == 0:
        return None
    if error := re.search(r"^.*(error:|undefined reference).*$", output, re.M):
        return "not compiled", error.group().strip()[:100]
    return "killed", "build timed out" if status is None else "the book was not built"


def fast_suite_failure(build, tests=None):
    """Runs the fast suite up to its first failure (of the ctest cases only `tests`, by name,
    when given); returns what failed, or None."""
    status, output = run(["timeout", str(UNIT_TIMEOUT), "./kovrel-tests", "--gtest_brief=1",
                          "--gtest_fail_fast"], UNIT_TIMEOUT + 30, os.path.join(build, "tests"))
    if status in (124, None):
        return "unit tests timed out"
    if status != 0:
        failed = re.search(r"^\[  FAILED  \] (\S+)", output, re.M)
        return f"unit test {failed.group(1)}" if failed else f"unit tests (exit {status})"
    if tests is not None and not tests:
        return None
    chosen = ["-R", "^(" + "|".join(re.escape(name) for name in tests) + ")$"] if tests else []
    status, output = run(["ctest", "--stop-on-failure", "--timeout", str(TEST_TIMEOUT), "-j2",
                          "-LE", "^(unit|perft-deep)$", "-E", SLOW_TESTS, *chosen], SUITE_TIMEOUT,
                         build)
    if status is None:
        return "ctest timed out"
    if status != 0:
        failed = re.search(r"^\s*\d+ - (\S+ \(.+\))$", output, re.M)
        return failed.group(1) if failed else f"ctest (exit {status})"
    return None


def try_mutant(mutant, build, tests, book):
    """Plants the mutant, builds and tests; returns the outcome and a note. The file is always
    restored. `book` is the unmutated build's opening book: a console mutant that changes it
    may show in any test that reads it, so then every test runs."""
    path = os.path.join(ROOT, mutant.file)
    with open(path, newline="") as source:
        original = source.read()
    try:
        with open(path, "w", newline="") as source:
            source.write(original[:mutant.start] + mutant.after + original[mutant.end:])
        programs = programs_of(mutant)
        if problem := build_problem(build, programs):
            return problem
        chosen = None
        if programs is not None:
            if book_of(build) == book:
                chosen = [name for name, words in tests if words & set(programs)]
            elif problem := build_problem(build):  # every test runs: every program afresh
                return problem
        failure = fast_suite_failure(build, chosen)
        return ("killed", failure) if failure else ("survived", "")
    finally:
        with open(path, "w", newline="") as source:
            source.write(original)


def book_of(build):
    with open(os.path.join(build, "openings.dat"), "rb") as book:
        return book.read()


def describe(index, total, mutant):
    def short(fragment, width=48):
        fragment = " ".join(fragment.split())
        return fragment if len(fragment) <= width else fragment[:width - 3] + "..."
    return (f"{index:3}/{total} {mutant.file}:{mutant.line} {mutant.kind} "
            f"'{short(mutant.before)}' -> '{short(mutant.after)}'")


def changed_line(mutant):
    """The mutant's (first) line before and after the change."""
    with open(os.path.join(ROOT, mutant.file), newline="") as source:
        text = source.read()
    mutated = text[:mutant.start] + mutant.after + text[mutant.end:]
    return [t.split("\n")[mutant.line - 1].strip() for t in (text, mutated)]


def summarise(results, seconds, report):
    outcomes = Counter(outcome for _, _, outcome in results)
    tested = outcomes["killed"] + outcomes["survived"]
    share = 100.0 * outcomes["killed"] / tested if tested else 0.0
    report(f"\ntried {len(results)}, not compiled {outcomes['not compiled']}, killed "
           f"{outcomes['killed']}, survived {outcomes['survived']}: {share:.1f}% killed "
           f"({outcomes['killed']} of {tested}); {seconds / 60:.0f} min in all")
    for description, mutant, outcome in results:
        if outcome == "survived":
            before, after = changed_line(mutant)
            report(f"survived {description}\n    before: {before}\n    after:  {after}")


def sources_as_committed():
    return run(["git", "diff", "--quiet", "--", *SOURCE_DIRS], 60)[0] == 0


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--seed", type=int, default=2026)
    parser.add_argument("--count", type=int, default=160)
    parser.add_argument("--build", default="build-mutate", help="its own Release build folder")
    parser.add_argument("--log", help="default: mutate.log in the build folder")
    parser.add_argument("--list", action="store_true", help="print the sample, run nothing")
    parser.add_argument("--only", help="run only these indices of the sample, as in 3,17")
    args = parser.parse_args()
    build = os.path.join(ROOT, args.build)
    candidates = find_candidates()
    sample = choose(candidates, args.count, args.seed)
    if args.list:
        kinds = Counter(mutant.kind for mutant in candidates)
        kinds = ", ".join(f"{kinds[kind]} {kind}" for kind in sorted(kinds))
        print(f"{len(candidates)} candidates ({kinds}); seed {args.seed} picks {len(sample)}")
        for index, mutant in enumerate(sample, 1):
            print(describe(index, len(sample), mutant))
        return 0
    indices = [int(i) for i in args.only.split(",")] if args.only else range(1, len(sample) + 1)
    if not all(1 <= i <= len(sample) for i in indices):
        sys.exit(f"mutate: --only takes indices from 1 to {len(sample)}")
    if not sources_as_committed():
        sys.exit("mutate: the program's sources have uncommitted changes")
    signal.signal(signal.SIGTERM, signal.default_int_handler)  # a kill restores the file too
    started = time.time()
    if not os.path.exists(os.path.join(build, "CMakeCache.txt")):
        run(["cmake", "-S", ".", "-B", build, "-DCMAKE_BUILD_TYPE=Release"], BUILD_TIMEOUT)
    if build_problem(build):
        sys.exit("mutate: the program does not build unmutated")
    suite_started = time.time()
    if failure := fast_suite_failure(build):
        sys.exit(f"mutate: the fast suite fails unmutated: {failure}")
    tests, book = suite_tests(build), book_of(build)
    with open(args.log or os.path.join(build, "mutate.log"), "w") as log:
        def report(line):
            print(line, flush=True)
            log.write(line + "\n")
            log.flush()

        report(f"fast suite unmutated: {time.time() - suite_started:.0f} s; seed {args.seed}, "
               f"{len(candidates)} candidates, running {len(indices)} of {len(sample)}")
        results = []
        try:
            for index in indices:
                mutant, began = sample[index - 1], time.time()
                description = describe(index, len(sample), mutant)
                outcome, note = try_mutant(mutant, build, tests, book)
                results.append((description, mutant, outcome))
                report(f"{description}: {outcome}{f' ({note})' if note else ''}, "
                       f"{time.time() - began:.0f} s")
        except KeyboardInterrupt:
            report("interrupted: the summary covers the mutants run so far")
        summarise(results, time.time() - started, report)
        build_problem(build)  # leave the build, and the book it copies out, unmutated
        if not sources_as_committed():
            report("mutate: THE SOURCES DIFFER FROM THE COMMITTED ONES")
            return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
