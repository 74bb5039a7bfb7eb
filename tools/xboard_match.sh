#!/usr/bin/env bash
# Plays Kovrel against another engine inside the real XBoard program, under a virtual X
# display, and reports the results from the saved PGN.
#
#   tools/xboard_match.sh [GAMES] [OPPONENT] [MINUTES] [INCREMENT] [WORKDIR]
#
# Defaults: 2 games against fairymax at 1 minute plus 1 second a move, in build/xboard-match. Needs the Debian
# packages xboard, xvfb and the opponent (fairymax, phalanx or hoichess); installs them when
# run as root. Kovrel is built in Release first. The games are saved in
# build/xboard-match/games.pgn and XBoard's debug log in build/xboard-match/xboard.debug.
set -euo pipefail
games=${1:-2}
opponent=${2:-fairymax}
minutes=${3:-1}
increment=${4:-1}
root=$(cd "$(dirname "$0")/.." && pwd)
work=${5:-$root/build/xboard-match}

export PATH=$PATH:/usr/games
missing=()
for tool in xboard Xvfb "$opponent"; do command -v "$tool" >/dev/null || missing+=("$tool"); done
if ((${#missing[@]} > 0)); then
    packages=(xboard xvfb "$opponent")
    if [[ $(id -u) == 0 ]]; then
        DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${packages[@]}" >/dev/null
    else
        echo "Error (missing ${missing[*]}): xboard_match" && exit 1
    fi
fi

[[ -x $root/build/kovrel ]] || make -C "$root" all >/dev/null
rm -rf "$work"
mkdir -p "$work"
cp "$root/openings.txt" "$work/"
(cd "$work" && "$root/build/kovrel" -crbk </dev/null >book.log)

# Xvfb chooses a free display itself and writes its number, so that matches run side by side
# never share (and never close) each other's display.
Xvfb -displayfd 3 -screen 0 1280x1024x24 3>"$work/display" >"$work/xvfb.log" 2>&1 &
xvfb=$!
trap 'kill $xvfb 2>/dev/null || true' EXIT
for ((wait = 0; wait < 100; wait++)); do [[ -s $work/display ]] && break || sleep 0.1; done
[[ -s $work/display ]] || { echo "Error (no display): xboard_match" && exit 1; }
display=:$(head -n1 "$work/display")

# Kovrel speaks protocol 1: no feature negotiation; XBoard sends the level, time and moves.
DISPLAY=$display timeout $((games * (4 * minutes * 60 + 600))) xboard \
    -fcp "$root/build/kovrel -xboard" -fd "$work" -firstProtocolVersion 1 \
    -scp "$opponent" -sd "$work" \
    -matchMode true -matchGames "$games" -timeControl "$minutes" -timeIncrement "$increment" \
    -saveGameFile "$work/games.pgn" -autoCallFlag true -testClaims true \
    -popupExitMessage false -ponderNextMove false -debugMode true -nameOfDebugFile "$work/xboard.debug" \
    >"$work/xboard.log" 2>&1 || true

echo "games saved in $work/games.pgn"
grep -E '^\[(White|Black|Result|Termination)' "$work/games.pgn" || true
grep -oE '\{[^}]*\} (1-0|0-1|1/2-1/2|\*)' "$work/games.pgn" || true
grep -iE 'illegal move|forfeit|crash' "$work/xboard.debug" | head -20 || true
results=$(grep -c '^\[Result "\(1-0\|0-1\|1/2-1/2\)"\]' "$work/games.pgn" || true)
echo "$results of $games games ended with a result"
((results == games))
