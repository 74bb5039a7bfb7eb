#!/usr/bin/env bash
# Checks kovrel-perft against the reference counts of a perft EPD file
# (lines "<fen> ;D1 n ;D2 n ..."), for every depth whose count lies in [MIN, MAX]. Further
# arguments go to kovrel-perft before the depth (--full: every leaf made and tested).
#   perft.sh KOVREL_PERFT EPD MIN MAX [OPTION...]
set -uo pipefail
perft=$1 epd=$2 min=$3 max=$4
shift 4
checked=0 failed=0
while read -r depth count fen; do
    got=$("$perft" "$@" "$depth" "$fen" | awk '/^nodes /{print $2}')
    checked=$((checked + 1))
    if [[ $got == "$count" ]]; then result=ok; else result=FAIL failed=$((failed + 1)); fi
    echo "$result depth $depth of $fen: $count, got $got"
done < <(awk -F' *;' -v min="$min" -v max="$max" '!/^#/ { # DEPTH COUNT FEN, one a line
    for (i = 2; i <= NF; i++) if (split($i, f, " ") == 2 && f[2] >= min && f[2] <= max)
        print substr(f[1], 2), f[2], $1 }' "$epd")
echo "$checked counts checked, $failed failed"
((checked > 0 && failed == 0))
