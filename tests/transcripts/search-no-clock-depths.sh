# With no time control the iterations run up to the minimum full-width depth and no
# further: the first iteration is reported as depth 2 (the root move and the reply), the
# next one as 3, and so on; an iteration beyond the minimum depth is refused by the clock
# rule at once, as the budget is below zero. "set 2" therefore gives depth 2 alone (White's
# first move, by go), "set 5" gives depths 2 to 5 (White's second move after 1. e4 e5, set
# up after new and force). The engine's moves are checked to be listed moves.
# White's 29 moves after 1. e4 e5: 14 pawn moves, knights b1-a3/c3 and g1-e2/f3/h3,
# bishop f1 to e2 d3 c4 b5 a6, queen d1 to e2 f3 g4 h5, king e1-e2.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -nobk <"$2" | awk -v echo=member -f "$(dirname "${BASH_SOURCE[0]}")/search-lines.awk"
