# Checks by rule of a UCI search's report lines, for the searches that cannot be worked out
# line by line. The runner gives the rules of a session's @check lines as rule[n] for the
# search of its n-th go (each go ends in one bestmove line). The report lines of a search with
# a rule (info depth ... and info nodes ...) and its bestmove line become one line,
# "checked by rule: <its rule>", when everything holds; otherwise "check failed: <what>"
# lines followed by the lines themselves. Every other line is printed as it is.
#
# What every named search must show:
#   - each report line well formed: "info depth D score cp|mate V [lowerbound|upperbound]
#     nodes N nps R time T pv MOVES", or "info nodes N nps R time T" (an interrupted iteration
#     that kept the move);
#   - the depths of the info depth lines 2, 3, 4, ...: the first iteration searches one ply
#     below the root moves and is reported as depth 2, and each next one a ply deeper;
#   - a line without a principal variation only as the last one, after one with;
#   - nodes and time that never go down (both count from the start of the search), and a speed
#     that is nodes * 1000 / time (0 when the time is 0);
#   - at least one info depth line (minlines=N changes that);
#   - bestmove the first move of the last principal variation; when the last line carries a
#     principal variation, a ponder move exactly when that variation has a second move, and
#     that move (both come from the same walk of the tables, which nothing changes in between).
# What a rule may add, words separated by blanks:
#   depth=D       the info depth lines run exactly from 2 to D, and the last line is D's
#   mate=M        the last info depth line scores "mate M" (exact or a lower bound)
#   allmate=M     every info depth line does
#   score=TEXT    the last info depth line's score without its bound word, "_" for a blank
#                 (score=cp_0)
#   maxscore=CP   the last score is at most CP centipawns (being mated counts as below all)
#   best=MOVE     the move played;  ponder=MOVE|none   the ponder move
#   among=M1,M2   the move played is one of these
#   minlines=N    at least N info depth lines
#   mintime=MS    the last report line's time is at least MS
#   minnodes=N, maxnodes=N        bounds on the last report line's node count
#   fewernodes=K  the last node count is below search K's
#   same=K        the info depth lines are search K's apart from time and speed, and so is the
#                 bestmove line

function fail(text) { problems = problems "check failed: " text "\n" }

# The value after `key` in a report line's fields.
function field(line, key,    n, i, f) {
    n = split(line, f, " ")
    for (i = 1; i < n; i++) if (f[i] == key) return f[i + 1]
    return ""
}

# Without time and speed: what two runs of the same search must share.
function steady(line) {
    sub(/ nps [0-9]+ time [0-9]+/, "", line)
    return line
}

