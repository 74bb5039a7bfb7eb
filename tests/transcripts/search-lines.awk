# Filter for the console search's lines whose numbers cannot be worked out by hand: they are
# checked by rule and replaced by a fixed text (or, when a check fails, by a line naming what
# is wrong); every other line passes unchanged.
#
# The static list (one "MOVE =  VALUE" entry per legal move, four to a line, tab-separated,
# greatest value first) becomes one line: the number of entries and the moves in alphabetical
# order, so the expected text states exactly which legal moves the side to move has.
# The value-range list after each iteration ("MOVE=[ LOW .. HIGH ]" for the first eight
# positions, a "?" after a bound not proven in this iteration, then the remaining moves, eight
# to a line) must name the same moves. Position 0 holds the greatest lower bound, positions 1..
# fall by upper bound; an iteration that finished has separated its best move: a proven lower
# bound at 0 not below the upper bound at 1, and proven upper bounds at every other position.
#
# Variables (-v): echo=member|first|keep (default keep): the engine's move (the first echo
# after a static list) must be one of the listed moves, or the first (greatest static value),
# and is replaced by "<one of the listed moves>" or "<the first listed move>"; keep leaves it
# (a forced move, a mate, the book's). iters=keep (default) shows every iteration (summarised
# as above); iters=collapse checks that the finished ones come in order from depth 2 and
# replaces them by one line, showing only the last, interrupted one with a fixed depth text.

function fail(msg) { problems = problems "- " msg "\n" }

# The moves of a blank-separated string, sorted.
function sorted(list,    n, a, i, j, t, out) {
    n = split(list, a, " ")
    for (i = 2; i <= n; i++) {
        t = a[i]
        for (j = i - 1; j >= 1 && a[j] > t; j--) a[j + 1] = a[j]
        a[j + 1] = t
    }
    for (i = 1; i <= n; i++) out = out (i > 1 ? " " : "") a[i]
    return out
}

# The move of an entry "e2e4 " or "e7e8q": four letters and the promotion letter, if any.
function move_of(text) { return substr(text, 1, 4) (substr(text, 5, 1) == " " ? "" : substr(text, 5, 1)) }

function flush_problems() { printf "%s", problems; problems = "" }

BEGIN { lastdepth = 1 }

# ---- static list -------------------------------------------------------------------------
state == "static" {
    if ($0 == "") {
        if (nst == 0) fail("empty static list")
        if (!shortline && nst % 4 != 0) fail("last static line not closed")
        if (problems == "")
            print "- " nst (nst == 1 ? " entry" : " entries") ", greatest value first: " sorted(stmoves)
        flush_problems()
        print ""
        state = ""
        next
    }
    if (shortline) fail("a static line with fewer than four entries before the last")
    n = split($0, f, "\t")
    if (n < 4) shortline = 1
    if (n > 4) fail("more than four entries on a static line: " $0)
    for (i = 1; i <= n; i++) {
        if (f[i] !~ /^[a-h][1-8][a-h][1-8][nbrq ]=[ -]*[0-9]+$/ || length(f[i]) != 13) {
            fail("malformed static entry: \"" f[i] "\"")
            continue
        }
        mv = move_of(f[i])
        val = substr(f[i], 7) + 0
        if (nst > 0 && val > lastval) fail("static values not falling at " mv)
        if (mv in inlist) fail("move listed twice: " mv)
        inlist[mv] = 1
        nst++
        if (nst == 1) firstmove = mv
        stmoves = stmoves " " mv
        lastval = val
    }
    next
}

$0 == "current best-first move list with respective evaluation:" {
    print
    state = "static"; nst = 0; stmoves = ""; shortline = 0; pending = 1
    for (k in inlist) delete inlist[k]
    finished = 0; lastdepth = 1
    next
}

# ---- iterations ----------------------------------------------------------------------------
/^new iteration with depth / {
    d = $5 + 0
    if (d != lastdepth + 1) fail("iteration depth " d " after " lastdepth)
    lastdepth = d
    if (iters != "collapse") print
    next
}

$0 == "current best-first move list with respective value range:" {
    if (iters != "collapse") print
    state = "ranges"; nr = 0; nshown = 0; rest = 0
    for (k in seen) delete seen[k]
    next
}

