#!/usr/bin/env python3
"""How fast kovrel-uci answers while it searches: the time from `isready` to `readyok` and from
`stop` to `bestmove` during a running `go infinite` (and `go ponder`), over many trials in
middlegame positions, measured on the pipe as a GUI sees it.

    tools/uci_latency.py [ENGINE] [TRIALS]

Defaults: build/kovrel-uci, 40 trials. Prints the median, the 95th percentile and the worst
answer in milliseconds, and exits 1 when any answer took 50 ms or more."""
import os
import random
import select
import statistics
import subprocess
import sys
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
ENGINE = sys.argv[1] if len(sys.argv) > 1 else os.path.join(ROOT, "build", "kovrel-uci")
TRIALS = int(sys.argv[2]) if len(sys.argv) > 2 else 40
LIMIT_MS = 50

POSITIONS = [
    "startpos moves e2e4 c7c5 g1f3 b8c6 d2d4 c5d4 f3d4 g7g6",
    "fen r1bq1rk1/pp2ppbp/2np1np1/8/3NP3/2N1BP2/PPPQ2PP/R3KB1R w KQ - 3 9",
    "fen r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
    "fen 2r3k1/pp3ppp/4p3/3pP3/3P4/P4N2/1P3PPP/2R3K1 w - - 0 25",
]


class Engine:
    def __init__(self, path):
        self.process = subprocess.Popen([path], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        bufsize=0)
        self.pending = b""

    def send(self, line):
        self.process.stdin.write((line + "\n").encode())
        self.process.stdin.flush()

    def wait_for(self, prefix, timeout=10.0):
        """Reads lines until one starts with `prefix`; returns the time it arrived."""
        deadline = time.monotonic() + timeout
        while True:
            while b"\n" in self.pending:
                line, self.pending = self.pending.split(b"\n", 1)
                if line.decode(errors="replace").startswith(prefix):
                    return time.monotonic()
            left = deadline - time.monotonic()
            if left <= 0:
                raise TimeoutError(f"no '{prefix}' within {timeout} s")
            ready, _, _ = select.select([self.process.stdout], [], [], left)
            if ready:
                chunk = os.read(self.process.stdout.fileno(), 65536)
                if not chunk:
                    raise EOFError("the engine closed its output")
                self.pending += chunk


def percentile(values, share):
    ordered = sorted(values)
    return ordered[min(len(ordered) - 1, int(share * len(ordered)))]


def main():
    engine = Engine(ENGINE)
    engine.send("uci")
    engine.wait_for("uciok")
    random.seed(1)
    ready, stop = [], []
    for trial in range(TRIALS):
        engine.send("position " + POSITIONS[trial % len(POSITIONS)])
        pondering = trial % 2 == 1
        engine.send("go ponder wtime 60000 btime 60000" if pondering else "go infinite")
        time.sleep(random.uniform(0.2, 1.0))
        sent = time.monotonic()
        engine.send("isready")
        ready.append(1000 * (engine.wait_for("readyok") - sent))
        time.sleep(random.uniform(0.05, 0.3))
        sent = time.monotonic()
        engine.send("stop")
        stop.append(1000 * (engine.wait_for("bestmove") - sent))
    engine.send("quit")
    engine.process.wait(timeout=10)
    failed = False
    for name, values in (("isready -> readyok", ready), ("stop -> bestmove", stop)):
        worst = max(values)
        failed = failed or worst >= LIMIT_MS
        print(f"{name}: {len(values)} trials, median {statistics.median(values):.2f} ms, "
              f"95% {percentile(values, 0.95):.2f} ms, worst {worst:.2f} ms")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
