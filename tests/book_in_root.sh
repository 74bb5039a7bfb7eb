#!/usr/bin/env bash
# The build leaves the built book in the project's root, so that the console program started
# there plays from it: its first move as White is one that the book holds for the start
# position, not the first legal move of its list (which it plays when the book is missing).
#   book_in_root.sh KOVREL BUILT_BOOK SOURCE_ROOT
set -euo pipefail
kovrel=$1 built=$2 root=$3
cmp "$built" "$root/openings.dat" || { echo "openings.dat in the root differs from $built"; exit 1; }
# Every book line starts from the start position: its first record's key halves name it.
read -r high low _ < "$root/openings.dat"
book_moves=$(awk -v h="$high" -v l="$low" '$1 == h && $2 == l {
    printf "%c%d%c%d\n", 97 + $4, $5 + 1, 97 + $6, $7 + 1 }' "$root/openings.dat" | sort -u)
cd "$root"
output=$(printf 'go\nquit\n' | "$kovrel")
if grep -q 'Error (fopen' <<<"$output"; then echo "the book was not found: $output"; exit 1; fi
played=$(sed -n 's/^  1\. \([a-h][1-8][a-h][1-8]\) *$/\1/p' <<<"$output" | head -n1)
grep -qx "$played" <<<"$book_moves" || { echo "move '$played' is not among: $book_moves"; exit 1; }
echo "played $played from the book"
