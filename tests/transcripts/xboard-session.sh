# An interface's session in xboard mode. -easy keeps pondering off: -xboard alone turns it
# on, and then the words already waiting in the pipe would stop every search at its first
# look at the input, and a pondering search would run before each word is read, so the
# engine's move would depend on timing. -nobk makes the engine search instead of using the
# book.
# The level and set commands read their numbers silently and end each read with a newline;
# time and otim print nothing. After force the typed e2e4 is only echoed, without "...".
# With no time control and a minimum depth of two half-moves, go makes the engine play
# Black's reply at once: the two lines "  1. ... MOVE" and "My move is: MOVE". The reply is
# not fixed by hand; the filter checks that both lines name the same move and that it is one
# of Black's twenty legal replies to 1. e4, and replaces it by a fixed text.
# undo takes back one ply at a time without output (twice: the typed d2d4 and the engine's
# reply), so 1... e7e5 can be typed; "remove 1" takes back one ply, "remove" without a number
# two plies, and the move word after it is then played (Black's 1... c7c5 after 1. e4).
# A remove reads its number like level and set: the newline follows the read even when no
# number is there.
# The edit words build a position with the white king on e1, a white pawn on e4 and the
# black king on e8; White stays to move. white makes the engine play Black, and result (its
# whole line read and ignored) stops it again, so e4e5 and e8d7 are only echoed. ev shows the
# board and the last-move lines only.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -xboard -nobk -easy <"$2" | awk '
BEGIN {
    legal = " a7a6 a7a5 b7b6 b7b5 c7c6 c7c5 d7d6 d7d5 e7e6 e7e5 f7f6 f7f5 g7g6 g7g5 h7h6 h7h5 b8a6 b8c6 g8f6 g8h6 "
    expect = ""
}
expect != "" {
    if ($0 == "My move is: " expect) print "My move is: <the same move>"
    else print "- the move line does not repeat " expect ": " $0
    expect = ""
    next
}
/^ *[0-9]+\. \.\.\. [a-h][1-8][a-h][1-8][nbrq ]$/ {
    mv = substr($0, length($0) - 4)
    head = substr($0, 1, length($0) - 5)
    if (substr(mv, 5) == " " && index(legal, " " substr(mv, 1, 4) " ") > 0)
        print head "<one of the 20 replies of Black to 1. e4>"
    else print $0 "- not a reply of Black to 1. e4"
    expect = mv
    next
}
{ print }
END { if (expect != "") print "- no move line after " expect }'
