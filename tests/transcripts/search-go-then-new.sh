# go at the start makes the engine play White; new starts a fresh game in which the user
# plays White again, so the typed e4 is White's move and the engine answers as Black. The
# level and the depth are kept across the new game: with no time control and a minimum
# depth of one half-move both engine moves are the first entries of their static lists,
# played without any iteration. White's engine move is echoed without "..." (an even number
# of plies has been played), Black's with it.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -nobk <"$2" | awk -v echo=first -f "$(dirname "${BASH_SOURCE[0]}")/search-lines.awk"
