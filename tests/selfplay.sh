#!/usr/bin/env bash
# Self-play: the engine plays both sides of five games at a small depth, each from an opening
# typed after "force", until a result line (or the 406-ply limit). Every game must end normally
# and print no error, and its moves, typed again into a fresh program, must all be accepted in
# the same order. At depth 2 without a clock the games are the same every time; between them
# they castle both ways with both sides, promote with both sides, take en passant, and end in
# mates by either side and a draw by repetition (as the comments say).
#   selfplay.sh KOVREL
set -euo pipefail
kovrel=$(realpath "$1")
source "$(dirname "$0")/lib.bash"
in_scratch_folder

openings=(
    "Nf3 d5 g3 Nf6 Bg2 e6"           # O-O for both; White mates
    "e4 Nf6 e5 Nd5 d4 d6"            # O-O-O for White, O-O for Black, White promotes; White mates
    "e4 e5 Nf3 Nf6 Nxe5 d6 Nf3 Nxe4" # O-O-O for Black, Black promotes; Black mates
    "c4 c5 Nc3 Nc6 g3 g6 Bg2 Bg7"    # O-O for both, Black promotes; Black mates
    "c4 e5 Nc3 Nf6 g3 d5"            # Black takes en passant; a draw by repetition
)

moves_of() { # the echoed moves of a transcript, up to its first result line
    awk '/^(1-0|0-1|1\/2-1\/2) \{/ || /plies played, memory overflow!/ {exit}
         match($0, /^ *[0-9]+\. (\.\.\. )?[a-h][1-8][a-h][1-8][nbrq]?/) {
             n = split(substr($0, RSTART, RLENGTH), f, " "); print f[n] }' "$1"
}

failed=0
gos=$(printf 'go\n%.0s' $(seq 420)) # more than the ply limit
for opening in "${openings[@]}"; do
    problems=""
    printf 'force\n%s\nlevel 0 0 0\nset 2 6\n%s\nquit\n' "$opening" "$gos" >game.in
    "$kovrel" -nobk <game.in >game.out || problems+=" exit status $?;"
    result=$(grep -m1 -E '^(1-0|0-1|1/2-1/2) \{|plies played, memory overflow!' game.out || true)
    [[ -n $result ]] || problems+=" no result;"
    moves_of game.out >game.moves
    # Replay the moves with both sides typed: every one must be accepted, in the same order.
    { echo force; cat game.moves; echo quit; } | "$kovrel" -nobk >replay.out
    moves_of replay.out | cmp -s game.moves - || problems+=" replay differs;"
    if grep -q '^Error' game.out replay.out; then
        problems+=" error line: $(grep -m1 '^Error' game.out replay.out);"
    fi
    if [[ -n $problems ]]; then
        echo "$opening: FAIL$problems"
        failed=$((failed + 1))
    else
        echo "$opening: $(wc -l <game.moves) plies, $result"
    fi
done
echo "$((${#openings[@]} - failed)) passed, $failed failed"
((failed == 0))
