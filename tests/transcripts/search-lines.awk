# Filter for the console's search reports, whose numbers depend on the machine's speed: they
# are checked by rule and replaced by fixed text (or followed by lines "- WHAT IS WRONG");
# every other line passes unchanged.
# - The static list ("MOVE =  VALUE", four to a line, tab-separated, greatest value first)
#   becomes its number of entries and its moves in alphabetical order.
# - After each iteration the value ranges ("MOVE=[ LOW .. HIGH ]", "?" after a bound not
#   proven, for the first eight; then the other moves, eight to a line) must name the listed
#   moves. Position 0 holds the greatest lower bound, the upper bounds fall from position 1 on;
#   a finished iteration has proven the lower bound at 0, not below the upper bound at 1, and
#   the upper bounds at the others. Iterations come in order from depth 2.
# - A pondering report (after "Kovrel is pondering...") holds iterations in order from depth
#   2, each a "new iteration" line, one "best move: MOVE=[ VALUE .. ?]", its last line and an
#   empty line, the last one interrupted; that one keeps the move and value before it unless
#   its value is at least 750 above. It becomes one line. A single legal move has no report.
# -v echo=member|first: the engine's move (the first echo after a static list) must be one of
# the listed moves, or the first; iters=collapse: the finished iterations become one line.

function fail(msg) { problems = problems "- " msg "\n" }
function flush_problems() { printf "%s", problems; problems = "" }
function move_of(entry) { return substr(entry, 1, substr(entry, 5, 1) == " " ? 4 : 5) }

function sorted(list,    n, a, i, j, t, out) {
    n = split(list, a, " ")
    for (i = 2; i <= n; i++) {
        t = a[i]
        for (j = i - 1; j >= 1 && a[j] > t; j--) a[j + 1] = a[j]
        a[j + 1] = t
    }
    for (i = 1; i <= n; i++) out = out " " a[i]
    return substr(out, 2)
}

function next_depth() {
    if ($5 != lastdepth + 1) fail("iteration depth " $5 " after " lastdepth)
    lastdepth = $5
}

# An iteration's last line, its time and node count replaced.
function last_line(    pattern) {
    pattern = "^iteration (finished|interrupted) - total time: [0-9]+ sec - #nodes: [0-9]+$"
    if ($0 !~ pattern) fail("malformed: " $0)
    return "iteration " $2 " - total time: (seconds) sec - #nodes: (count)"
}

function end_ponder() {
    ponder = 0
    if (seq == "") return
    if (seq !~ /^(NBFE)*NBIE$/) fail("pondering report lines in the order " seq)
    if (problems == "") print "- pondering report: iterations in order from depth 2, each with " \
        "its best move, the last one interrupted"
    flush_problems()
    print ""
}

# ---- pondering report: its lines as N(ew iteration), B(est move), F(inished), I(nterrupted),
# E(mpty) ----------------------------------------------------------------------------------
/^Kovrel is pondering\.\.\. / { print; ponder = 1; seq = lastbest = ""; lastdepth = 1; next }

ponder && seq !~ /IE$/ {
    kind = $0 == "" ? "E" : ""
    if (/^new iteration with depth [0-9]+$/) { kind = "N"; next_depth() }
    if (/^iteration (finished|interrupted) - /) { kind = toupper(substr($2, 1, 1)); last_line() }
    if (/^best move: /) {
        kind = "B"; best = substr($0, 12, 5); value = substr($0, 19, 7) + 0
        if (length($0) != 31 ||
            $0 !~ /^best move: [a-h][1-8][a-h][1-8][nbrq ]=\[[ -]*[0-9]+ \.\. \?\]$/)
            fail("malformed: " $0)
    }
    if (kind == "F") { lastbest = best; lastvalue = value }
    if (kind == "I" && lastbest != "" && (best != lastbest || value != lastvalue) &&
        value < lastvalue + 750)
        fail("interrupted iteration replaced " lastbest "(" lastvalue ") by " best "(" value ")")
    seq = seq kind
    if (kind != "") next
}
ponder { end_ponder() }
END { if (ponder) end_ponder() }

# ---- static list ---------------------------------------------------------------------------
$0 == "current best-first move list with respective evaluation:" {
    print
    state = "static"; nst = 0; stmoves = ""; shortline = 0; pending = 1; lastdepth = 1; finished = 0
    split("", inlist)
    next
}

state == "static" && $0 == "" {
    if (nst == 0) fail("empty static list")
    if (problems == "")
        print "- " nst (nst == 1 ? " entry" : " entries") ", greatest value first: " sorted(stmoves)
    flush_problems()
    print ""
    state = ""
    next
}

