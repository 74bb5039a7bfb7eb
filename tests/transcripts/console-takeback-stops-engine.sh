# Taking back into the engine's turn stops the engine; go starts it again.
# The user plays White; with no time control and a minimum depth of one half-move the engine
# answers at once with the move of greatest static value (no iterations), so its reply is
# checked to be the first move of its static list. After 1. e4 and the engine's reply,
# "rem" with 1 goes back to the position after 1. e4, where Black, the engine's side, is to
# move: the engine stops ("human-human game type"). go makes the engine take Black again and
# it answers 1. e4 once more. "rem" with 2 then goes back to the start, where the user is to
# move: the engine keeps playing and answers 1. e4 a third time.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -nobk <"$2" | awk -v echo=first -f "$(dirname "${BASH_SOURCE[0]}")/search-lines.awk"
