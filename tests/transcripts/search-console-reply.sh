# Black's engine answers 1. e4 with no time control and a minimum depth of three half-moves:
# the static list must hold Black's twenty replies, the clock line shows "?", and exactly
# the iterations of depth 2 and 3 are run (the next one is refused because the minimum
# depth is reached and there is no clock). The reply is not fixed by hand, so its echo is
# checked to be one of the listed moves. The book is off (-nobk), so the move is searched.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -nobk <"$2" | awk -v echo=member -f "$(dirname "${BASH_SOURCE[0]}")/search-lines.awk"
