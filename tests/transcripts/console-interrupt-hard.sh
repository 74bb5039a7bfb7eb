# Hard mode (-hard): input that arrives while the engine searches stops the search, as with
# the move-now feature, and the engine plays the best move found so far.
#
# The position is a Ruy Lopez after 8. c3 O-O, White to move, played for both sides (force,
# so that nobody's time is pondered on meanwhile). No time control and a minimum depth of 30
# half-moves: the search would run for a very long time. go makes the engine play White.
# Once its first iteration has finished (and half a second more), the words "flush" and
# "quit" arrive: the running iteration is interrupted and the engine's move is echoed. It is
# now the user's turn, so the program starts pondering, which the waiting word stops at once
# (possibly before any pondering iteration has finished); then "tables cleared" and
# "exiting...".
# White's 27 moves: 9 pawn moves (a3 a4 c4 d3 d4 g3 g4 h3 h4), Nb1-a3, Nf3 to d4 e5 g5 h4,
# Bb3 to a4 c2 c4 d5 e6 f7, Qd1 to c2 e2, Re1 to e2 e3 f1, Kg1 to f1 h1.
# The pondering report is checked by rule and replaced by one line (console-ponder-lines.awk);
# the iterations of the engine's search that finished are checked to come in order and to be
# resolved, and replaced by one line; the interrupted one is shown; the engine's move must be
# listed.
#   $1: the program   $2: the words, in groups sent one after another
set -uo pipefail
here=$(dirname "${BASH_SOURCE[0]}")
words=$2
source "$here/console-fifo-lib.bash"

start_program "$1" -hard -nobk
send_group 1
wait_for "" 1 '^iteration finished' 1 && sleep 0.5
send_group 2
finish
awk -v finished=any -f "$here/console-ponder-lines.awk" "$out" |
    awk -v echo=member -v iters=collapse -f "$here/search-lines.awk"
printf "%s" "$notes"
exit "$status"
