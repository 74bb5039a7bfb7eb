# The console editor builds a king-and-pawn ending from the start position: rank 1 becomes
# only the white king on e1, rank 2 only a white pawn on e2, rank 7 empty, rank 8 only the
# black king on e8 (ranks 3 to 6 are empty already); no castling; Black to move. The board
# is shown before each row question. The position is accepted ("done"); the engine played
# Black, which is now to move, so it stops. ev shows the position (no last move yet, so only
# "Black to move"); after 1... Ke7 (move number 1 and no dots: the record starts afresh at
# ply 0) the last-move line names it. The evaluation lines are checked against each other.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" <"$2" | awk -f "$(dirname "${BASH_SOURCE[0]}")/eval-lines.awk"
