# Scholar's mate set up by typed moves: 1. e4 e5 2. Bc4 Nc6 3. Qh5 Nf6, White to move. The
# engine, started with go, must play 4. Qxf7 (h5f7), the only mate: the queen on f7 is
# covered by the bishop on c4, and the king on e8 has no free square (d8, f8 and d7 hold its
# own pieces, e7 is covered by the queen). The next cycle of the loop finds Black
# without a legal move and in check and prints the result. With no time control and a
# minimum of three half-moves, exactly the iterations of depth 2 and 3 run.
# White's 43 legal moves: 13 pawn moves (c2 only one step, as the bishop stands on c4; e4 is
# blocked), knights b1-a3/c3 and g1-e2/f3/h3, bishop c4 to a6 b5 d5 e6 f7 b3 d3 e2 f1, queen
# h5 to g4 f3 e2 d1, g6 f7, h4 h3, g5 f5 e5, h6 h7, king e1 to d1 e2 f1.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -nobk <"$2" | awk -v echo=keep -f "$(dirname "${BASH_SOURCE[0]}")/search-lines.awk"
