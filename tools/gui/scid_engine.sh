#!/usr/bin/env bash
# Adds kovrel-uci to Scid (tkscid) as an analysis engine and has Scid use it,
# under a private Xvfb display with a private HOME:
#   1. Scid's engine list ~/.scid<version>/config/engines.dat gets a Kovrel
#      entry (UCI 1) as engine number 1 - the same file Scid's
#      Tools > Analysis Engines dialog writes;
#   2. Scid is started; F4 (start/stop engine 1) starts the analysis of the
#      initial position;
#   3. the move 1.e4 is typed on the board (Scid's keyboard move entry), so
#      Scid sends the new position and Kovrel analyses it;
#   4. F4 stops the engine, which must answer with bestmove.
# Scid writes the whole conversation to ~/.scid<version>/log/engine1.log.
#
# Usage: tools/gui/scid_engine.sh [OUT_DIR]   (default ./gui-out/scid)
#   OUT_DIR receives engine1.log, screenshots, engines.dat and summary.txt.
# Environment: ENGINE=path (default: build/kovrel-uci of this repo),
#   THINK=s seconds of analysis per position (default 5).
# Run as root to have the missing Debian packages installed.
set -euo pipefail

HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
REPO=$(cd "$HERE/../.." && pwd)
# shellcheck source=tools/gui/lib.sh
source "$HERE/lib.sh"

OUT=$(mkdir -p "${1:-gui-out/scid}" && cd "${1:-gui-out/scid}" && pwd)
ENGINE=${ENGINE:-$REPO/build/kovrel-uci}
THINK=${THINK:-5}

need_packages scid:scid Xvfb:xvfb xdotool:xdotool import:imagemagick

open_scratch scid-engine
export HOME=$WORK/home
# Scid keeps its files in ~/.scid<major.minor>, e.g. ~/.scid4.7.
SCID_VER=$(dpkg-query -W -f '${Version}' scid | sed -E 's/^[0-9]+://; s/^([0-9]+\.[0-9]+).*/\1/')
SCID_DIR=$HOME/.scid$SCID_VER
mkdir -p "$SCID_DIR/config"
cat >"$SCID_DIR/config/engines.dat" <<EOF
# Analysis engines list file for Scid with UCI support

engine {
  Name Kovrel
  Cmd  $KOVREL
  Args {}
  Dir  $(dirname "$KOVREL")
  Elo  0
  Time 0
  URL  {}
  UCI 1
  UCIoptions {}
}
EOF
# No tip-of-the-day window at start-up.
echo 'set startup(tip) 0' >"$SCID_DIR/config/options.dat"
ELOG=$SCID_DIR/log/engine1.log

# The analysis window is docked as a notebook tab beside the notation; a new
# move brings the notation tab to the front, so the analysis tab (just above
# the analysis window) is clicked before the last screenshot.  That click also
# moves Tk's keyboard focus away from the board, so it comes last.
show_analysis() {
    local wid
    wid=$(xdotool search --name "^Scid: Analysis" 2>/dev/null | head -1 || true)
    [[ -n $wid ]] || return 0
    window_geometry "$wid"
    xdotool mousemove $((WX + 60)) $((WY - 12)) click 1
    sleep 1
}

start_xvfb 1280x1024
setsid scid >"$WORK/scid.out" 2>&1 &
GUI_PID=$!
wait_for 60 "Scid main window" bash -c '[[ -n $(xdotool search --onlyvisible --name "^Scid - " 2>/dev/null) ]]' \
    || die "Scid did not open its window"
sleep 3
MAIN=$(find_window "^Scid - ")
window_geometry "$MAIN"
# No window manager: keys go to the window under the pointer.  Park it on
# the board (left part of the main window).
xdotool mousemove $((WX + 150)) $((WY + 250))

# Scid's default layout already docks an (idle) analysis window for engine 1,
# which starts Kovrel and does the uci handshake; without that layout, F2
# opens it.
if ! wait_for 10 "engine 1 log" test -s "$ELOG"; then
    xdotool key F2
    wait_for 20 "engine 1 log" test -s "$ELOG" || die "Scid did not start engine 1"
fi
wait_for 20 "uciok in $ELOG" grep -q "^Engine: uciok" "$ELOG" || { cp "$ELOG" "$OUT/"; die "no uciok from Kovrel"; }

log "F4: analyse the initial position for ${THINK}s"
xdotool key F4
wait_for 20 "analysis output" grep -q "^Engine: info depth" "$ELOG" || { cp "$ELOG" "$OUT/"; die "Kovrel does not analyse"; }
sleep "$THINK"
screenshot "$OUT/1-analysis-startpos.png"

log "typing 1.e4 on the board"
xdotool type --delay 150 "e4"
wait_for 20 "the new position sent to Kovrel" grep -q "^Scid  : position startpos moves e2e4" "$ELOG" \
    || { screenshot "$OUT/e4-not-sent.png"; cp "$ELOG" "$OUT/"; die "Scid did not send 1.e4"; }
sleep "$THINK"

log "F4: stop"
xdotool key F4
wait_for 20 "bestmove after the last stop" bash -c "tail -n 5 '$ELOG' | grep -q '^Engine: bestmove'" \
    || log "no bestmove right after the last stop (see engine1.log)"
show_analysis
screenshot "$OUT/2-analysis-after-e4-stopped.png"
stop_group "$GUI_PID"; GUI_PID=

cp "$ELOG" "$OUT/engine1.log"
cp "$SCID_DIR/config/engines.dat" "$OUT/engines.dat"
{
    echo "== Scid -> Kovrel commands and Kovrel's bestmove answers"
    grep -E "^(Scid  :|Engine: (id|uciok|readyok|bestmove)|NOTE)" "$OUT/engine1.log"
    echo "== deepest info line per search"
    awk '/^Scid  : go/{if(l)print l; l=""} /^Engine: info depth/{l=$0} END{if(l)print l}' "$OUT/engine1.log"
} >"$OUT/summary.txt"
log "done -- see $OUT"
