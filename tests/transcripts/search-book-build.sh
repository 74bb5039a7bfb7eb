# -crbk builds the opening book from the openings.txt of the scratch folder before the game
# starts. The builder prints "processing file...", echoes the comment (the rest of its line
# after "#"), echoes the token Qxf7 (no legal move for White after 1. e4 e5 2. Nf3 Nc6: the
# pawn on d2 blocks the queen) and ends with its message on a line of its own.
# The book then has, in order: the start position with e2e4 (won by White), the position
# after 1. e4 with e7e5, after 1. e4 e5 with g1f3, after 2. Nf3 with b8c6 (all marked 1), and
# the start position again with d2d4 marked -1 (a game Black won). The keys come from the
# program's random source, so each distinct key is shown by a name given in order of first
# appearance; the first and the last record must share one.
# go: the static list is printed first, with the default level's budget for White's first
# move (3600 / 60 - 5 = 55 seconds); then the book gives e2e4, the only move of the start
# position not from a lost game, and no iteration runs. After the level is set again (which
# clears the surplus) and the user's 1... e5, the book gives 2. Nf3 with a budget of
# 3600 / 60 = 60 seconds.
#   $1: the program   $2: the words fed to it
set -euo pipefail
"$1" -crbk <"$2" | awk -v echo=keep -f "$(dirname "${BASH_SOURCE[0]}")/search-lines.awk"
echo "--- openings.dat (keys named in order of first appearance)"
awk 'NF != 8 { print "malformed record: " $0; next }
     { k = $1 " " $2
       if (!(k in name)) name[k] = "key" (++n)
       line = name[k]
       for (i = 3; i <= 8; i++) line = line " " $i
       print line }' openings.dat
