#!/usr/bin/env bash
# The shipped opening book: building it echoes no unknown token (every move in it is legal
# where it stands), and the built book answers the main first moves of both sides without a
# search.
#   book_shipped.sh KOVREL OPENINGS_TXT
set -euo pipefail
kovrel=$(realpath "$1")
source=$(realpath "$2")
source "$(dirname "$0")/lib.bash"
in_scratch_folder
cp "$source" openings.txt

"$kovrel" -crbk </dev/null >build.out
# Besides the echoed comments, the builder prints only its two messages.
report=$(sed -n '/^processing file/,/^openings book created/{s/^processing file\.\.\.//; /^#/!p}' \
    build.out)
[[ $report == 'openings book created in "openings.dat"' ]] ||
    { echo "the builder echoed unknown tokens: $report"; exit 1; }
records=$(wc -l <openings.dat)
lines=$(grep -c '^new' openings.txt)
echo "$lines lines of play, $records records"
((lines >= 150))

# The engine's answer after the typed moves comes from the book: no iteration is searched.
failed=0
for moves in "" "e4" "d4" "c4" "Nf3" "e4 e5" "e4 c5" "d4 d5" "d4 Nf6"; do
    out=$(printf 'force\n%s\ngo\nquit\n' "$moves" | "$kovrel")
    echo "after '$moves': $(grep -E '^ *[0-9]+\. ' <<<"$out" | tail -1)"
    if grep -q '^new iteration' <<<"$out"; then
        echo "no book move after '$moves'"
        failed=$((failed + 1))
    fi
done
((failed == 0))
