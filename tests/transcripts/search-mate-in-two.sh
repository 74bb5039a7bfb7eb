# Legal's mate: 1. e4 e5 2. Nf3 d6 3. Bc4 Bg4 4. Nc3 g6 5. Nxe5 Bxd1, White to move, a queen
# down, mates in two: 6. Bxf7+ (c4f7) Ke7 7. Nd5 (c3d5) mate. After 6. Bxf7+ the king has
# only e7: d7 is covered by the knight on e5 and the bishop on f7 is defended by it. After
# 7. Nd5+ every flight square is covered (d7 by Ne5, e6 and e8 by Bf7, f6 by Nd5), f7 is
# defended, d8, f8 and d6 hold Black's own pieces, and nothing can take the knight on d5.
# No other first move mates in two and 7. Nd5 is the only mate, so both engine moves are
# fixed. The user (Black, after go) plays the forced 6... Ke7. Each search runs exactly the
# iterations of depth 2 to 4 (no time control, minimum four half-moves).
# White's 40 moves before 6. Bxf7+: 12 pawn moves (c2 and e4 are blocked), knight c3 to b5
# b1 d5 d1 e2 a4, knight e5 to d7 d3 f7 f3 g4 g6 c6, bishop c4 to d5 e6 f7 d3 e2 f1 b3 b5 a6,
# rook a1-b1, rook h1 to g1 f1, king e1 to d1 (taking the bishop), f1 and castling (e2 is
# covered by the bishop on d1). Before 7. Nd5 there are 38: the knight on e5 now has c4 and
# no f7, and the bishop on f7 goes to g8 g6 e6 d5 c4 b3 e8.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -nobk <"$2" | awk -v echo=keep -f "$(dirname "${BASH_SOURCE[0]}")/search-lines.awk"
