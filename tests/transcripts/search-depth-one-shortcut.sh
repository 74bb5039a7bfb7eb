# A minimum depth of one half-move with no time control: the engine plays the move with the
# greatest static value, which is printed first in the static list, without any iteration.
# The position is a Ruy Lopez after 8. c3 O-O (White to move, 27 legal moves). The echo of
# the engine's move is checked to be the first entry of the printed list.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -nobk <"$2" | awk -v echo=first -f "$(dirname "${BASH_SOURCE[0]}")/search-lines.awk"
