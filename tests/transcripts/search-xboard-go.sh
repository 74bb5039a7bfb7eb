# xboard mode (-xboard -easy: quiet, no pondering; -nobk: every move is searched). The level
# and set commands read their numbers silently but still end each number with a newline.
# The search prints nothing of its own here (no static list, no clock line, no iterations,
# and no thinking line as post was not given): each engine move is only the two lines
# "N. ... MOVE" (with "..." for a White move too) and "My move is: MOVE". The user's moves
# are echoed as "N. MOVE", Black's included.
# The engine's moves are not fixed by hand. This filter checks that the two lines name the
# same move, and that the move is a legal one where the position is known: White's first
# move at the start, and White's second move after 1. e4 e5 (29 moves: 14 pawn moves,
# knights b1-a3/c3 and g1-e2/f3/h3, bishop f1 to e2 d3 c4 b5 a6, queen d1 to e2 f3 g4 h5,
# king e1-e2). The reply to the user's 1... a6 is only checked for its form.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -xboard -easy -nobk <"$2" | awk '
BEGIN {
    legal[1] = "a2a3 a2a4 b1a3 b1c3 b2b3 b2b4 c2c3 c2c4 d2d3 d2d4 e2e3 e2e4 f2f3 f2f4 g1f3 g1h3 g2g3 g2g4 h2h3 h2h4"
    label[1] = "<one of the 20 first moves of White>"
    legal[2] = ""
    label[2] = "<a move>"
    legal[3] = "a2a3 a2a4 b1a3 b1c3 b2b3 b2b4 c2c3 c2c4 d1e2 d1f3 d1g4 d1h5 d2d3 d2d4 e1e2 f1a6 f1b5 f1c4 f1d3 f1e2 f2f3 f2f4 g1e2 g1f3 g1h3 g2g3 g2g4 h2h3 h2h4"
    label[3] = "<one of the 29 moves of White after 1. e4 e5>"
    k = 0; expect = ""
}
expect != "" {
    if ($0 == "My move is: " expect) print "My move is: <the same move>"
    else print "- the move line does not repeat " expect ": " $0
    expect = ""
    next
}
/^ *[0-9]+\. \.\.\. [a-h][1-8][a-h][1-8][nbrq ]$/ {
    k++
    mv = substr($0, length($0) - 4)
    head = substr($0, 1, length($0) - 5)
    ok = (legal[k] == "")
    n = split(legal[k], a, " ")
    for (i = 1; i <= n; i++) if (a[i] " " == mv) ok = 1
    if (ok) print head label[k]
    else print $0 "- not among " label[k]
    expect = mv
    next
}
{ print }
END { if (expect != "") print "- no move line after " expect }'
