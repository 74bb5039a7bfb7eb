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
report=$(sed -n '/^processing file/,/^openings book created/p' build.out |
    sed -e 's/^processing file\.\.\.//' | grep -v '^#')
if [[ $report != 'openings book created in "openings.dat"' ]]; then
    echo "the builder echoed unknown tokens:"
    echo "$report"
    exit 1
fi
records=$(wc -l <openings.dat)
lines=$(grep -c '^new' openings.txt)
echo "$lines lines of play, $records records"
((lines >= 150))

failed=0
# The engine's answer after the typed moves, taken from the book (no iteration is searched).
answer() {
    local out
    out=$({ echo force; echo "$1"; echo go; echo quit; } | "$kovrel")
    if grep -q '^new iteration' <<<"$out"; then
        echo "no book move after '$1'"
        failed=$((failed + 1))
        return
    fi
    grep -E '^ *[0-9]+\. ' <<<"$out" | tail -1
}
for moves in "" "e4" "d4" "c4" "Nf3" "e4 e5" "e4 c5" "d4 d5" "d4 Nf6"; do
    echo "after '$moves': $(answer "$moves")"
done
((failed == 0))