function checkSearch(n, rule, bestLine,    i, line, depth, expectDepth, pvCount, lastPv, pv, np,
                     nodes, time, nps, lastNodes, lastTime, bm, nb, want, score, k, parts,
                     pvLines, lastIsPv, progressAt, plain, w) {
    split("", w)
    k = split(rule, parts, " ")
    for (i = 1; i <= k; i++) {
        if (index(parts[i], "=")) w[substr(parts[i], 1, index(parts[i], "=") - 1)] = substr(parts[i], index(parts[i], "=") + 1)
        else w[parts[i]] = ""
    }
    problems = ""
    expectDepth = 2
    pvCount = progressAt = 0
    lastNodes = lastTime = -1
    lastPv = pvLines = ""
    for (i = 1; i <= count; i++) {
        line = lines[i]
        if (line ~ /^info depth [0-9]+ score (cp -?[0-9]+|mate -?[0-9]+)( lowerbound| upperbound)? nodes [0-9]+ nps [0-9]+ time [0-9]+ pv( [a-h][1-8][a-h][1-8][nbrq]?)+$/) {
            if (progressAt) fail("a line after the one without a principal variation")
            depth = field(line, "depth") + 0
            if (depth != expectDepth) fail("depth " depth " where " expectDepth " was due")
            expectDepth = depth + 1
            ++pvCount
            lastPv = substr(line, index(line, " pv ") + 4)
            pvLines = pvLines steady(line) "\n"
            score = line
            sub(/^.* score /, "", score)
            sub(/ nodes .*$/, "", score)
            if ("allmate" in w && score != "mate " w["allmate"])
                fail("score " score " at depth " depth ", not mate " w["allmate"])
        } else if (line ~ /^info nodes [0-9]+ nps [0-9]+ time [0-9]+$/) {
            if (progressAt) fail("two lines without a principal variation")
            if (pvCount == 0) fail("a line without a principal variation before any with one")
            progressAt = i
        } else {
            fail("malformed report line")
            continue
        }
        nodes = field(line, "nodes") + 0
        time = field(line, "time") + 0
        nps = field(line, "nps") + 0
        if (nodes < lastNodes) fail("nodes went down: " nodes " after " lastNodes)
        if (time < lastTime) fail("time went down: " time " after " lastTime)
        want = time > 0 ? int(nodes * 1000 / time) : 0
        if (nps != want) fail("speed " nps " where nodes and time give " want)
        lastNodes = nodes
        lastTime = time
    }
    lastIsPv = count > 0 && !progressAt
    want = "minlines" in w ? w["minlines"] + 0 : 1
    if (pvCount < want) fail(pvCount " info depth lines, fewer than " want)
    if ("depth" in w && (expectDepth - 1 != w["depth"] + 0 || progressAt))
        fail("the search did not end with depth " w["depth"])
    if ("mate" in w && score != "mate " w["mate"]) fail("the last score is " score ", not mate " w["mate"])
    plain = score
    sub(/ (lower|upper)bound$/, "", plain)
    if ("score" in w) {
        want = w["score"]
        gsub(/_/, " ", want)
        if (plain != want) fail("the last score is " plain ", not " want)
    }
    if ("maxscore" in w && !(plain ~ /^mate -/ || (plain ~ /^cp / && substr(plain, 4) + 0 <= w["maxscore"] + 0)))
        fail("the last score is " plain ", above cp " w["maxscore"])
    if ("mintime" in w && lastTime < w["mintime"] + 0) fail("time " lastTime " ms, under " w["mintime"])
    if ("minnodes" in w && lastNodes < w["minnodes"] + 0) fail(lastNodes " nodes, under " w["minnodes"])
    if ("maxnodes" in w && lastNodes > w["maxnodes"] + 0) fail(lastNodes " nodes, over " w["maxnodes"])
    if ("fewernodes" in w && lastNodes >= finalNodes[k = w["fewernodes"]])
        fail(lastNodes " nodes, not fewer than search " k "'s " finalNodes[k])

    if (bestLine !~ /^bestmove [a-h][1-8][a-h][1-8][nbrq]?( ponder [a-h][1-8][a-h][1-8][nbrq]?)?$/) {
        fail("malformed bestmove line")
    } else {
        nb = split(bestLine, bm, " ")
        np = split(lastPv, pv, " ")
        if (np > 0 && bm[2] != pv[1]) fail("bestmove " bm[2] ", the principal variation's " pv[1])
        if (lastIsPv && np >= 2 && (nb < 4 || bm[4] != pv[2]))
            fail("the ponder move is not the principal variation's reply " pv[2])
        if (lastIsPv && np < 2 && nb == 4) fail("a ponder move where the principal variation has no reply")
        if ("best" in w && bm[2] != w["best"]) fail("bestmove " bm[2] ", not " w["best"])
        if ("among" in w && index("," w["among"] ",", "," bm[2] ",") == 0)
            fail("bestmove " bm[2] ", not among " w["among"])
        if ("ponder" in w &&
            ((w["ponder"] == "none" && nb == 4) || (w["ponder"] != "none" && bm[4] != w["ponder"])))
            fail("ponder " (nb == 4 ? bm[4] : "none") ", not " w["ponder"])
    }
    if ("same" in w && pvLines != savedPv[k = w["same"]]) fail("the info depth lines differ from search " k "'s")
    if ("same" in w && bestLine != savedBest[k = w["same"]]) fail("the bestmove line differs from search " k "'s")

    if (problems == "") {
        print "checked by rule" (rule == "" ? "" : ": " rule)
    } else {
        printf "%s", problems
        for (i = 1; i <= count; i++) print "| " lines[i]
        print "| " bestLine
    }
    savedPv[n] = pvLines
    savedBest[n] = bestLine
}

# Every search's last node count and lines are kept, for the rules that compare searches.
/^info (depth|nodes) / {
    current = searches + 1
    finalNodes[current] = field($0, "nodes") + 0
    if (current in rule) {
        lines[++count] = $0
        next
    }
    if ($0 ~ / pv /) keptPv[current] = keptPv[current] steady($0) "\n"
}

/^bestmove/ {
    if (++searches in rule) {
        checkSearch(searches, rule[searches], $0)
        count = 0
        next
    }
    savedPv[searches] = keptPv[searches]
    savedBest[searches] = $0
    count = 0
}

{ print }
