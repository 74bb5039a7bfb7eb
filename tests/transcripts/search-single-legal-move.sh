# Positions where the side to move has exactly one legal move: the engine prints the static
# list (one entry) and its clock line and plays the move at once, without any iteration.
# After 1. e4 f6 2. Qh5+ Black's king cannot go to f7 (the queen sees it through g6) and
# nothing but the g-pawn can block on g6, so 2... g6 is forced. After 3. Qxg6+ the queen on
# g6 covers f7 again and can only be taken by the h-pawn, so 3... hxg6 is forced.
# Clock lines: the default level (all moves in 60 minutes) gives move 2 a budget of
# 3600 / 60 = 60 seconds; 40 moves in 5 minutes give move 3 a budget of 300 / 40 = 7 seconds
# (the level command clears the surplus; only the first move loses 5 seconds).
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -nobk <"$2" | awk -v echo=keep -f "$(dirname "${BASH_SOURCE[0]}")/search-lines.awk"
