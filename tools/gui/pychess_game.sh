#!/usr/bin/env bash
# Plays one complete engine-vs-engine game with kovrel-uci inside PyChess,
# under a private Xvfb display, with PyChess running both engines and
# refereeing the game.  The game is started from PyChess's own New Game
# dialog (opened with Ctrl+N and confirmed with xdotool); the players, skill
# and clock in that dialog come from PyChess's saved configuration, which this
# script writes beforehand.
#
# Usage: tools/gui/pychess_game.sh [OUT_DIR]
#   OUT_DIR (default ./gui-out/pychess) receives: the PyChess debug log, the
#   PGN PyChess saved, screenshots (dialog, mid-game, end), engines.json and
#   config as PyChess left them, and summary.txt.
# Environment:
#   ENGINE=path      engine to test (default: build/kovrel-uci of this repo)
#   OPPONENT=name    stockfish (default) or self (Kovrel against itself)
#   OPP_SKILL=n      PyChess skill 0..20 for the opponent (default 3; for
#                    Stockfish that means "Skill Level 3" and "go depth 3")
#   MINUTES=n GAIN=s clock: n minutes + s seconds a move (default 1 + 1)
#   GAME_TIMEOUT=s   give up if the game has no result after s (default 900)
# Run as root to have the missing Debian packages installed.
set -euo pipefail

HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
REPO=$(cd "$HERE/../.." && pwd)
# shellcheck source=tools/gui/lib.sh
source "$HERE/lib.sh"

OUT=$(mkdir -p "${1:-gui-out/pychess}" && cd "${1:-gui-out/pychess}" && pwd)
ENGINE=${ENGINE:-$REPO/build/kovrel-uci}
OPPONENT=${OPPONENT:-stockfish}
OPP_SKILL=${OPP_SKILL:-3}
MINUTES=${MINUTES:-1}
GAIN=${GAIN:-1}
GAME_TIMEOUT=${GAME_TIMEOUT:-900}

need_packages pychess:pychess Xvfb:xvfb xdotool:xdotool import:imagemagick \
    dbus-run-session:dbus-daemon
[[ $OPPONENT == self ]] || need_packages stockfish:stockfish

open_scratch pychess-game

# PyChess keeps everything under $HOME (~/.config/pychess, ~/.local/share/pychess).
export HOME=$WORK/home
unset XDG_CONFIG_HOME XDG_DATA_HOME XDG_CACHE_HOME
CONF=$HOME/.config/pychess
DATA=$HOME/.local/share/pychess
mkdir -p "$CONF" "$DATA" "$WORK/pgn"

# The engine list.  This is what PyChess's Engines dialog writes when an
# engine is added there (Edit > Engines > New, pick the binary, protocol UCI);
# PyChess runs every engine with "recheck": true once at start-up to learn its
# id and options, and then fills in md5, author and options itself.
# Stockfish is named explicitly so the game does not depend on what else
# PyChess's auto-detection finds in PATH.
cat >"$CONF/engines.json" <<EOF
[
 {"name": "Kovrel", "protocol": "uci", "command": "$KOVREL",
  "workingDirectory": "$(dirname "$KOVREL")", "recheck": true,
  "country": "unknown", "comment": "", "level": 2000},
 {"name": "stockfish", "protocol": "uci", "command": "$(command -v stockfish || echo /usr/games/stockfish)",
  "recheck": true, "country": "no", "comment": "", "level": 3554}
]
EOF

# Settings that keep start-up quiet and headless: no tip-of-the-day or
# external-downloads dialogs, no sound, no network look-ups.
write_base_config() {
    cat >"$CONF/config" <<EOF
[General]
show_tip_at_startup = False
dont_show_externals_at_startup = True
usesounds = False
online_egtb_check = False
download_chess_db = False
download_scoutfish = False
EOF
}
write_base_config

start_pychess() {
    setsid dbus-run-session -- pychess --no-version-check --log-debug \
        >>"$WORK/pychess.stdout" 2>&1 &
    GUI_PID=$!
    wait_for 60 "PyChess main window" bash -c '[[ -n $(xdotool search --onlyvisible --name " - PyChess$" 2>/dev/null) ]]' \
        || die "PyChess did not open its window"
}

start_xvfb 1280x1024

# --- Run 1: let PyChess discover the engines (the UCI handshake) and save
# engines.json with what it learned.
log "PyChess run 1: engine discovery"
start_pychess
discovered() {
    /usr/bin/python3 - "$CONF/engines.json" <<'EOF'
import json, sys
try:
    engines = json.load(open(sys.argv[1]))
except Exception:
    sys.exit(1)
k = [e for e in engines if e["name"] == "Kovrel"]
sys.exit(0 if k and k[0].get("md5") and not k[0].get("recheck") and k[0].get("options") else 1)
EOF
}
wait_for 90 "engines.json with Kovrel discovered" discovered \
    || { cp "$CONF/engines.json" "$OUT/" 2>/dev/null; die "PyChess did not accept Kovrel (see $OUT/engines.json)"; }
