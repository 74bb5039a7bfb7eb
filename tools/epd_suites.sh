#!/usr/bin/env bash
# Runs the two classic test suites through kovrel-epd, Win At Chess (300 positions) and
# Bratko-Kopec (24), at 1 s and 5 s a position and at fixed depths 5 and 7, and prints the
# solved counts as a Markdown table for the README.
#   tools/epd_suites.sh [COUNT]
# COUNT: only the first COUNT positions of each suite (to try the script); all by default.
# The suites are read from ../shared/data beside the project (or $KOVREL_SUITES); the program
# is build/kovrel-epd (or $KOVREL_EPD). Every run's lines are kept in build/epd-suites/.
# The whole table takes about (300 + 24) x 6 s plus the fixed depths: some 35 minutes.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
suites=${KOVREL_SUITES:-$root/../shared/data}
program=${KOVREL_EPD:-$root/build/kovrel-epd}
count=${1:-0}
logs=$root/build/epd-suites
mkdir -p "$logs"
[[ -x $program ]] || { echo "no $program: build it first (make)" >&2; exit 1; }

limits=("--movetime 1000" "--movetime 5000" "--depth 5" "--depth 7")
headings=("1 s" "5 s" "depth 5" "depth 7")
echo "| suite | ${headings[0]} | ${headings[1]} | ${headings[2]} | ${headings[3]} |"
echo "|---|---|---|---|---|"
for suite in wac:"WAC" bk:"Bratko-Kopec"; do
    file=$suites/${suite%%:*}.epd
    name=${suite#*:}
    [[ -f $file ]] || { echo "no suite $file" >&2; exit 1; }
    # The first COUNT position lines (comments and blank lines do not count).
    positions=$logs/${suite%%:*}.epd
    awk -v n="$count" '/^[[:space:]]*(#|\r?$)/ { next } n == 0 || ++seen <= n' "$file" >"$positions"
    total=$(grep -c . "$positions")
    row="| $name ($total) |"
    for i in "${!limits[@]}"; do
        log=$logs/${suite%%:*}-${headings[$i]// /}.txt
        # shellcheck disable=SC2086 # the limit is two words
        "$program" "$positions" ${limits[$i]} >"$log"
        solved=$(sed -n 's/^solved \([0-9]*\) of [0-9]*$/\1/p' "$log")
        row+=" ${solved:-?} |"
    done
    echo "$row"
done
