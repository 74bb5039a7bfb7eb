# Pondering in hard mode (-hard): after the engine's move the program thinks on the user's
# time ("Kovrel is pondering..."), with no time limit and up to 31 plies, until the user's
# next word arrives; then the word is taken as usual.
#
# No time control and a minimum depth of one half-move make the engine's own moves instant.
# The user plays 1. e4 f6 2. Qh5+ for both sides (force: no pondering while nobody plays the
# engine), then go gives the engine Black, whose only legal move is 2... g6. Now White, the
# user, is to move: the program ponders. Once at least one pondering iteration has finished
# (and a second more), the user plays 3. Qxg6+: the pondering search stops at once (the
# report ends with an interrupted iteration), the move is echoed, and the engine answers
# with 3... hxg6, again forced. Pondering starts again; this time the word "flush" stops it
# ("tables cleared"), and since that was no move the program does not ponder again before
# the next word, 4. Nf3, which arrived with it. The engine answers 4. Nf3 at once with the
# first move of its static list (24 legal moves for Black), and ponders once more until
# quit arrives.
#
# The pondering reports are checked by rule and replaced by one line each
# (console-ponder-lines.awk); the static lists and the engine's echoes are checked by
# search-lines.awk: every engine move must be the first of its static list (for the forced
# moves the list has that one entry).
#   $1: the program   $2: the words, in groups sent one after another
set -uo pipefail
here=$(dirname "${BASH_SOURCE[0]}")
words=$2
source "$here/console-fifo-lib.bash"
header='^Kovrel is pondering'

start_program "$1" -hard -nobk
send_group 1
wait_for "$header" 1 '^iteration finished' 1 && sleep 1
send_group 2
wait_for "$header" 2 '^iteration finished' 1
send_group 3
wait_for "$header" 3 '^iteration finished' 1
send_group 4
finish
awk -f "$here/console-ponder-lines.awk" "$out" |
    awk -v echo=first -f "$here/search-lines.awk"
printf "%s" "$notes"
exit "$status"