sleep 2
stop_group "$GUI_PID"; GUI_PID=
cp "$CONF/engines.json" "$OUT/engines.json"

# --- Choose the players.  The New Game dialog lists "Human Being" first and
# then the engines sorted by lower-cased name, and remembers the chosen rows
# as plain indexes in the config; compute them the same way.
read -r WHITE_IDX BLACK_IDX < <(/usr/bin/python3 - "$CONF/engines.json" "$OPPONENT" <<'EOF'
import json, sys
names = sorted((e["name"] for e in json.load(open(sys.argv[1]))), key=str.lower)
opp = "Kovrel" if sys.argv[2] == "self" else "stockfish"
print(names.index("Kovrel") + 1, names.index(opp) + 1)
EOF
)
log "New Game dialog rows: white=$WHITE_IDX (Kovrel) black=$BLACK_IDX ($OPPONENT)"
BLACK_SKILL=$OPP_SKILL
[[ $OPPONENT == self ]] && BLACK_SKILL=20

write_base_config
cat >>"$CONF/config" <<EOF
whiteplayercombobox = $WHITE_IDX
blackplayercombobox = $BLACK_IDX
skillslider1 = 20
skillslider2 = $BLACK_SKILL
playnormalradio = True
notimeradio = False
blitzradio = True
ngblitz min = $MINUTES
ngblitz gain = $GAIN
book_depth_max = 0
autosave = True
saveowngames = False
autosavepath = $WORK/pgn
autosaveformat = kovrel-game
EOF
# book_depth_max = 0: PyChess would otherwise play the first 13 plies from
# its own book on the engines' behalf; we want the engines to play them.
# saveowngames = False: PyChess otherwise auto-saves only games with a human.

# --- Run 2: the game.
log "PyChess run 2: the game"
start_pychess
MAIN=$(find_window " - PyChess$")
window_geometry "$MAIN"
# There is no window manager, so keyboard input goes to the window under the
# pointer: park the pointer over the main window before each key.
xdotool mousemove $((WX + WW / 2)) $((WY + WH / 2))
sleep 3
xdotool key ctrl+n
wait_for 20 "New Game dialog" bash -c '[[ -n $(xdotool search --onlyvisible --name "^New Game$" 2>/dev/null) ]]' \
    || die "the New Game dialog did not open"
DLG=$(find_window "^New Game$")
window_geometry "$DLG"
sleep 1
screenshot "$OUT/1-new-game-dialog.png"
# "Start Game" is the dialog's bottom-right button.
xdotool mousemove $((WX + WW - 60)) $((WY + WH - 25)) click 1
sleep 1
[[ -z $(find_window "^New Game$") ]] || die "the New Game dialog is still open after clicking Start Game"
log "game started; waiting up to ${GAME_TIMEOUT}s for a result"

pylog() { ls -t "$DATA"/*.log 2>/dev/null | head -1; }
ended() { grep -q "Ending a game with status" "$(pylog)" 2>/dev/null; }
sleep 20
screenshot "$OUT/2-mid-game.png"
wait_for "$GAME_TIMEOUT" "the game to end" ended || { screenshot "$OUT/timeout.png"; die "no result"; }
sleep 2
screenshot "$OUT/3-end.png"

# Closing the game tab (Ctrl+W) makes PyChess auto-save it as PGN.
xdotool mousemove $((WX + WW / 2)) $((WY + WH / 2)) key ctrl+w
wait_for 20 "the saved PGN" test -s "$WORK/pgn/kovrel-game.pgn" || die "PyChess saved no PGN"
sleep 1
stop_group "$GUI_PID"; GUI_PID=

cp "$WORK/pgn/kovrel-game.pgn" "$OUT/game.pgn"
cp "$(pylog)" "$OUT/pychess-debug.log"
cp "$CONF/config" "$OUT/config"
cp "$WORK/pychess.stdout" "$OUT/pychess.stdout"
{
    echo "== PGN"; cat "$OUT/game.pgn"; echo
    echo "== Kovrel handshake (first engine start of the game run)"
    grep -m 20 -E "Kovrel-uci.*DEBUG: (uci|id |option |uciok|setoption|isready|readyok|ucinewgame)" "$OUT/pychess-debug.log" || true
    echo "== first and last commands/answers"
    grep -E "Kovrel-uci.*DEBUG: (position|go |bestmove)" "$OUT/pychess-debug.log" | sed -n '1,6p;$p' || true
    echo "== result"
    grep -E "Ending a game with status|game_ended" "$OUT/pychess-debug.log" || true
} >"$OUT/summary.txt"
log "done: $(grep -m1 '^\[Result' "$OUT/game.pgn") -- see $OUT"
