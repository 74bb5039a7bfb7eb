#!/usr/bin/env bash
# Plays one complete game against kovrel-uci in GNOME Chess, under a private
# Xvfb display.  GNOME Chess only offers human-against-engine games, so
# GNOME Chess runs Kovrel and referees, and gnome_chess_drive.py plays the
# human side by clicking on the board (random legal moves, fixed seed) until
# GNOME Chess declares a result.
#
# How GNOME Chess is set up (all inside a scratch folder, nothing of the
# user's is touched):
#   * $XDG_CONFIG_HOME/gnome-chess/engines.conf gets a [Kovrel] section; when
#     that file exists GNOME Chess reads it instead of
#     /etc/gnome-chess/engines.conf.
#   * GSettings org.gnome.Chess (through the keyfile backend, so they land in
#     $XDG_CONFIG_HOME/glib-2.0/settings/keyfile): opponent 'Kovrel', the
#     human's colour, difficulty, no clock, a fixed window size.
#
# Usage: tools/gui/gnome_chess_game.sh [OUT_DIR]
#   OUT_DIR (default ./gui-out/gnome-chess) receives gnome-chess.log (its
#   debug output with the full engine traffic), screenshots, moves.txt,
#   game.pgn when GNOME Chess saved one, the config files used, summary.txt.
# Environment:
#   ENGINE=path          engine to test (default: build/kovrel-uci of this repo)
#   HUMAN=white|black    colour of the clicking side (default white)
#   DIFFICULTY=easy|normal|hard  (default hard: GNOME Chess then sends
#                        "go wtime 30000 btime 30000" with no depth limit)
#   SEED=n               seed for the human side's random moves (default 1)
#   GAME_TIMEOUT=s       give up after s seconds (default 900)
# Run as root to have the missing Debian packages installed.
set -euo pipefail

HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
REPO=$(cd "$HERE/../.." && pwd)
# shellcheck source=tools/gui/lib.sh
source "$HERE/lib.sh"

OUT=$(mkdir -p "${1:-gui-out/gnome-chess}" && cd "${1:-gui-out/gnome-chess}" && pwd)
ENGINE=${ENGINE:-$REPO/build/kovrel-uci}
HUMAN=${HUMAN:-white}
DIFFICULTY=${DIFFICULTY:-hard}
GAME_TIMEOUT=${GAME_TIMEOUT:-900}
export SEED=${SEED:-1}

need_packages gnome-chess:gnome-chess Xvfb:xvfb xdotool:xdotool import:imagemagick \
    dbus-run-session:dbus-daemon gsettings:libglib2.0-bin stockfish:stockfish

open_scratch gnome-chess-game

export HOME=$WORK/home
export XDG_CONFIG_HOME=$WORK/config XDG_DATA_HOME=$WORK/data XDG_CACHE_HOME=$WORK/cache
export GSETTINGS_BACKEND=keyfile
mkdir -p "$HOME" "$XDG_CONFIG_HOME/gnome-chess" "$XDG_DATA_HOME" "$XDG_CACHE_HOME" "$WORK/pgn"

# Same keys as the UCI engines in /etc/gnome-chess/engines.conf: the go
# options are appended to GNOME Chess's fixed "go wtime 30000 btime 30000";
# "hard" has none, so the engine plays on that clock.
cat >"$XDG_CONFIG_HOME/gnome-chess/engines.conf" <<EOF
[Kovrel]
protocol=uci
binary=$KOVREL
uci-go-option-easy-0=depth 1
uci-go-option-normal-0=depth 3
EOF

gsettings set org.gnome.Chess opponent 'Kovrel'
gsettings set org.gnome.Chess play-as "'$HUMAN'"
gsettings set org.gnome.Chess difficulty "'$DIFFICULTY'"
gsettings set org.gnome.Chess duration 0
gsettings set org.gnome.Chess board-side "'human'"
gsettings set org.gnome.Chess show-move-hints false
gsettings set org.gnome.Chess width 800
gsettings set org.gnome.Chess height 700
gsettings set org.gnome.Chess save-directory "'$WORK/pgn'"

