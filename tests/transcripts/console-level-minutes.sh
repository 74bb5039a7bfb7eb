# The level command's total time is read in minutes, fractions included, and kept in whole
# seconds (truncated). With one move per session the whole session time is the budget of
# each move, so the clock line of the static list shows the total time in seconds. The
# engine's moves are forced (after 1. e4 f6 2. Qh5+ only 2... g6 parries the check, after
# 3. Qxg6+ only 3... hxg6), so the engine answers at once after its static list.
#   level 1 2.5 0: 2.5 minutes = 150 seconds; move 2 (no first-move discount): 150 seconds.
#   level 1 0.33 0: 0.33 minutes = 19.8 seconds, kept as 19; move 3: 19 seconds (the level
#   command clears the surplus left by the previous move).
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -nobk <"$2" | awk -v echo=keep -f "$(dirname "${BASH_SOURCE[0]}")/search-lines.awk"
