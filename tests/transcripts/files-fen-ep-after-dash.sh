# A FEN position with no castling rights writes "-" in the castling field; the en-passant
# field after it is read all the same. "w - e6" after Black's e7-e5 (e6 and e7 empty, the
# black pawn on e5) lets White's d5 pawn take en passant; "b - e3" after White's e2-e4 lets
# Black's d4 pawn take. ev (xboard mode: board and last-move lines only) shows the black
# pawn gone from e5.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -xboard -easy <"$2"
