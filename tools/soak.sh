#!/usr/bin/env bash
# Soak: many games of one of Kovrel's programs against fairymax, phalanx and hoichess inside
# XBoard, several games at a time (tools/match.sh, one XBoard per game), and one tally of
# results, illegal moves, time forfeits and crashes over all of them, Kovrel's apart from the
# opponents'. Games that an opponent's crash ended are left out of the score.
#   tools/soak.sh [GAMES] [PARALLEL] [BASE] [INCREMENT] [PROGRAM]
# Defaults: 100 games, 2 at a time, 1 minute plus 1 second a move, the console program
# (kovrel, protocol 1); PROGRAM kovrel-uci plays the UCI program through polyglot. The games
# are split evenly among the three opponents, in build/soak/OPPONENT/.
set -uo pipefail
games=${1:-100}
parallel=${2:-2}
base=${3:-1}
increment=${4:-1}
program=${5:-kovrel}
root=$(cd "$(dirname "$0")/.." && pwd)
opponents=(fairymax phalanx hoichess)
rm -rf "$root/build/soak"
mkdir -p "$root/build/soak"
status=0
for ((i = 0; i < ${#opponents[@]}; i++)); do
    share=$(((games + ${#opponents[@]} - 1 - i) / ${#opponents[@]}))
    ((share > 0)) || continue
    bash "$root/tools/match.sh" "$program" "$share" "${opponents[i]}" "$base" "$increment" \
        "$parallel" "$root/build/soak/${opponents[i]}" || status=1
done
cat "$root"/build/soak/*/results.txt | awk '
    { n++; outcome[$4]++; if ($5 != "none") fault[$6 " " $5]++ }
    END {
        printf "soak: %d games, won %d, drew %d, lost %d, left out %d, without a result %d\n", n,
               outcome["win"], outcome["draw"], outcome["loss"], outcome["excluded"],
               outcome["noresult"]
        printf "Kovrel: illegal moves %d, time forfeits %d, crashes %d\n", fault["kovrel illegal"],
               fault["kovrel flag"], fault["kovrel crash"]
        printf "opponents: illegal moves %d, time forfeits %d, crashes %d\n",
               fault["opponent illegal"], fault["opponent flag"], fault["opponent crash"]
    }'
exit "$status"
