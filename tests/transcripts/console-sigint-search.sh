# Ctrl-C (SIGINT) while the engine searches: the search stops, the engine plays its best
# move so far, and the program goes on: it reads the next words normally and ends with
# status 0.
#
# The position is a Ruy Lopez after 8. c3 O-O, White to move, played for both sides (force).
# No time control and a minimum depth of 30 half-moves: the search would run for a very
# long time, and in easy mode without the move-now feature no input could stop it. go makes
# the engine play White. Once its first iteration has finished (and half a second more), the
# program gets SIGINT: the running iteration is interrupted and the engine's move is echoed.
# When the echo is out (the program flushes before it waits for input), the words "flush"
# and "quit" follow.
# White's 27 moves: 9 pawn moves (a3 a4 c4 d3 d4 g3 g4 h3 h4), Nb1-a3, Nf3 to d4 e5 g5 h4,
# Bb3 to a4 c2 c4 d5 e6 f7, Qd1 to c2 e2, Re1 to e2 e3 f1, Kg1 to f1 h1.
# The iterations that finished are checked to come in order and to be resolved, and
# replaced by one line; the interrupted one is shown; the engine's move must be listed.
#   $1: the program   $2: the words, in groups sent one after another
set -uo pipefail
here=$(dirname "${BASH_SOURCE[0]}")
words=$2
source "$here/console-fifo-lib.bash"

start_program "$1" -nobk
send_group 1
wait_for "" 1 '^iteration finished' 1 && sleep 0.5
kill -INT "$pid"
wait_for "" 1 '^  9\. [a-h][1-8][a-h][1-8] $' 1
send_group 2
finish
awk -v echo=member -v iters=collapse -f "$here/search-lines.awk" "$out"
printf "%s" "$notes"
exit "$status"
