#!/usr/bin/env bash
# kovrel-annotate (the program in $KOVREL_ANNOTATE) on two games at depth 3 (the tables cleared
# for each game, so the run is the same every time), then on its own output. The annotated games are shown with the engine's
# values replaced by V and its lines and glyphs taken out: those are its own findings. What can
# be worked out by hand is checked by rule below, each check printing one line.
set -u
annotate() { "$KOVREL_ANNOTATE" "$@"; }

# The main line of each game of a PGN file, one game a line: tags, comments, variations, move
# numbers, glyphs and results left out.
mainline() {
    perl -0777 -ne '
        s/\r//g; s/^%[^\n]*\n//mg; s/\{[^}]*\}//g; s/;[^\n]*//g;
        1 while s/\([^()]*\)//g;
        s/\$\d+//g;
        s/(?:^\[[^\n]*\]\s*\n)+/\n#GAME\n/mg;
        for my $game (grep { /\S/ } split /#GAME/) {
            my @moves = grep { $_ ne "" && !/^(1-0|0-1|1\/2-1\/2|\*|[!?]+)$/ }
                        map { s/^\d+\.+//; s/[!?]+$//; $_ } split /\s+/, $game;
            print join(" ", @moves), "\n";
        }' "$1"
}

# The annotated text with values as V, variations and glyphs taken out, lines refilled.
normalised() {
    perl -0777 -pe '
        s/\s*\([^()]*\)//g;
        s/\{[+-]?(?:\d+\.\d\d|M\d+)\/(\d+)\}/{V\/$1}/g;
        s/(\S)\?+(?=\s)/$1/g;' "$1" |
        awk '/^\[/ || /^$/ { if (text != "") print text; text = ""; print; next }
             { text = text (text == "" ? "" : " ") $0 }
             END { if (text != "") print text }' | fold -s -w 79 | sed 's/ $//'
}

check() { # check DESCRIPTION CONDITION-STATUS [DETAIL]
    if (($2 == 0)); then echo "ok: $1"; else echo "FAIL: $1 ${3:-}"; fi
}

echo '$ kovrel-annotate two-games.pgn --depth 3 --svg graph.svg -o annotated.pgn'
annotate two-games.pgn --depth 3 --svg graph.svg -o annotated.pgn 2>errors.txt
echo "status $?"
cat errors.txt
normalised annotated.pgn

# 9...Qe4 puts the queen where 10.Nxe4 takes it for a knight: from an even position White is
# then at least three pawns up (a queen for a knight is six), far past the blunder threshold.
# The engine's line replaces the move played.
blunder=$(perl -0777 -ne 'print "$1 $2" if /9\.\.\. Qe4\?\?\s+\{\+(\d+)\.\d\d\/3\}\s+\(9\.\.\. (\S+)/' annotated.pgn)
read -r pawns choice <<<"${blunder:-0 none}"
check "9...Qe4 is a blunder, White is at least 3 pawns up, the engine's line starts elsewhere" \
    $([[ $pawns -ge 3 && $choice != none && $choice != Qe4 ]] && echo 0 || echo 1) "($blunder)"

# From 41.b8=Q on White has king, queen and rook against a bare king: every value is at least
# five pawns for White, or White mates.
game2=$(perl -0777 -ne 's/\s*\([^()]*\)//g; s/.*41\. b8=Q//s; print "$1\n" while /\{([^}]*)\}/g' annotated.pgn)
low=$(awk -F/ '!/^\+M/ && ($1 + 0) < 5 { print }' <<<"$game2")
check "after 41.b8=Q every value is +5 or more, or a mate for White ($(wc -l <<<"$game2") values)" \
    $([[ -z $low ]] && echo 0 || echo 1) "($low)"

# One value after every move of the main line.
moves=$(mainline annotated.pgn | wc -w)
comments=$(perl -0777 -ne 's/\s*\([^()]*\)//g; $n++ while /\{/g; print $n + 0' annotated.pgn)
check "one value after each of the $moves moves" $((moves == comments ? 0 : 1)) "($comments values)"

# Another reader takes the annotated games without a complaint.
extract=$(command -v pgn-extract || echo /usr/games/pgn-extract)
if [[ -x $extract ]]; then
    complaints=$("$extract" -r -s annotated.pgn 2>&1)
    check "pgn-extract reads the annotated games without a complaint" \
        $([[ -z $complaints ]] && echo 0 || echo 1) "($complaints)"
else
    echo "FAIL: pgn-extract is not installed (Debian package pgn-extract)"
fi

# kovrel-annotate reads its own output, from standard input: the moves survive both times.
annotate - --depth 2 <annotated.pgn >again.pgn 2>errors.txt
cat errors.txt
check "the moves of both games survive annotation and a second annotation" \
    $([[ $(mainline two-games.pgn) == "$(mainline annotated.pgn)" &&
        $(mainline annotated.pgn) == "$(mainline again.pgn)" ]] && echo 0 || echo 1)
mainline again.pgn

# One graph per game, whole SVG documents; the blunder is marked in the first.
for graph in graph.svg graph-2.svg; do
    whole=1
    [[ -f $graph ]] && head -1 "$graph" | grep -q '^<?xml' && tail -1 "$graph" | grep -q '^</svg>$' &&
        whole=0
    if command -v rsvg-convert >/dev/null; then
        rsvg-convert "$graph" -o "${graph%.svg}.png" 2>/dev/null || whole=1
    fi
    check "$graph is a whole SVG document" $whole
done
marks=$(grep -c '<circle cx="[0-9.]*" cy="[0-9.]*" r="5" fill="#d62828" stroke' graph.svg)
check "graph.svg marks blunders ($((marks > 0 ? 1 : 0)) or more)" $((marks > 0 ? 0 : 1))
# The value axis runs from -5 to +5 pawns: eleven labels, a faint line at every pawn but the
# edges and zero (which has a line of its own); the legend names both thresholds.
labels=$(grep -c 'text-anchor="end">' graph.svg)
rows=$(perl -ne '$n++ if /<line x1="\d+" y1="([\d.]+)" x2="\d+" y2="\1" stroke="#808080" stroke-opacity/; END { print $n + 0 }' graph.svg)
legend=$(grep -c -e '>? mistake (0.50)<' -e '>?? blunder (1.50)<' graph.svg)
check "graph.svg has 11 value labels, 8 pawn lines and both thresholds in its legend" \
    $([[ $labels == 11 && $rows == 8 && $legend == 2 ]] && echo 0 || echo 1) "($labels $rows $legend)"

# Games that cannot be read are reported on standard error and skipped; the good one is kept.
echo '$ kovrel-annotate bad.pgn --depth 2'
annotate bad.pgn --depth 2 >bad-out.pgn 2>errors.txt
echo "status $?"
cat errors.txt
normalised bad-out.pgn

# Command lines and files it cannot use: one error line naming the problem, the usage where the
# command line is at fault, and the exit status (2: command line, 1: files).
for args in "" "two-games.pgn --speed 3" "missing.pgn --depth 2" --help \
    "two-games.pgn --depth 2 -o no/such/folder/out.pgn"; do
    echo "\$ kovrel-annotate${args:+ $args}"
    annotate $args 2>&1
    echo "status $?"
done
