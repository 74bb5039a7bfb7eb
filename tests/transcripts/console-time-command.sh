# The time command sets the engine's clock from centiseconds (5 seconds short) and works out
# how far the engine is ahead of its schedule; the next budget adds that surplus. otim reads
# its number and changes nothing; neither prints anything in the console.
# The engine's moves are forced (after 1. e4 f6 2. Qh5+ only 2... g6, after 3. Qxg6+ only
# 3... hxg6), so each engine move shows only its static list and the clock line.
#   All moves in 60 minutes; time 350000 after 3 plies: clock 3500 - 5 = 3495, moves played
#   m = (3 + 1) / 2 = 2, so 3600 × 58 / 60 = 3480 seconds are reserved for the rest and the
#   surplus is 15; move 2's budget is 3600 / 60 + 15 = 75 seconds.
#   40 moves in 5 minutes (the level clears the surplus); time 40000 after 4 plies: clock
#   400 - 5 = 395, m = 2, (40 - 2) × 300 / 40 = 285 seconds reserved, surplus 110; move 3's
#   budget is 110 + 300 / 40 = 117 seconds.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -nobk <"$2" | awk -v echo=keep -f "$(dirname "${BASH_SOURCE[0]}")/search-lines.awk"
