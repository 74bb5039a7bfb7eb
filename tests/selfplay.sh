#!/usr/bin/env bash
# Self-play: the engine plays both sides of 20 games at a small depth, each from a different
# opening typed after "force", until a result line (or the 406-ply limit). Every game must end
# normally, print no error, and its moves, typed again into a fresh program, must all be
# accepted as legal moves in the same order.
#   selfplay.sh KOVREL
set -euo pipefail
kovrel=$(realpath "$1")
source "$(dirname "$0")/lib.bash"
in_scratch_folder

openings=(
    "e4 e5 Nf3 Nc6 Bb5"
    "e4 c5 Nf3 d6 d4 cxd4 Nxd4 Nf6 Nc3 a6"
    "e4 e6 d4 d5 Nc3 Bb4"
    "e4 c6 d4 d5 Nc3 dxe4 Nxe4 Bf5"
    "d4 d5 c4 e6 Nc3 Nf6 Bg5 Be7"
    "d4 Nf6 c4 g6 Nc3 Bg7 e4 d6"
    "d4 Nf6 c4 e6 Nc3 Bb4"
    "c4 e5 Nc3 Nf6 g3 d5"
    "Nf3 d5 g3 Nf6 Bg2 e6"
    "e4 d5 exd5 Qxd5 Nc3 Qa5"
    "e4 e5 Nf3 Nf6 Nxe5 d6 Nf3 Nxe4"
    "e4 e5 f4 exf4 Nf3 g5"
    "d4 f5 g3 Nf6 Bg2 g6"
    "e4 g6 d4 Bg7 Nc3 d6"
    "d4 d5 Bf4 Nf6 e3 c5"
    "e4 e5 Nf3 Nc6 d4 exd4 Nxd4 Nf6"
    "c4 c5 Nc3 Nc6 g3 g6 Bg2 Bg7"
    "e4 Nf6 e5 Nd5 d4 d6"
    "d4 Nf6 c4 c5 d5 e6 Nc3 exd5 cxd5 d6"
    "b3 e5 Bb2 Nc6 e3 d5"
)

moves_of() { # the echoed moves of a transcript, up to its first result line
    awk '/^(1-0|0-1|1\/2-1\/2) \{/ || /plies played, memory overflow!/ {exit}
         match($0, /^ *[0-9]+\. (\.\.\. )?[a-h][1-8][a-h][1-8][nbrq]?/) {
             n = split(substr($0, RSTART, RLENGTH), f, " "); print f[n] }' "$1"
}

failed=0
game=0
for opening in "${openings[@]}"; do
    game=$((game + 1))
    {
        echo force
        echo "$opening"
        echo "level 0 0 0"
        echo "set 2 6"
        for _ in $(seq 420); do echo go; done
        echo quit
    } >"game$game.in"
    status=0
    "$kovrel" -nobk <"game$game.in" >"game$game.out" || status=$?
    result=$(grep -m1 -E '^(1-0|0-1|1/2-1/2) \{|plies played, memory overflow!' "game$game.out" || true)
    moves_of "game$game.out" >"game$game.moves"
    plies=$(wc -l <"game$game.moves")
    problems=""
    ((status == 0)) || problems+=" exit status $status;"
    [[ -n $result ]] || problems+=" no result;"
    grep -q '^Error' "game$game.out" && problems+=" error line: $(grep -m1 '^Error' "game$game.out");"
    # Replay the moves with both sides typed: every one must be accepted, in the same order.
    { echo force; cat "game$game.moves"; echo quit; } | "$kovrel" -nobk >"replay$game.out"
    moves_of "replay$game.out" >"replay$game.moves"
    cmp -s "game$game.moves" "replay$game.moves" || problems+=" replay differs;"
    grep -q '^Error' "replay$game.out" && problems+=" replay rejected a move;"
    if [[ -n $problems ]]; then
        echo "game $game ($opening): FAIL$problems"
        failed=$((failed + 1))
    else
        echo "game $game ($opening): $plies plies, $result"
    fi
done
echo "$((game - failed)) passed, $failed failed"
((failed == 0))
