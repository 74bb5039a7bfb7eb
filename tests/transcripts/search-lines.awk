# Filter for transcripts of the engine's search in the console. Every line passes unchanged
# except the ones whose numbers cannot be worked out by hand; those are checked by rule and
# replaced by a fixed text (or, when a check fails, by a line naming what is wrong).
#
# The static list ("current best-first move list with respective evaluation:") holds one
# "MOVE =  VALUE" entry per legal move, four to a line and tab-separated, greatest value
# first. Its entry lines become one line: the number of entries and the moves in alphabetical
# order, so the expected text states exactly which legal moves the side to move has.
#
# The value-range list after each iteration shows, for the first eight positions, the move
# and its range "[ LOW .. HIGH ]" (a "?" after a bound that is not proven in this iteration),
# then the remaining moves, eight to a line. It must name the same moves as the static list.
# Position 0 holds the greatest lower bound; positions 1.. are ordered by falling upper
# bound. An iteration that finished has separated its best move: the move at position 0 has
# a proven lower bound not below the upper bound at position 1, and every other shown move
# has a proven upper bound.
#
# Variables (set with -v):
#   echo=member  the engine's move (the first move echo after a static list) must be one of
#                the listed moves; its move text is replaced by "<one of the listed moves>"
#   echo=first   it must be the first move of the list (the greatest static value); its move
#                text is replaced by "<the first listed move>"
#   echo=keep    (default) the echo passes unchanged (the move is fixed: forced, a mate or
#                the book's, and written out in the expected text)
#   iters=keep     (default) every iteration's lines are shown (summarised as above)
#   iters=collapse the iterations that finished are checked to come in order from depth 2 on
#                  and replaced by one line; only the last, interrupted iteration is shown,
#                  its depth number replaced by a fixed text

function fail(msg) { problems = problems "- " msg "\n" }

# Moves of a space-separated string, sorted, as one space-separated string.
function sorted(list,    n, a, i, j, t, out) {
    n = split(list, a, " ")
    for (i = 2; i <= n; i++) {
        t = a[i]
        for (j = i - 1; j >= 1 && a[j] > t; j--) a[j + 1] = a[j]
        a[j + 1] = t
    }
    out = ""
    for (i = 1; i <= n; i++) out = out (i > 1 ? " " : "") a[i]
    return out
}

function flush_problems() {
    if (problems != "") { printf "%s", problems; problems = "" }
}

BEGIN {
    if (echo == "") echo = "keep"
    if (iters == "") iters = "keep"
    state = ""; pending = 0; problems = ""; finished = 0; lastdepth = 1
}

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
        mv = substr(f[i], 1, 4); promo = substr(f[i], 5, 1)
        if (promo != " ") mv = mv promo
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
        mv = substr($0, 1, 4); promo = substr($0, 5, 1)
        if (promo != " ") mv = mv promo
        s = substr($0, 8)                     # "   -550 ..   -496 ]"
        lo[nshown] = substr(s, 1, 7) + 0; lof[nshown] = substr(s, 8, 1)
        hi[nshown] = substr(s, 11, 7) + 0; hif[nshown] = substr(s, 18, 1)
        nshown++
    } else {
        rest = 1
        n = split($0, f, "\t")
        for (i = 1; i <= n; i++) {
            if (f[i] !~ /^[a-h][1-8][a-h][1-8][nbrq ]$/) { fail("malformed range entry: \"" f[i] "\""); continue }
            mv = substr(f[i], 1, 4); promo = substr(f[i], 5, 1)
            if (promo != " ") mv = mv promo
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
    if (iters == "collapse") {
        finished++
        flush_problems()
        skipblank = 1
        next
    }
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
            if (finished > 0)
                print "- the iterations from depth 2 on finished in order, each arranged and resolved"
            else
                print "- no iteration finished"
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
    mv = substr($0, length($0) - 4, 4); promo = substr($0, length($0), 1)
    if (promo != " ") mv = mv promo
    head = substr($0, 1, length($0) - 5)
    if (echo == "member") {
        if (mv in inlist) print head "<one of the listed moves>"
        else print $0 "- not a listed move"
    } else if (echo == "first") {
        if (mv == firstmove) print head "<the first listed move>"
        else print $0 "- not the first listed move " firstmove
    } else print
    next
}

{ flush_problems(); print }
