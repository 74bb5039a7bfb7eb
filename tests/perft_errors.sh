#!/usr/bin/env bash
# kovrel-perft refuses bad arguments and bad FEN with an error line and status 1, and reads an
# en-passant field that names no real double step as "-".
set -uo pipefail
perft=$1
failed=0
expect_error() {
    local out status
    out=$("$perft" "$@")
    status=$?
    if [[ $status != 1 || $out != "Error ("*"): kovrel-perft" ]]; then
        echo "FAIL: kovrel-perft $* gave status $status and: $out"
        failed=$((failed + 1))
    fi
}
expect_nodes() {
    local want=$1
    shift
    local got
    got=$("$perft" "$@" | awk '/^nodes /{print $2}')
    if [[ $got != "$want" ]]; then
        echo "FAIL: kovrel-perft $* gave $got nodes, expected $want"
        failed=$((failed + 1))
    fi
}
expect_error
expect_error x
expect_error -1
expect_error 31
expect_error 2 "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR"
expect_error 2 "rnbqkbnr/pppppppp/9/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -"
expect_error 2 "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNX w KQkq -"
expect_error 2 "rnbq1bnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -"
expect_error 2 "4k3/8/8/8/8/8/8/4K2P w - -"
expect_error 2 "4k3/8/8/8/8/8/8/4K2R b - -" extra
expect_error 1 "4k3/4R3/8/8/8/8/8/4K3 w - -"
# The start position with a claimed en-passant square on e3 and Black to move: no white pawn
# stands on e4, so no capture of it may be generated (20 moves, as without the field).
expect_nodes 20 1 "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq e3 0 1"
# A real double step: after 1. e4 d5 2. e5 f5 White may take en passant on f6.
expect_nodes 31 1 "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3"
expect_nodes 30 1 "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq - 0 3"
# Divide prints one line per legal root move and the total.
lines=$("$perft" --divide 2 | grep -c ': ')
[[ $lines == 20 ]] || { echo "FAIL: divide printed $lines move lines"; failed=$((failed + 1)); }
echo "$failed failed"
((failed == 0))
