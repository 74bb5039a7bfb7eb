# A search that ends on the clock in the middle of an iteration. 40 moves in 5 minutes give
# Black's first move a budget of 300 / 40 - 5 = 2 seconds; the early-stop time is
# (300 / 40) / 2 = 3 seconds, later than the budget, so the search cannot end because its best
# move stays the same. With a minimum depth of 20 half-moves the budget is never cut to a
# quarter between iterations, so new iterations start until the clock runs out, and the
# poll stops the one that is running once 2 seconds have passed: the report shows
# "time over" and "iteration interrupted", and a legal move is played. How many iterations
# finish depends on the speed of the machine, so they are checked (in order from depth 2,
# each one arranged and resolved) and replaced by one line.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -nobk <"$2" |
    awk -v echo=member -v iters=collapse -f "$(dirname "${BASH_SOURCE[0]}")/search-lines.awk"
