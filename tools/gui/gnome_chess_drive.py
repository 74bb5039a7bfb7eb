#!/usr/bin/python3
"""Plays the human side of a GNOME Chess game with mouse clicks.

Used by gnome_chess_game.sh.  GNOME Chess runs the engine and referees; this
program only does what a person at the board would do: look at the board,
click a piece and then its target square.  It follows the game through
GNOME Chess's own debug output (G_MESSAGES_DEBUG=gnome-chess), which shows
every line sent to and read from the engine, so the position it plays from
is the one GNOME Chess has.

The human side plays a random legal move (fixed seed), found with
Stockfish's "go perft 1" move list; that keeps the game short and lets the
engine show that it can finish a game.  Promotions are avoided while any
other move exists.

Usage: gnome_chess_drive.py LOGFILE HUMAN_COLOUR(white|black) OUTDIR
Needs DISPLAY set; exits 0 when GNOME Chess shows a result.
"""
import os
import random
import re
import subprocess
import sys
import time

LOG, HUMAN, OUT = sys.argv[1], sys.argv[2], sys.argv[3]
SEED = int(os.environ.get("SEED", "1"))
MOVE_TIMEOUT = int(os.environ.get("MOVE_TIMEOUT", "120"))
MAX_PLIES = int(os.environ.get("MAX_PLIES", "400"))
STOCKFISH = os.environ.get("STOCKFISH", "/usr/games/stockfish")
IM_CONVERT = "/usr/bin/convert"  # ImageMagick's, not any other "convert"
END_TITLES = ("White Wins", "Black Wins", "Game is Drawn")


def say(msg):
    print(time.strftime("[%H:%M:%S]"), msg, file=sys.stderr, flush=True)


def sh(*args):
    return subprocess.run(args, check=True, capture_output=True, text=True).stdout


def window():
    out = subprocess.run(["xdotool", "search", "--onlyvisible", "--name",
                          "to Move$|Wins$|Drawn$"], capture_output=True, text=True).stdout
    ids = out.split()
    return ids[0] if ids else None


def title():
    wid = window()
    return sh("xdotool", "getwindowname", wid).strip() if wid else ""


def finished():
    return any(t in title() for t in END_TITLES)


def board_geometry(shot):
    """The board is drawn inside a dark frame (#2e3436) half a square wide on
    each side; find the frame on a screenshot and derive the squares."""
    out = sh(IM_CONVERT, shot, "-fill", "black", "+opaque", "srgb(46,52,54)",
             "-fill", "white", "-opaque", "srgb(46,52,54)", "-trim",
             "-format", "%w %h %X %Y", "info:")
    w, h, x, y = (int(v) for v in out.replace("+", " ").split())
    if abs(w - h) > 4 or w < 200:
        raise SystemExit(f"board frame not found (got {w}x{h}+{x}+{y})")
    square = w / 9.0
    return x + square / 2, y + square / 2, square


def square_centre(sq, geom):
    left, top, size = geom
    f, r = ord(sq[0]) - ord("a"), int(sq[1]) - 1
    if HUMAN == "black":  # board drawn from Black's side
        f, r = 7 - f, 7 - r
    return int(left + size * f + size / 2), int(top + size * (7 - r) + size / 2)


class Log:
    """Reads GNOME Chess's output as it grows."""

    def __init__(self, path):
        self.path, self.pos, self.pending = path, 0, []

    def read(self):
        with open(self.path, "rb") as fh:
            fh.seek(self.pos)
            data = fh.read()
        cut = data.rfind(b"\n") + 1  # leave a partial last line for later
        self.pos += cut
        self.pending += data[:cut].decode(errors="replace").splitlines()

    def wait(self, pattern, timeout):
        rx = re.compile(pattern)
        end = time.time() + timeout
        while time.time() < end:
            self.read()
            while self.pending:
                m = rx.search(self.pending.pop(0))
                if m:
                    return m
            if finished():
                return None
            time.sleep(0.2)
        return None


class Stockfish:
    def __init__(self):
        self.p = subprocess.Popen([STOCKFISH], stdin=subprocess.PIPE,
                                  stdout=subprocess.PIPE, text=True, bufsize=1)
        self.send("uci")
        self.read_until("uciok")

    def send(self, line):
        self.p.stdin.write(line + "\n")
        self.p.stdin.flush()

    def read_until(self, prefix):
        lines = []
        while True:
            line = self.p.stdout.readline()
            if not line:
                raise SystemExit("stockfish exited")
            line = line.strip()
            lines.append(line)
            if line.startswith(prefix):
                return lines

    def legal_moves(self, moves):
        self.send("position startpos" + (" moves " + " ".join(moves) if moves else ""))
        self.send("go perft 1")
        lines = self.read_until("Nodes searched")
        return [l.split(":")[0] for l in lines if re.match(r"^[a-h][1-8][a-h][1-8][qrbn]?: ", l)]

    def close(self):
        self.send("quit")
        self.p.wait(timeout=5)


def main():
    rng = random.Random(SEED)
    sf = Stockfish()
    log = Log(LOG)
    moves = []
    shot = os.path.join(OUT, "board-geometry.png")
    sh("import", "-window", "root", shot)
    geom = board_geometry(shot)
    say(f"board: first square centre at ({geom[0] + geom[2] / 2:.0f},{geom[1] + geom[2] / 2:.0f}), "
        f"square {geom[2]:.1f} px")
    human_turn = HUMAN == "white"
    while len(moves) < MAX_PLIES:
        if finished():
            break
        if not human_turn:
            m = log.wait(r"Engine moves (\S+)", MOVE_TIMEOUT)
            if not m:
                if finished():
                    break
                raise SystemExit(f"no engine move within {MOVE_TIMEOUT}s after {' '.join(moves)}")
            moves.append(m.group(1))
            say(f"engine: {m.group(1)}")
            human_turn = True
            continue
        legal = sf.legal_moves(moves)
        if not legal:
            say("no legal move for the human side; waiting for GNOME Chess to show the result")
            for _ in range(20):
                if finished():
                    break
                time.sleep(0.5)
            break
        plain = [mv for mv in legal if len(mv) == 4] or legal
        move = rng.choice(plain)
        if len(move) == 5:
            raise SystemExit(f"only promotions are legal ({legal}); the promotion dialog is not driven")
        for attempt in (1, 2):
            for sq in (move[:2], move[2:4]):
                x, y = square_centre(sq, geom)
                sh("xdotool", "mousemove", str(x), str(y), "click", "1")
                time.sleep(0.3)
            # GNOME Chess sends the new position to the engine once it has
            # accepted the move: that is our confirmation.
            pat = r"Writing line to engine: 'position startpos moves " + re.escape(" ".join(moves + [move])) + "'"
            if log.wait(pat, 10) or finished():
                break
            say(f"move {move} not taken (attempt {attempt})")
        else:
            raise SystemExit(f"GNOME Chess did not take the move {move} after {' '.join(moves)}")
        moves.append(move)
        say(f"human: {move}")
        human_turn = False
    sf.close()
    # the engine's last (e.g. mating) move may still be unread
    log.read()
    for line in log.pending:
        m = re.search(r"Engine moves (\S+)", line)
        if m:
            moves.append(m.group(1))
    t = title()
    say(f"final title: {t!r}; moves: {' '.join(moves)}")
    with open(os.path.join(OUT, "moves.txt"), "w") as fh:
        fh.write(" ".join(moves) + "\n" + t + "\n")
    return 0 if any(x in t for x in END_TITLES) else 1


if __name__ == "__main__":
    sys.exit(main())
