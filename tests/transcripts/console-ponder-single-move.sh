# Pondering when the opponent has a single legal move: the pondering search returns that
# move at once, without iterations and without a report, so only the pondering line is
# printed; the move typed next is the predicted one and is played.
#
# Hard mode (-hard). The editor sets up: White Kh1, Rb1, Bg1, pawns a6, f2, g2, h2; Black Ka8,
# pawns a7, f3; Black to move. The black king has no move (a7 is its own pawn, b7 is covered
# by the pawn on a6, b8 by the rook on b1), the a-pawn is blocked, and the f-pawn can only
# take on g2 (f2 is blocked): 1... fxg2+ is Black's single legal move. It checks the king on
# h1, which can only take on g2 (h2 is its own pawn, g1 its own bishop, and nothing else
# reaches g2): 2. Kxg2 is White's single legal move, after which Black has no move and is
# not in check: stalemate.
# go makes the engine play Black: its static list has one entry and the clock line shows the
# default level's budget for move 1 (3600 / 60 - 5 = 55 seconds); the move is played at once.
# The set-up position starts a new record with Black to move, so the move numbers count from
# there: Black's move is echoed as "1." and White's reply as "1. ...".
# The static list is checked by search-lines.awk.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -hard -nobk <"$2" | awk -v echo=keep -f "$(dirname "${BASH_SOURCE[0]}")/search-lines.awk"
