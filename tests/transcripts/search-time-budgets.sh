# The clock line that the static list ends with, for several levels. Every engine move here
# comes from a small book built at start-up (-crbk; White's 1. e4 and 2. Nf3), so no search
# runs and only the budget matters. The first move of a game loses 5 seconds.
#   40 moves in 5 minutes, move 1: 300 / 40 - 5 = 2 seconds.
#   The same level set again (clearing the surplus), move 2: 300 / 40 = 7 seconds.
#   40 moves in 3 minutes, move 1: 180 / 40 - 5 = -1, not above 0, so the limit is 1 second.
#   0 moves, 0 minutes, 5 seconds bonus: a bonus without total time makes the total time
#   1 second; move 1: 1 / 60 - 5 = -5, so again 1 second.
#   All moves in 90 minutes, move 1: 5400 / 60 - 5 = 85 seconds (the prompt shows the total
#   time of 1 second as 0 minutes and the bonus of 5 seconds as current values).
# new does not change the level; it starts a game in which go makes the engine play White.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -crbk <"$2" | awk -v echo=keep -f "$(dirname "${BASH_SOURCE[0]}")/search-lines.awk"