state == "ranges" && !/^iteration / && $0 != "time over" {
    if ($0 ~ /^[a-h][1-8][a-h][1-8][nbrq ]=\[[ -]*[0-9]+[ ?]\.\.[ -]*[0-9]+[ ?]\]$/ && !rest) {
        mv = move_of($0)
        s = substr($0, 8)                     # "   -550 ..   -496 ]"
        lo[nshown] = substr(s, 1, 7) + 0; lof[nshown] = substr(s, 8, 1)
        hi[nshown] = substr(s, 11, 7) + 0; hif[nshown] = substr(s, 18, 1)
        nshown++
    } else {
        rest = 1
        n = split($0, f, "\t")
        for (i = 1; i <= n; i++) {
            if (f[i] !~ /^[a-h][1-8][a-h][1-8][nbrq ]$/) { fail("malformed range entry: \"" f[i] "\""); continue }
            mv = move_of(f[i])
            if (mv in seen) fail("move shown twice: " mv)
            seen[mv] = 1; nr++
        }
        if (n != 8 && nr != nst) fail("a line of remaining moves with " n " entries")
        next
    }
    if (mv in seen) fail("move shown twice: " mv)
    seen[mv] = 1; nr++
    next
}

function check_ranges(resolved,    i, k) {
    if (nr != nst) fail(nr " moves in the value ranges, " nst " in the static list")
    for (k in seen) if (!(k in inlist)) fail("ranged move " k " is not in the static list")
    if (nshown != (nst < 8 ? nst : 8)) fail(nshown " ranges shown")
    for (i = 1; i < nshown; i++)
        if (lo[i] > lo[0]) fail("lower bound at position " i " above position 0")
    for (i = 2; i < nshown; i++)
        if (hi[i] > hi[i - 1]) fail("upper bounds not falling at position " i)
    if (resolved) {
        if (lof[0] != " ") fail("lower bound at position 0 not proven")
        if (nshown > 1 && lo[0] < hi[1]) fail("best move not separated from position 1")
        for (i = 1; i < nshown; i++)
            if (hif[i] != " ") fail("upper bound at position " i " not proven")
    }
}

/^iteration finished - / {
    if ($0 !~ /^iteration finished - total time: [0-9]+ sec - #nodes: [0-9]+$/) fail("malformed: " $0)
    check_ranges(1)
    state = ""
    if (iters == "collapse") { finished++; skipblank = 1; flush_problems(); next }
    if (problems == "") print "- value ranges of the " nr " listed moves, arranged and resolved"
    flush_problems()
    print "iteration finished - total time: (seconds) sec - #nodes: (count)"
    next
}

$0 == "time over" || /^iteration interrupted - / {
    if (state == "ranges") {
        check_ranges(0)
        state = ""
        if (iters == "collapse") {
            if (finished) print "- the iterations from depth 2 on finished in order, each arranged and resolved"
            else print "- no iteration finished"
            print "new iteration with depth (one more than the last finished)"
            print "current best-first move list with respective value range:"
        }
        if (problems == "") print "- value ranges of the " nr " listed moves, arranged"
        flush_problems()
    }
    if ($0 == "time over") { print; next }
    if ($0 !~ /^iteration interrupted - total time: [0-9]+ sec - #nodes: [0-9]+$/) fail("malformed: " $0)
    flush_problems()
    print "iteration interrupted - total time: (seconds) sec - #nodes: (count)"
    next
}

skipblank && $0 == "" { skipblank = 0; next }

# ---- the engine's move ---------------------------------------------------------------------
pending && /^ *[0-9]+\. (\.\.\. )?[a-h][1-8][a-h][1-8][nbrq ]$/ {
    pending = 0
    mv = move_of(substr($0, length($0) - 4))
    head = substr($0, 1, length($0) - 5)
    if (echo == "member") print ((mv in inlist) ? head "<one of the listed moves>" : $0 "- not a listed move")
    else if (echo == "first")
        print (mv == firstmove ? head "<the first listed move>" : $0 "- not the first listed move " firstmove)
    else print
    next
}

{ flush_problems(); print }
