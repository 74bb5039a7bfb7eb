# Filter for the console report of a pondering search, which follows the line
#   "Kovrel is pondering... Ctrl-C or hit any key to stop it"
# and whose iterations, moves, values, times and node counts depend on the machine's speed and
# on when the opponent's word arrived. It is checked by rule and replaced by one fixed line (or
# by lines naming what is wrong): iterations in order from depth 2 ("new iteration with depth
# N"), each with one line "best move: MOVE=[ VALUE .. ?]" and ending "iteration finished - ..."
# but the last, which the word stopped ("iteration interrupted - ..."), each followed by an
# empty line; no "time over" (no time limit). An interrupted iteration keeps the previous
# move and value unless its move is at least 750 (as printed) above the previous value.
# With a single legal move the pondering search prints nothing after the header.
# finished=some (default): at least one iteration must have finished (the session waited for
# one); finished=any: the interruption may come in the first iteration.

function fail(msg) { problems = problems "- pondering report: " msg "\n" }

BEGIN { if (finished == "") finished = "some" }

$0 == "Kovrel is pondering... Ctrl-C or hit any key to stop it" {
    print
    state = "header"; depth = 1; nfinished = 0; problems = ""; lastbest = ""; lastvalue = ""; inner = 0
    next
}

state == "header" && !/^new iteration with depth / { state = "" }

state == "header" || state == "report" {
    if ($0 ~ /^new iteration with depth [0-9]+$/) {
        if (inner) fail("a new iteration before the previous one ended")
        d = $5 + 0
        if (d != depth + 1) fail("iteration depth " d " after " depth)
        depth = d; inner = 1; best = ""
        state = "report"
        next
    }
    if ($0 ~ /^best move: /) {
        if (!inner || best != "") fail("a best-move line outside its place: " $0)
        if ($0 !~ /^best move: [a-h][1-8][a-h][1-8][nbrq ]=\[[ -]*[0-9]+ \.\. \?\]$/ || length($0) != 31)
            fail("malformed: " $0)
        best = substr($0, 12, 5); value = substr($0, 18, 7) + 0
        next
    }
    if ($0 ~ /^iteration finished - /) {
        if ($0 !~ /^iteration finished - total time: [0-9]+ sec - #nodes: [0-9]+$/) fail("malformed: " $0)
        if (!inner || best == "") fail("an iteration without its best-move line")
        inner = 0; nfinished++; lastbest = best; lastvalue = value
        state = "blank"; after = "report"
        next
    }
    if ($0 ~ /^iteration interrupted - /) {
        if ($0 !~ /^iteration interrupted - total time: [0-9]+ sec - #nodes: [0-9]+$/) fail("malformed: " $0)
        if (!inner || best == "") fail("an iteration without its best-move line")
        if (lastbest != "" && (best != lastbest || value != lastvalue) && value < lastvalue + 750)
            fail("the interrupted iteration replaced " lastbest "(" lastvalue ") by " best "(" value ")")
        if (finished == "some" && nfinished == 0) fail("no iteration finished")
        inner = 0
        state = "blank"; after = "end"
        next
    }
    fail("unexpected line: " $0)
    next
}

state == "blank" {
    if ($0 != "") fail("no empty line after an iteration's last line")
    if (after == "report") { state = "report"; if ($0 == "") next }
    else {
        if (problems == "")
            print "- pondering report: iterations in order from depth 2, each with its best move, the last one interrupted"
        else
            printf "%s", problems
        print ""
        state = ""
        if ($0 == "") next
    }
}

{ print }

END {
    if (state != "") {
        fail("the report did not end with an interrupted iteration")
        printf "%s", problems
    }
}
