#!/usr/bin/env bash
# Sends SIGINT to the program while it is blocked reading its next word, and checks that
# it carries on reading: the first two words (force, e4) go in, then the interrupt, then
# the remaining words (e5, quit).
#   $1: the program   $2: the words, one a line
# The program's input is a named pipe in the current (scratch) folder, so the driver
# decides when each word arrives. Its output goes to a file that is printed at the end.
prog=$1 words=$2
fifo=./input.fifo out=./program.out
mkfifo "$fifo" || exit 90
# Job control gives the background job the default SIGINT action instead of the
# "ignored" that a non-interactive shell would otherwise hand it, so an interrupt the
# program does not handle ends it (and the test fails).
set -m
"$prog" <"$fifo" >"$out" &
pid=$!
set +m
exec 3>"$fifo"                      # the write end; open completes once the program has the read end
head -n 2 "$words" >&3
# The echo of e4 is written out (flushed) just before the program waits for the next word,
# so once it is in the file the program is at (or about to enter) that wait.
for _ in $(seq 100); do
    grep -qx '  1\. e2e4 ' "$out" && break
    sleep 0.05
done
sleep 0.3                            # let it settle in the blocking read
kill -INT "$pid"
sleep 0.3
tail -n +3 "$words" >&3
exec 3>&-                            # end of input after the last word
wait "$pid"
status=$?
cat "$out"
exit "$status"
