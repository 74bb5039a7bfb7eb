#!/usr/bin/env bash
# Auto232 for real: two Kovrel processes in two folders play each other through their move
# files, while this script relays each side's moves ("mymove.txt") into the other side's
# "hismove.txt". White's moves are the lines without a leading TAB, Black's those with one.
# The game starts from a rook ending that White mates quickly, and must end with the same
# result line in both programs, without an error and with exit status 0.
#   auto232_match.sh KOVREL
set -uo pipefail
kovrel=$(realpath "$1")
scratch=$(mktemp -d)
pids=()
trap 'kill "${pids[@]}" 2>/dev/null; rm -rf "$scratch"' EXIT
cd "$scratch" || exit 2
for side in white black; do
    mkdir $side
    echo "8/8/8/3k4/8/8/8/R3K2R w - - 0 1" >$side/start.fen
    mkfifo $side/in
    (cd $side && exec "$kovrel" -nobk <in >out) &
    pids+=($!)
done

# White's program plays White once "go" arrives in its move file; Black's program takes the
# side to move as the user's (White) and so plays Black.
exec 3>white/in 4>black/in
printf 'load start.fen\nlevel 0 0 0\nset 3 6\nauto232\n' >&3
printf 'load start.fen\nlevel 0 0 0\nset 3 6\nwhite\nauto232\n' >&4
echo go >white/hismove.txt

# Moves a move line of one side from `from`/mymove.txt to `to`/hismove.txt. The file is first
# renamed, so that a move the program writes meanwhile goes to a new file and is not lost; the
# program may still be writing the renamed one, so it is read until its line is complete.
relay() {
    local from=$1 to=$2 wanted=$3 line i
    mv "$from/mymove.txt" "$from/taken.txt" 2>/dev/null || return
    for ((i = 0; i < 100; i++)); do
        line=$(cat "$from/taken.txt")
        [[ $line == *$'\r' ]] && break
        sleep 0.05
    done
    if [[ $wanted == white && $line != $'\t'* ]] || [[ $wanted == black && $line == $'\t'* ]]; then
        [[ -f $to/hismove.txt ]] && sleep 0.5 # the other side has not taken the last one yet
        printf '%s\n' "${line//$'\t'/}" >"$to/hismove.txt.part"
        mv "$to/hismove.txt.part" "$to/hismove.txt"
    fi
}

# Up to five minutes of wall-clock time: the game takes seconds on a free machine, but on a
# starved one each side's 0.2-second looks for its file stretch out.
result='^(1-0|0-1|1/2-1/2) \{'
deadline=$((SECONDS + 300))
until grep -qE "$result" white/out && grep -qE "$result" black/out || ((SECONDS > deadline)); do
    relay white black white
    relay black white black
    sleep 0.05
done

# Ctrl-C ends each program's wait for a move; the end of its input then ends the program.
kill -INT "${pids[@]}" 2>/dev/null
exec 3>&- 4>&-
status=0
for pid in "${pids[@]}"; do wait "$pid" || status=$?; done
pids=()
grep -E "$result|^ *[0-9]+\. |Error" white/out black/out
white_result=$(grep -m1 -E "$result" white/out)
black_result=$(grep -m1 -E "$result" black/out)
unknown=$(grep -h 'Error' */out | grep -v 'Error (unknown command): $')
echo "results: white '$white_result', black '$black_result'; exit status $status"
[[ -n $white_result && $white_result == "$black_result" && $status == 0 && -z $unknown ]]