start_xvfb 1280x1024

# G_MESSAGES_DEBUG=gnome-chess: GNOME Chess's own debug messages, which
# include every line written to and read from the engine.
GCLOG=$WORK/gnome-chess.log
G_MESSAGES_DEBUG=gnome-chess setsid dbus-run-session -- gnome-chess >"$GCLOG" 2>&1 &
GUI_PID=$!
wait_for 60 "GNOME Chess window" bash -c '[[ -n $(xdotool search --onlyvisible --name "to Move$" 2>/dev/null) ]]' \
    || die "GNOME Chess did not open its window"
grep -q "Detected AI profile Kovrel" "$GCLOG" || die "GNOME Chess did not pick up the Kovrel engine (see $GCLOG)"
wait_for 30 "the engine's readyok" grep -q "Read from engine: 'readyok'" "$GCLOG" \
    || { cp "$GCLOG" "$OUT/"; die "no UCI handshake with Kovrel"; }
sleep 2
screenshot "$OUT/1-start.png"

log "playing the $HUMAN side by mouse; up to ${GAME_TIMEOUT}s"
rc=0
timeout "$GAME_TIMEOUT" /usr/bin/python3 "$HERE/gnome_chess_drive.py" "$GCLOG" "$HUMAN" "$OUT" || rc=$?
sleep 2
screenshot "$OUT/2-end.png"
TITLE=$(xdotool getwindowname "$(find_window 'to Move$|Wins$|Drawn$')" 2>/dev/null || true)

# Save the game the way a user would: Ctrl+S opens GNOME Chess's save dialog
# (which starts in the save-directory set above); type a file name and Enter.
WID=$(find_window 'to Move$|Wins$|Drawn$')
if [[ -n $WID ]]; then
    window_geometry "$WID"
    xdotool mousemove $((WX + WW / 2)) $((WY + 15)) key ctrl+s
    if wait_for 15 "the save dialog" bash -c '[[ -n $(xdotool search --onlyvisible --name "^Save" 2>/dev/null) ]]'; then
        sleep 1
        DLG=$(find_window '^Save')
        window_geometry "$DLG"
        screenshot "$OUT/3-save-dialog.png"
        xdotool mousemove $((WX + WW / 2)) $((WY + WH / 2)) key ctrl+a
        xdotool type --delay 20 "$WORK/pgn/kovrel-game.pgn"
        xdotool key Return
        wait_for 10 "the saved PGN" test -s "$WORK/pgn/kovrel-game.pgn" \
            && cp "$WORK/pgn/kovrel-game.pgn" "$OUT/game.pgn"
    fi
fi
stop_group "$GUI_PID"; GUI_PID=

cp "$GCLOG" "$OUT/gnome-chess.log"
cp "$XDG_CONFIG_HOME/gnome-chess/engines.conf" "$OUT/engines.conf"
cp "$XDG_CONFIG_HOME/glib-2.0/settings/keyfile" "$OUT/gsettings-keyfile"
{
    echo "== window title at the end: $TITLE"
    echo "== moves (UCI):"; cat "$OUT/moves.txt" 2>/dev/null || true
    [[ -f $OUT/game.pgn ]] && { echo "== PGN saved by GNOME Chess"; cat "$OUT/game.pgn"; }
    echo "== engine traffic (handshake, first and last moves)"
    grep -E "Writing line to engine|Read from engine: '(id|uciok|readyok|bestmove)|Engine moves" "$GCLOG" | sed -n '1,20p' || true
    echo "..."
    grep -E "Writing line to engine|Read from engine: 'bestmove|Engine moves" "$GCLOG" | tail -6 || true
    echo "== warnings"
    grep -E "WARNING|CRITICAL|ERROR" "$GCLOG" | grep -v -E "portal|dbus|a11y|pw\.conf|PipeWire|RealtimeKit" || true
} >"$OUT/summary.txt"
((rc == 0)) || die "the game did not reach a result (driver exit $rc); see $OUT"
log "done: $TITLE -- see $OUT"
