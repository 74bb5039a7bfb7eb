#!/usr/bin/env bash
# Runs the UCI program on one transcript and compares what it prints with the expected text.
#   run_uci.sh KOVREL_UCI DIR NAME
# In DIR: NAME.in       the lines sent to the program, one at a time, and directives
#         NAME.out      the expected output, exactly, after the filter and the normalisation
#         NAME.filter   optional: an awk program applied to the raw output first, for lines whose
#                       content cannot be worked out by hand; its rules run before those of
#                       filter-lib.awk, which checks by rule the searches it names and prints
#                       every line not yet dealt with (see there)
#         NAME.setup/   optional: files copied into the scratch folder before the run
#
# The program runs in a fresh scratch folder, reading a named pipe that this script writes and
# writing its output to a file. The lines of NAME.in:
#   an ordinary line        is sent as it is;
#   a line "go ..."         is sent, and unless it contains the word infinite or ponder the next
#                           line waits until a bestmove line has come in answer;
#   @# text                 a comment: why the expected answers are right;
#   @sleep SECONDS          a pause;
#   @wait REGEX             waits for a line matching REGEX that came after the last line sent
#                           was sent (so an answer that comes at once is never missed);
#   @long LENGTH TEXT       sends TEXT followed by blanks, LENGTH characters in all, and a
#                           newline (lines too long to keep in a file);
#   @crlf TEXT              sends TEXT ending in a carriage return and a newline.
# Every wait has a limit (30 seconds: the sanitizer build is slow); a wait that runs out, a
# program that ends early or not at all, a status other than 0 and anything on standard error
# are reported at the end of the output, so that the test fails instead of hanging. After a wait
# runs out nothing more is sent. At the end the pipe is closed: the program must end.
#
# The search's report lines (info lines other than "info string") have their time, speed and
# node count replaced by T, R and N after the filter ran, since those cannot be known.
set -uo pipefail
engine=$(realpath "$1") dir=$(realpath "$2") name=$3
here=$(dirname "$(realpath "$0")")
limit=30 # seconds for every wait

scratch=$(mktemp -d)
pid=""
cleanup() {
    [[ -n $pid ]] && kill -0 "$pid" 2>/dev/null && kill -KILL "$pid" 2>/dev/null
    rm -rf "$scratch"
}
trap cleanup EXIT
trap '' PIPE # a write to a program that has ended fails instead of ending this script
[[ -d $dir/$name.setup ]] && cp -r "$dir/$name.setup/." "$scratch/"
cd "$scratch" || exit 2

fifo=./input.fifo
out=./program.out
err=./program.err
notes=""
mkfifo "$fifo" || exit 2
"$engine" <"$fifo" >"$out" 2>"$err" &
pid=$!
exec 3>"$fifo" # completes once the program has opened the read end

mark=0 # lines of output before the last line sent
send() {
    mark=$(wc -l <"$out")
    printf '%s' "$1" >&3 2>/dev/null || true # after quit the program reads no more
}

# Microseconds on the wall clock, for the limits (which hold however slowly the loops turn).
now() {
    local t=${EPOCHREALTIME/[.,]/}
    echo $((10#$t))
}

# seen REGEX: whether a line matching REGEX came after the first `mark` lines.
seen() {
    awk -v m="$mark" -v re="$1" 'NR > m && $0 ~ re { found = 1; exit } END { exit !found }' "$out"
}

# wait_for REGEX: waits for such a line, at most `limit` seconds.
wait_for() {
    local deadline=$(($(now) + limit * 1000000))
    while (($(now) < deadline)); do
        seen "$1" && return 0
        if ! kill -0 "$pid" 2>/dev/null; then
            seen "$1" && return 0
            notes+="the program ended while a line matching \"$1\" was awaited"$'\n'
            return 1
        fi
        sleep 0.05
    done
    seen "$1" && return 0
    notes+="timed out after $limit s waiting for a line matching \"$1\""$'\n'
    return 1
}

while IFS= read -r line || [[ -n $line ]]; do
    case $line in
    '@#'*) ;;
    '@sleep '*) sleep "${line#@sleep }" ;;
    '@wait '*) wait_for "${line#@wait }" || break ;;
    '@long '*)
        rest=${line#@long }
        length=${rest%% *} text=${rest#* }
        send "$(printf '%-*s' "$length" "$text")"$'\n'
        ;;
    '@crlf '*) send "${line#@crlf }"$'\r\n' ;;
    '@'*)
        notes+="unknown directive: $line"$'\n'
        break
        ;;
    *)
        send "$line"$'\n'
        if [[ $line =~ ^go([[:blank:]]|$) && ! " $line " =~ [[:blank:]](infinite|ponder)[[:blank:]] ]]; then
            wait_for '^bestmove' || break
        fi
        ;;
    esac
done <"$dir/$name.in"

# The end of the input: the program must end, with status 0.
exec 3>&-
deadline=$(($(now) + limit * 1000000))
while (($(now) < deadline)) && kill -0 "$pid" 2>/dev/null; do
    sleep 0.1
done
if kill -0 "$pid" 2>/dev/null; then
    notes+="the program did not end after its input closed; killed"$'\n'
    kill -KILL "$pid" 2>/dev/null
fi
wait "$pid" 2>/dev/null
status=$?
pid=""
((status == 0)) || notes+="exit status $status"$'\n'
[[ -s $err ]] && notes+="standard error: $(head -c 2000 "$err")"$'\n'

{
    if [[ -f $dir/$name.filter ]]; then
        awk -v program="$engine" -f "$dir/$name.filter" -f "$here/filter-lib.awk" "$out"
    else
        cat "$out"
    fi
} | sed -E '/^info string /!{s/ time [0-9]+/ time T/g; s/ nps [0-9]+/ nps R/g; s/ nodes [0-9]+/ nodes N/g}' \
    >actual.out
printf '%s' "$notes" >>actual.out

if ! diff -u "$dir/$name.out" actual.out; then
    echo "uci transcript $name: output differs"
    exit 1
fi
