# The book is on (the default) but the scratch folder has no openings.dat: each search
# prints its static list and clock line, then the error line, and plays the first legal
# move of the generator's order. White's pieces are visited from the h-file to the a-file,
# each file from the eighth rank down, so the pawn on h2 comes first: 1. h3 (h2h3), echoed
# without "..." as an even number of plies has been played. After the level is set again
# and the user's 1... e5, the pawn now on h3 comes first: 2. h4 (h3h4). White's 19 moves
# there: the pawns' 15 (h3 one step), knights b1-a3/c3 and g1-f3, rook h1-h2.
# Budgets: 3600 / 60 - 5 = 55 seconds for the first move, 60 for the second.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" <"$2" | awk -v echo=keep -f "$(dirname "${BASH_SOURCE[0]}")/search-lines.awk"
