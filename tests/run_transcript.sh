#!/usr/bin/env bash
# Runs one session of a program and compares what it printed with the expected text.
#   run_transcript.sh PROGRAM DIR NAME
# In DIR: NAME.in the session, NAME.out the expected text; optional NAME.setup/, files copied
# into the scratch folder the session runs in, and NAME.files/, files it must leave there.
# NAME.in holds the lines sent to the program and these directives:
#   @# TEXT          a comment: why the expected answers are right
#   @run [VAR=VALUE...] [ARG...] [2>&1]   a run of the program, its words read as the shell
#                    reads them (2>&1 adds standard error to the output); lines before any
#                    @run start a run without arguments. A run ends at the next @run, @files,
#                    @show or the end: its input closes and it must end. Its output follows
#                    "$ PROGRAM ARG..." and is followed by "status N".
#   @filter NAME [VAR=VALUE...]   the run's output goes through DIR/NAME.awk (in order)
#   @wait REGEX      waits for a line matching REGEX after the last line sent or found
#   @sleep SECONDS   a pause;  @signal NAME   sends the signal to the program
#   @long LENGTH TEXT   sends TEXT padded with blanks;  @crlf TEXT   sends TEXT ending in CR LF
#   @check RULE      (UCI) the rule for the search of the last go (see uci/rules.awk)
#   @files           lists the scratch folder;  @show FILE FILTER   prints FILE through a filter
# A run with @wait, @sleep or @signal, and every run of a *-uci program, reads a named pipe and
# gets each group of lines at its moment; any other run reads a file. For *-uci programs a go
# without infinite or ponder waits for the bestmove, rules.awk filters every run, and the
# report lines' time, speed and node count become T, R and N. Waits have a limit of 30 seconds,
# for slow builds, and so has the end of a run; a wait that runs out, a run that does not end
# and anything on standard error are reported after the output, and nothing more is sent.
set -uo pipefail
program=$(realpath "$1") dir=$(realpath "$2") name=$3
label=$(basename "$program")
uci=$([[ $label == *-uci ]] && echo 1 || echo 0)
scratch=$(mktemp -d) work=$(mktemp -d) pid=""
trap '[[ -n $pid ]] && kill -KILL "$pid" 2>/dev/null; rm -rf "$scratch" "$work"' EXIT
trap '' PIPE # a write to a program that has ended fails instead of ending this script
[[ -d $dir/$name.setup ]] && cp -r "$dir/$name.setup/." "$scratch/"
cd "$scratch" || exit 2
out=$work/out fifo=$work/fifo actual=$work/actual words=$work/words rules=$work/rules.awk
: >"$actual"
notes="" broken=0 buffer="" mark=0 running=0

flush() { # sends the lines gathered so far
    [[ -z $buffer ]] && return
    mark=$(wc -l <"$out")
    printf '%s' "$buffer" >&3 2>/dev/null
    buffer=""
}

wait_for() { # wait_for REGEX: see @wait
    local deadline=$((SECONDS + 30)) at
    while :; do
        at=$(awk -v m="$mark" -v re="$1" 'NR > m && $0 ~ re { print NR; exit }' "$out")
        [[ -n $at ]] && mark=$at && return 0
        ! kill -0 "$pid" 2>/dev/null || ((SECONDS > deadline)) && break
        sleep 0.05
    done
    notes+="no line matching \"$1\" came"$'\n' broken=1
}

