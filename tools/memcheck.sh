#!/usr/bin/env bash
# Runs a representative session of Kovrel under valgrind's memcheck: the book built and used,
# a game with searches, take-backs and replay, save and load, the editor, the evaluation and
# the help screen. Fails on any memcheck error or leak.
#   tools/memcheck.sh [KOVREL]     (default build/kovrel, built in Release with debug info)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
kovrel=${1:-}
if [[ -z $kovrel ]]; then
    cmake -S "$root" -B "$root/build-memcheck" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DKOVREL_TESTS=OFF >/dev/null
    cmake --build "$root/build-memcheck" -j "$(nproc)" --target kovrel >/dev/null
    kovrel=$root/build-memcheck/kovrel
fi
kovrel=$(realpath "$kovrel")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp "$root/openings.txt" "$scratch/"
cd "$scratch"
cat >session.in <<'WORDS'
level 0 0 0
set 3 6
e4
d4
ev
rem 2
n
p
rep 1
pv
go
force
Nf3 Nc6
save game.pgn
new
load game.pgn
inverse
ev
edit
1 0 0 0 0 6 0 0 0
2 0 0 0 0 1 0 0 0
3 0 0 0 0 0 0 0 0
4 0 0 0 0 0 0 0 0
5 0 0 0 0 0 0 0 0
6 0 0 0 0 0 0 0 0
7 0 0 0 0 0 0 0 0
8 0 0 0 0 -6 0 0 0
0 0 0 1
go
help
flush
new
hard
e4
easy
quit
WORDS
status=0
valgrind --tool=memcheck --leak-check=full --show-leak-kinds=all --errors-for-leak-kinds=all \
    --error-exitcode=99 --log-file=memcheck.log "$kovrel" -crbk <session.in >session.out ||
    status=$?
grep -E 'ERROR SUMMARY|in use at exit|definitely lost|indirectly lost|possibly lost|still reachable' memcheck.log
echo "games played: $(grep -c 'is the last move' session.out) boards with a last move; exit $status"
exit $status
