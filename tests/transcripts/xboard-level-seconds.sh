# XBoard writes a time-control base that is not a whole number of minutes as m:ss
# ("level 40 0:30 0" for 40 moves in 30 seconds); level reads it as minutes and seconds.
# After 1. e4 f6 2. Qh5+ and 3. Qxg6+ Black has one legal move each time, so the engine prints
# its static list and clock line and moves at once (see search-single-legal-move).
# In xboard mode "level 40 0:30 0" gives 30 / 40 = 0 seconds a move, which the clock raises to
# its floor of 1 second ("time for this move: 1 sec"; read as 0 minutes it would be no time
# control, "? sec", and ":30" would be an unknown command); "level 1 0:30 0" then gives
# 30 / 1 = 30 seconds for the one move of the session (the level command clears the surplus).
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -nobk <"$2" | awk -v echo=keep -f "$(dirname "${BASH_SOURCE[0]}")/search-lines.awk"