state == "static" {
    n = split($0, f, "\t")
    if (shortline || n > 4) fail("a static line of " n " entries: " $0)
    shortline = n < 4
    for (i = 1; i <= n; i++) {
        mv = move_of(f[i])
        val = substr(f[i], 7) + 0
        if (f[i] !~ /^[a-h][1-8][a-h][1-8][nbrq ]=[ -]*[0-9]+$/ || length(f[i]) != 13)
            fail("malformed static entry: \"" f[i] "\"")
        else if (nst > 0 && val > lastval) fail("static values not falling at " mv)
        else if (mv in inlist) fail("move listed twice: " mv)
        inlist[mv] = 1; nst++; stmoves = stmoves " " mv; lastval = val
        if (nst == 1) firstmove = mv
    }
    next
}

# ---- iterations ----------------------------------------------------------------------------
/^new iteration with depth / {
    next_depth()
    if (iters != "collapse") print
    next
}

$0 == "current best-first move list with respective value range:" {
    if (iters != "collapse") print
    state = "ranges"; nr = 0; nshown = 0; rest = 0
    split("", seen)
    next
}

state == "ranges" && !/^iteration / && $0 != "time over" {
    n = split($0, f, "\t")
    rest = rest || $0 !~ /^[a-h][1-8][a-h][1-8][nbrq ]=\[[ -]*[0-9]+[ ?]\.\.[ -]*[0-9]+[ ?]\]$/
    if (!rest) {
        s = substr($0, 8)                     # "   -550 ..   -496 ]"
        lo[nshown] = substr(s, 1, 7) + 0; lof[nshown] = substr(s, 8, 1)
        hi[nshown] = substr(s, 11, 7) + 0; hif[nshown] = substr(s, 18, 1)
        nshown++
    }
    for (i = 1; i <= n; i++) {
        if (rest && f[i] !~ /^[a-h][1-8][a-h][1-8][nbrq ]$/) fail("malformed: \"" f[i] "\"")
        if (move_of(f[i]) in seen) fail("move shown twice: " move_of(f[i]))
        seen[move_of(f[i])] = 1; nr++
    }
    if (rest && n != 8 && nr != nst) fail("a line of remaining moves with " n " entries")
    next
}

function check_ranges(resolved,    i, k) {
    state = ""
    if (nr != nst) fail(nr " moves in the value ranges, " nst " in the static list")
    for (k in seen) if (!(k in inlist)) fail("ranged move " k " is not in the static list")
    if (nshown != (nst < 8 ? nst : 8)) fail(nshown " ranges shown")
    for (i = 1; i < nshown; i++) {
        if (lo[i] > lo[0]) fail("lower bound at position " i " above position 0")
        if (i > 1 && hi[i] > hi[i - 1]) fail("upper bounds not falling at position " i)
        if (resolved && hif[i] != " ") fail("upper bound at position " i " not proven")
    }
    if (resolved && lof[0] != " ") fail("lower bound at position 0 not proven")
    if (resolved && nshown > 1 && lo[0] < hi[1]) fail("best move not separated from position 1")
}

/^iteration finished - / {
    check_ranges(1)
    text = last_line()
    if (iters == "collapse") { finished++; skipblank = 1; flush_problems(); next }
    if (problems == "") print "- value ranges of the " nr " listed moves, arranged and resolved"
    flush_problems()
    print text
    next
}

$0 == "time over" || /^iteration interrupted - / {
    if (state == "ranges") {
        check_ranges(0)
        if (iters == "collapse") {
            print finished ? "- the iterations from depth 2 on finished in order, each arranged " \
                "and resolved" : "- no iteration finished"
            print "new iteration with depth (one more than the last finished)"
            print "current best-first move list with respective value range:"
        }
        if (problems == "") print "- value ranges of the " nr " listed moves, arranged"
        flush_problems()
    }
    if ($0 == "time over") { print; next }
    text = last_line()
    flush_problems()
    print text
    next
}

skipblank && $0 == "" { skipblank = 0; next }

# ---- the engine's move ---------------------------------------------------------------------
pending && /^ *[0-9]+\. (\.\.\. )?[a-h][1-8][a-h][1-8][nbrq ]$/ {
    pending = 0
    mv = move_of(substr($0, length($0) - 4))
    head = substr($0, 1, length($0) - 5)
    first = echo == "first"
    ok = first ? mv == firstmove : echo == "member" ? (mv in inlist) : -1
    if (ok == 1) $0 = head (first ? "<the first listed move>" : "<one of the listed moves>")
    if (ok == 0) $0 = $0 "- not " (first ? "the first listed move " firstmove : "a listed move")
}

{ flush_problems(); print }
