#!/usr/bin/env bash
# The build leaves the built book in the project's root, so that the console program started
# there plays from it: its first move as White is one that the book holds for the start
# position, not the first legal move of its list (which it plays when the book is missing).
#   book_in_root.sh KOVREL BUILT_BOOK SOURCE_ROOT
set -euo pipefail
kovrel=$1 built=$2 root=$3
source "$(dirname "$0")/lib.bash"
cmp "$built" "$root/openings.dat" || { echo "openings.dat in the root differs from $built"; exit 1; }
book_moves=$(book_start_moves "$root/openings.dat")
cd "$root"
output=$(printf 'go\nquit\n' | "$kovrel")
if grep -q 'Error (fopen' <<<"$output"; then echo "the book was not found: $output"; exit 1; fi
played=$(sed -n 's/^  1\. \([a-h][1-8][a-h][1-8]\) *$/\1/p' <<<"$output" | head -n1)
grep -qx "$played" <<<"$book_moves" || { echo "move '$played' is not among: $book_moves"; exit 1; }
echo "played $played from the book"
