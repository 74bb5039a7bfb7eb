# inverse turns the board round: after 1. e4, ev shows Black at the bottom (rank 1 on top,
# files h to a, so h1's rook on a light square comes first as " R"), then the last-move and
# side-to-move lines; a second inverse turns it back. The two evaluation lines are checked
# against each other (the global value is the scaled material difference plus the positional
# totals' difference, from the side to move) and replaced by one fixed line.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" <"$2" | awk -f "$(dirname "${BASH_SOURCE[0]}")/eval-lines.awk"
