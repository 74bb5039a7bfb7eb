#!/usr/bin/env bash
# Soak: many games of Kovrel in xboard mode against other engines inside XBoard, several
# matches at a time, cycling through the opponents; reports results, illegal moves, time
# forfeits and crashes over all games.
#   tools/soak.sh [GAMES] [PARALLEL] [MINUTES] [INCREMENT]
# Defaults: 100 games, 2 matches at a time, 1 minute plus 1 second a move. Each match plays 2
# games (one with each colour) in build/soak/matchN/.
set -uo pipefail
games=${1:-100}
parallel=${2:-2}
minutes=${3:-1}
increment=${4:-1}
root=$(cd "$(dirname "$0")/.." && pwd)
opponents=(fairymax phalanx hoichess)
make -C "$root" all >/dev/null
rm -rf "$root/build/soak"
mkdir -p "$root/build/soak"
matches=$(((games + 1) / 2))
for ((m = 0; m < matches; m++)); do
    opponent=${opponents[m % ${#opponents[@]}]}
    bash "$root/tools/xboard_match.sh" 2 "$opponent" "$minutes" "$increment" \
        "$root/build/soak/match$m" >"$root/build/soak/match$m.log" 2>&1 &
    while (($(jobs -rp | wc -l) >= parallel)); do sleep 5; done
done
wait
all=$(cat "$root"/build/soak/match*/games.pgn 2>/dev/null)
played=$(grep -c '^\[Result' <<<"$all")
decided=$(grep -c '^\[Result "\(1-0\|0-1\|1/2-1/2\)"\]' <<<"$all")
wins=$(grep -B2 '^\[Result' <<<"$all" | awk '/^\[White /{w=$2} /^\[Black /{b=$2} /^\[Result /{
    r=$2; if ((w ~ /kovrel/ && r ~ /"1-0"/) || (b ~ /kovrel/ && r ~ /"0-1"/)) n++ } END {print n+0}')
draws=$(grep -c '^\[Result "1/2-1/2"\]' <<<"$all")
# XBoard ends a game with a comment naming an illegal move (the opponents' own complaints about
# protocol words they do not know stay in the debug logs and are not counted).
illegal=$(grep -ciE '\{[^}]*illegal' <<<"$all")
forfeits=$(grep -ciE 'time forfeit|loses on time|wins on time' <<<"$all")
crashes=$(grep -ciE 'exited unexpectedly|crash|terminated' <<<"$all")
echo "games $played, with a result $decided; Kovrel won $wins, drew $draws"
echo "games ended by an illegal move: $illegal; time forfeits: $forfeits; crashes: $crashes"
((decided == played && played >= games && illegal == 0 && forfeits == 0 && crashes == 0))
