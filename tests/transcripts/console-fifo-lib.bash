# Helpers for transcripts whose words must arrive at chosen moments (while the engine thinks,
# while it ponders). Sourced by the drivers; not a transcript itself.
#
# The program reads a named pipe in the current (scratch) folder and writes to a file; the
# driver holds the pipe's write end open and decides when each group of words goes in. The
# words file is split into groups at empty lines: group 1 is everything before the first
# empty line, and so on.
#
# The program's output is written to the file as it is flushed: the program flushes before
# every search, after every "new iteration" line and before every wait for input, so
# progress can be watched there.
#
# Every wait has a limit (generous, for slow builds); a wait that runs out, or a program that
# does not end, is reported on standard output, so that the transcript fails instead of
# hanging.

fifo=./input.fifo
out=./program.out
notes=""

# start_program PROGRAM ARGUMENTS...: starts the program in the background on the pipe.
# Job control gives it the default SIGINT action (a non-interactive shell would hand it
# "ignored"), so a Ctrl-C that the program does not handle would end it.
start_program() {
    mkfifo "$fifo" || exit 90
    set -m
    "$@" <"$fifo" >"$out" &
    pid=$!
    set +m
    exec 3>"$fifo" # completes once the program has opened the read end
}

# send_group N: the words of group N.
send_group() {
    awk -v want="$1" 'BEGIN { RS = "" } NR == want { print }' "$words" >&3
}

# count_after HEADER K PATTERN: lines matching PATTERN after the K-th line matching HEADER
# (HEADER empty: from the start).
count_after() {
    awk -v header="$1" -v k="$2" -v pattern="$3" '
        header == "" || $0 ~ header { seen++ }
        (header == "" || seen >= k) && $0 ~ pattern { n++ }
        END { print n + 0 }' "$out"
}

# wait_for HEADER K PATTERN COUNT: waits until COUNT lines match PATTERN after the K-th
# HEADER line (at most 30 seconds).
wait_for() {
    local i
    for ((i = 0; i < 600; i++)); do
        (($(count_after "$1" "$2" "$3") >= $4)) && return 0
        kill -0 "$pid" 2>/dev/null || break
        sleep 0.05
    done
    notes+="timed out waiting for $4 line(s) \"$3\" after header $2 \"$1\""$'\n'
    return 1
}

# finish: closes the pipe (end of input), waits for the program to end (at most 30 seconds,
# then it is killed) and sets `status` to its exit status.
finish() {
    local i
    exec 3>&-
    for ((i = 0; i < 300; i++)); do
        kill -0 "$pid" 2>/dev/null || break
        sleep 0.1
    done
    if kill -0 "$pid" 2>/dev/null; then
        notes+="the program did not end; killed"$'\n'
        kill -KILL "$pid"
    fi
    wait "$pid"
    status=$?
}