start_run() { # start_run TIMED WORDS...: env assignments and arguments as in @run
    local timed=$1 word
    set -f
    eval "set -- ${*:2}"
    set +f
    runenv=() args=() merge=0 filters=() ngo=0 running=1 buffer="" pid=""
    for word; do
        [[ ${#args[@]} == 0 && $word =~ ^[A-Za-z_]+= ]] && runenv+=("$word") || args+=("$word")
    done
    if ((${#args[@]})) && [[ ${args[-1]} == '2>&1' ]]; then merge=1 && unset 'args[-1]'; fi
    echo "\$ ${runenv[*]+${runenv[*]} }$label${args[*]+ ${args[*]}}" >>"$actual"
    : >"$rules"
    : >"$words"
    ((timed)) || return
    rm -f "$fifo" && mkfifo "$fifo"
    set -m # the program gets the default action for SIGINT
    launch "$fifo" &
    pid=$!
    set +m
    exec 3>"$fifo"
}

launch() { # launch INPUT: the shell becomes the program, reading INPUT
    exec <"$1" >"$out" 2>"$work/err"
    ((merge)) && exec 2>&1
    exec env ${runenv[@]+"${runenv[@]}"} "$program" ${args[@]+"${args[@]}"}
}

end_run() { # closes the input, waits for the end and adds the output
    local status deadline entry filter
    ((running)) || return
    running=0
    if [[ -n $pid ]]; then
        flush
        exec 3>&-
        deadline=$((SECONDS + 30))
        while kill -0 "$pid" 2>/dev/null && ((SECONDS < deadline)); do sleep 0.05; done
        kill -KILL "$pid" 2>/dev/null && notes+="the program did not end; killed"$'\n'
        wait "$pid"
        status=$? pid=""
    else
        (launch "$words")
        status=$?
    fi
    [[ -s $work/err ]] && notes+="standard error: $(head -c 2000 "$work/err")"$'\n'
    ((uci)) && filters+=("rules")
    for entry in ${filters[@]+"${filters[@]}"}; do
        read -ra filter <<<"$entry"
        awk -v program="$program" -f "$rules" -f "$dir/$filter.awk" "${filter[@]:1}" "$out" \
            >"$out.next" || notes+="the filter $entry failed"$'\n'
        mv "$out.next" "$out"
    done
    ((uci)) && sed -Ei -e '/^info string /!{s/ time [0-9]+/ time T/g; s/ nps [0-9]+/ nps R/g' \
        -e 's/ nodes [0-9]+/ nodes N/g}' "$out"
    cat "$out" >>"$actual"
    echo "status $status" >>"$actual"
}

mapfile -t lines <"$dir/$name.in"
for ((i = 0; i < ${#lines[@]}; i++)); do
    line=${lines[i]}
    if ((!running)) && [[ ! $line =~ ^@(run|#|files|show) ]]; then
        lines=("@run" "${lines[@]:i}") i=0 line=@run
    fi
    ((broken)) && [[ $line != @run* ]] && continue
    case $line in
    '@#'*) ;;
    @run*)
        end_run
        ((broken)) && break
        timed=$uci
        for ((j = i + 1; j < ${#lines[@]}; j++)); do
            [[ ${lines[j]} =~ ^@(run|files|show) ]] && break
            [[ ${lines[j]} =~ ^@(wait|sleep|signal) ]] && timed=1
        done
        start_run "$timed" "${line#@run}"
        ;;
    '@filter '*) filters+=("${line#@filter }") ;;
    '@check'*) rule=${line#@check} && echo "BEGIN { rule[$ngo] = \"${rule# }\" }" >>"$rules" ;;
    '@wait '*) flush && wait_for "${line#@wait }" ;;
    '@sleep '*) flush && sleep "${line#@sleep }" ;;
    '@signal '*) flush && kill -"${line#@signal }" "$pid" ;;
    '@files')
        end_run
        echo "--- files left" >>"$actual"
        LC_ALL=C ls -1A >>"$actual"
        ;;
    '@show '*)
        end_run
        read -r file filter <<<"${line#@show }"
        echo "--- $file" >>"$actual"
        awk -f "$dir/$filter.awk" "$file" >>"$actual"
        ;;
    '@long '*) rest=${line#@long } && buffer+="$(printf '%-*s' "${rest%% *}" "${rest#* }")"$'\n' ;;
    '@crlf '*) buffer+="${line#@crlf }"$'\r\n' ;;
    '@'*) notes+="unknown directive: $line"$'\n' broken=1 ;;
    *)
        [[ -z $pid ]] && printf '%s\n' "$line" >>"$words" && continue
        buffer+="$line"$'\n'
        [[ $line =~ ^go([[:blank:]]|$) ]] && ((uci)) || continue
        ngo=$((ngo + 1))
        [[ " $line " =~ [[:blank:]](infinite|ponder)[[:blank:]] ]] && continue
        flush && wait_for '^bestmove'
        ;;
    esac
done
((running)) && end_run
printf '%s' "$notes" >>"$actual"

ok=1
diff -u "$dir/$name.out" "$actual" || ok=0
for file in "$dir/$name.files"/*; do # the files it must leave
    [[ -e $file ]] && ! diff -u "$file" "$scratch/${file##*/}" && ok=0
done
((ok == 1))
