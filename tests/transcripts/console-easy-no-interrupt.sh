# Easy mode without the move-now feature: input that arrives while the engine searches does
# not stop the search; the words are read after the engine has moved.
#
# The position is a Ruy Lopez after 8. c3 O-O, White to move, played for both sides (force).
# No time control and a minimum depth of 7 half-moves: the search runs exactly the
# iterations reported as depths 2 to 7 (the clock refuses the next one at once) and takes a
# noticeable time for the last ones. go makes the engine play White; as soon as the first
# iteration has begun, the words "flush" and "quit" arrive. Every iteration must still
# finish, the engine's move is echoed, and only then the words take effect.
# (Should the machine be so fast that the depth-7 iteration had begun before the words were
# written, the run proves less; a note goes to standard error, the transcript is the same.)
# White's 27 moves: 9 pawn moves (a3 a4 c4 d3 d4 g3 g4 h3 h4), Nb1-a3, Nf3 to d4 e5 g5 h4,
# Bb3 to a4 c2 c4 d5 e6 f7, Qd1 to c2 e2, Re1 to e2 e3 f1, Kg1 to f1 h1.
# Each iteration's value ranges are checked (arranged, resolved) and summarised; the
# engine's move must be listed.
#   $1: the program   $2: the words, in groups sent one after another
set -uo pipefail
here=$(dirname "${BASH_SOURCE[0]}")
words=$2
source "$here/console-fifo-lib.bash"

start_program "$1" -nobk
send_group 1
wait_for "" 1 '^new iteration with depth 2$' 1
send_group 2
if (($(count_after "" 1 '^new iteration with depth 7$') > 0)); then
    echo "console-easy-no-interrupt: the words arrived late in the search" >&2
fi
finish
awk -v echo=member -f "$here/search-lines.awk" "$out"
printf "%s" "$notes"
exit "$status"
