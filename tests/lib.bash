# Helpers sourced by the test scripts.

# in_scratch_folder: moves into a fresh folder, $scratch, removed when the script ends.
in_scratch_folder() {
    scratch=$(mktemp -d)
    trap 'rm -rf "$scratch"' EXIT
    cd "$scratch" || exit 2
}

# book_start_moves BOOK: the moves a book file holds for the start position, where all its lines
# begin (so its first record's key names it), in coordinates, one a line.
book_start_moves() {
    awk 'NR == 1 { key = $1 " " $2 } $1 " " $2 == key {
        printf "%c%d%c%d\n", 97 + $4, $5 + 1, 97 + $6, $7 + 1 }' "$1" | sort -u
}
