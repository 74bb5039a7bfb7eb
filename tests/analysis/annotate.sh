#!/usr/bin/env bash
# kovrel-annotate (the program in $KOVREL_ANNOTATE) on two games at depth 3 (the tables cleared
# for each game, so the run is the same every time), then on its own output. The annotated
# games are shown with the engine's values replaced by V and its lines and glyphs taken out:
# those are its own findings. What can be worked out by hand is checked by rule below, each
# check printing one line.
set -u
annotate() { "$KOVREL_ANNOTATE" "$@"; }

# The annotated text with values as V, variations and glyphs taken out, lines refilled.
normalised() {
    perl -0777 -pe '
        s/\s*\([^()]*\)//g;
        s/\{[+-]?(?:\d+\.\d\d|M\d+)\/(\d+)\}/{V\/$1}/g;
        s/(\S)\?+(?=\s)/$1/g;
        s/([^\]\n])\n(?=[^\[\n])/$1 /g;' "$1" | fold -s -w 79 | sed 's/ $//'
}

check() { # check DESCRIPTION [DETAIL] (no commands in them): "ok" if the last command succeeded
    if (($? == 0)); then echo "ok: $1"; else echo "FAIL: $1 ${2:-}"; fi
}

echo '$ kovrel-annotate two-games.pgn --depth 3 --svg graph.svg -o annotated.pgn'
annotate two-games.pgn --depth 3 --svg graph.svg -o annotated.pgn 2>&1
echo "status $?"
normalised annotated.pgn

# 9...Qe4 puts the queen where 10.Nxe4 takes it for a knight: from an even position White is
# then at least three pawns up (a queen for a knight is six), far past the blunder threshold.
# The engine's line replaces the move played.
blunder=$(perl -0777 -ne 'print "$1 $2"
    if /9\.\.\. Qe4\?\?\s+\{\+(\d+)\.\d\d\/3\}\s+\(9\.\.\. (\S+)/' annotated.pgn)
read -r pawns choice <<<"${blunder:-0 none}"
[[ $pawns -ge 3 && $choice != none && $choice != Qe4 ]]
check "9...Qe4 is a blunder, White is at least 3 pawns up, the engine's line starts elsewhere" \
    "($blunder)"

# From 41.b8=Q on White has king, queen and rook against a bare king: every value is at least
# five pawns for White, or White mates.
game2=$(perl -0777 -ne 's/\s*\([^()]*\)//g; s/.*41\. b8=Q//s;
    print "$1\n" while /\{([^}]*)\}/g' annotated.pgn)
low=$(awk -F/ '!/^\+M/ && ($1 + 0) < 5 { print }' <<<"$game2")
values=$(wc -l <<<"$game2")
[[ -z $low ]]
check "after 41.b8=Q every value is +5 or more, or a mate for White ($values values)" "($low)"

# Another reader (Debian's pgn-extract) takes the annotated games without a complaint.
complaints=$("$(command -v pgn-extract || echo /usr/games/pgn-extract)" -r -s annotated.pgn 2>&1)
[[ -z $complaints ]]
check "pgn-extract reads the annotated games without a complaint" "($complaints)"

# One graph per game, whole SVG documents (which rsvg-convert renders, where it is installed);
# the blunder is marked in the first.
render=$(command -v rsvg-convert || echo true)
for graph in graph.svg graph-2.svg; do
    head -1 "$graph" | grep -q '^<?xml' && tail -1 "$graph" | grep -q '^</svg>$' &&
        "$render" "$graph" -o "${graph%.svg}.png" 2>/dev/null
    check "$graph is a whole SVG document"
done
grep -q '<circle cx="[0-9.]*" cy="[0-9.]*" r="5" fill="#d62828" stroke' graph.svg
check "graph.svg marks blunders (1 or more)"
# The value axis runs from -5 to +5 pawns: eleven labels, a faint line at every pawn but the
# edges and zero (which has a line of its own); the legend names both thresholds.
labels=$(grep -c 'text-anchor="end">' graph.svg)
line='<line x1="[0-9]+" y1="([0-9.]+)" x2="[0-9]+" y2="\1" stroke="#808080" stroke-opacity'
rows=$(grep -cE "$line" graph.svg)
legend=$(grep -c -e '>? mistake (0.50)<' -e '>?? blunder (1.50)<' graph.svg)
[[ $labels == 11 && $rows == 8 && $legend == 2 ]]
check "graph.svg has 11 value labels, 8 pawn lines and both thresholds in its legend" \
    "($labels $rows $legend)"

# kovrel-annotate reads its own output, from standard input: the same moves, new values at
# depth 2 after each, the earlier values and lines gone.
echo '$ kovrel-annotate - --depth 2 <annotated.pgn'
annotate - --depth 2 <annotated.pgn 2>&1 >again.pgn
echo "status $?"
normalised again.pgn

# Games that cannot be read are reported on standard error and skipped; the good one is kept.
echo '$ kovrel-annotate bad.pgn --depth 2'
annotate bad.pgn --depth 2 2>&1 >bad-out.pgn
echo "status $?"
normalised bad-out.pgn

# Command lines and files it cannot use: one error line naming the problem, the usage where the
# command line is at fault, and the exit status (2: command line, 1: files).
for args in "" "two-games.pgn --speed 3" "missing.pgn --depth 2" --help \
    "two-games.pgn --depth 2 -o no/such/folder/out.pgn"; do
    echo "\$ kovrel-annotate${args:+ $args}"
    annotate $args 2>&1
    echo "status $?"
done
